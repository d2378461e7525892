#include "platform/beacons/captures/log_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/beacons/captures/log_line.h"
#include "platform/beacons/captures/wall_time.h"

namespace System::Beacon {

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

std::string_view AsText(std::span<const std::uint8_t> ABytes) {
  return {reinterpret_cast<const char*>(ABytes.data()), ABytes.size()};
}

std::string_view Trim(std::string_view AText) {
  const std::size_t First = AText.find_first_not_of(" \t\r");
  if (First == std::string_view::npos) return {};
  return AText.substr(First, AText.find_last_not_of(" \t\r") + 1 - First);
}

class TLogReader : public TCaptureReader {
 public:
  explicit TLogReader(std::unique_ptr<TByteStream> AStream) : TCaptureReader(std::move(AStream)) {
    if (AsText(FStream->Peek(ByteOrderMark.size())).starts_with(ByteOrderMark)) {
      FStream->Skip(ByteOrderMark.size());
    }
  }

 protected:
  bool ReadRecord() override;
  std::string GetPlace() const override { return fmt::format("line {}", FLineNumber); }

 private:
  void ParseLine(std::string_view AText);
  void ParseComment(std::string_view AText);
  void SkipLongLine();

  std::uint64_t FLineNumber = 0;
  TLogLine FLine;
  TTicks FStart = 0;
  bool FAnyRead = false;
};

bool TLogReader::ReadRecord() {
  std::string_view Text = AsText(FStream->Peek(1));
  std::size_t End = Text.find('\n');
  if (End == std::string_view::npos) {
    Text = AsText(FStream->Peek(MaxRecordSize + 1));
    End = Text.find('\n');
  }
  if (Text.empty()) return false;
  ++FLineNumber;
  const std::size_t Size = std::min(End, Text.size());
  if (Size > MaxRecordSize) {
    SkipLongLine();
    return true;
  }
  ParseLine(Trim(Text.substr(0, Size)));
  FStream->Skip(Size + 1);
  return true;
}

void TLogReader::ParseLine(std::string_view AText) {
  if (AText.empty()) return;
  if (AText.front() == '#') return ParseComment(AText);
  if (const std::string Problem = ParseLogLine(AText, FLine); !Problem.empty()) {
    return AddProblem(Problem);
  }
  FAnyRead = true;
  FQueue.Push({FStart + FLine.Time, FLine.Address, FLine.Rssi, FLine.Payload});
}

void TLogReader::ParseComment(std::string_view AText) {
  if (FAnyRead || !AText.starts_with(LogStartMark)) return;
  if (const auto Start = ParseWallTime(AText.substr(LogStartMark.size()))) {
    FStart = *Start;
    FHasWallTime = true;
  }
}

void TLogReader::SkipLongLine() {
  AddProblem("line longer than 64 KiB");
  for (;;) {
    const std::string_view Text = AsText(FStream->Peek(1));
    const std::size_t End = Text.find('\n');
    FStream->Skip(std::min(End, Text.size() - 1) + 1);
    if (Text.empty() || End != std::string_view::npos) return;
  }
}

}  // namespace

TRef<IAdvertisementReader> ReadAdvertisementLog(std::unique_ptr<TByteStream> AStream) {
  return New<TLogReader>(std::move(AStream));
}

}  // namespace System::Beacon
