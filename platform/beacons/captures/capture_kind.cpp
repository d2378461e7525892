#include "platform/beacons/captures/capture_kind.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "platform/beacons/advertisement.h"

namespace System::Beacon {

using namespace std::string_view_literals;

namespace {

constexpr std::size_t LookAhead = 4096;

struct TMagic {
  std::string_view Bytes;
  TCaptureKind Kind;
};

constexpr TMagic Magics[] = {
    {"btsnoop\0"sv, TCaptureKind::Btsnoop},
    {"\xD4\xC3\xB2\xA1"sv, TCaptureKind::Pcap},  // little-endian, microseconds
    {"\xA1\xB2\xC3\xD4"sv, TCaptureKind::Pcap},  // big-endian, microseconds
    {"\x4D\x3C\xB2\xA1"sv, TCaptureKind::Pcap},  // little-endian, nanoseconds
    {"\xA1\xB2\x3C\x4D"sv, TCaptureKind::Pcap},  // big-endian, nanoseconds
    {"\x0A\x0D\x0D\x0A"sv, TCaptureKind::Pcap},  // pcapng
};

struct TCompression {
  std::string_view Bytes;
  std::string_view Name;
};

constexpr TCompression Compressions[] = {{"\x1F\x8B"sv, "gzip"},
                                         {"PK\x03\x04"sv, "zip"},
                                         {"\xFD"
                                          "7zXZ"sv,
                                          "xz"},
                                         {"\x28\xB5\x2F\xFD"sv, "zstd"},
                                         {"BZh"sv, "bzip2"}};

[[noreturn]] void Refuse(const TByteStream& AStream, std::string_view AWhat) {
  throw EBeaconSourceError(fmt::format("{}: {}", AStream.GetName(), AWhat));
}

/// Whether a line begins as an object with members does, or the text as a comment.
bool LooksLikeLog(std::string_view AText) {
  if (AText.starts_with("\xEF\xBB\xBF")) AText.remove_prefix(3);
  const std::size_t First = AText.find_first_not_of(" \t\r\n");
  if (First != std::string_view::npos && AText[First] == '#') return true;
  for (std::size_t Line = 0; Line < AText.size();) {
    const std::size_t Brace = AText.find_first_not_of(" \t\r", Line);
    if (Brace != std::string_view::npos && AText[Brace] == '{') {
      const std::size_t Next = AText.find_first_not_of(" \t", Brace + 1);
      if (Next != std::string_view::npos && AText[Next] == '"') return true;
    }
    Line = std::min(AText.find('\n', Line), AText.size() - 1) + 1;
  }
  return false;
}

}  // namespace

TCaptureKind DetectCaptureKind(TByteStream& AStream) {
  const auto Bytes = AStream.Peek(LookAhead);
  const std::string_view Text(reinterpret_cast<const char*>(Bytes.data()),
                              std::min(Bytes.size(), LookAhead));
  if (!AStream.GetFailure().empty()) {
    Refuse(AStream, fmt::format("cannot be read: {}", AStream.GetFailure()));
  }
  if (Text.empty()) Refuse(AStream, "the file is empty; nothing was recorded");
  for (const TMagic& Magic : Magics) {
    if (Text.starts_with(Magic.Bytes)) return Magic.Kind;
  }
  for (const TCompression& Compression : Compressions) {
    if (Text.starts_with(Compression.Bytes)) {
      Refuse(AStream, fmt::format("is compressed ({}); unpack it first", Compression.Name));
    }
  }
  if (LooksLikeLog(Text)) return TCaptureKind::Log;
  Refuse(AStream,
         "is no capture; btsnoop, pcap, pcapng and logs with one JSON object per line are read");
}

}  // namespace System::Beacon
