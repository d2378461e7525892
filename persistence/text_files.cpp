// Texts in Base64 and in files.
#include <fmt/format.h>

#include "persistence/System.Beacon.Fencing.Serializer.h"
#include "persistence/messages.h"
#include "platform/base64.h"
#include "platform/files.h"
#include "platform/xml_scanner.h"

namespace System::Beacon::Fencing {
namespace {

/// The lines of a text, whichever way they end, each with CR LF behind it.
std::string WithLineEnds(std::string_view AText) {
  std::string Result;
  Result.reserve(AText.size() + AText.size() / 32 + 2);
  while (!AText.empty()) {
    const std::size_t End = AText.find_first_of("\r\n");
    Result.append(AText.substr(0, End)).append("\r\n");
    if (End == std::string_view::npos) break;
    AText.remove_prefix(End + (AText.substr(End, 2) == "\r\n" ? 2 : 1));
  }
  return Result;
}

}  // namespace

std::string EncodeToBase64(std::string_view AText) {
  return EncodeBase64(AText);
}

std::string DecodeFromBase64(std::string_view AText) {
  return DecodeBase64(AText);
}

void SaveStringToPath(std::string_view AText, const std::string& APath) {
  ReplaceFile(APath, WithLineEnds(AText));
}

std::string LoadStringFromPath(const std::string& APath) {
  const std::string Text = ReadWholeFile(APath, MaxXMLSize);
  const std::string_view Start = std::string_view(Text).substr(0, 2);
  if (Start == "\xFF\xFE" || Start == "\xFE\xFF")
    throw EFileError(fmt::format(fmt::runtime(Messages::SNoUTF8File), APath));
  return WithLineEnds(WithoutByteOrderMark(Text));
}

}  // namespace System::Beacon::Fencing
