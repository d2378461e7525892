#include "persistence/bundle_names.h"

#include <fmt/format.h>

#include <algorithm>

#include "persistence/messages.h"
#include "platform/errors.h"
#include "platform/xml_characters.h"
#include "platform/xml_scanner.h"

namespace System::Beacon::Fencing {
namespace {

bool IsControl(char AChar) noexcept {
  return static_cast<unsigned char>(AChar) < 0x20 || AChar == 0x7F;
}

bool IsIdCharacter(char AChar) noexcept {
  return (AChar >= '0' && AChar <= '9') || (AChar >= 'A' && AChar <= 'Z') ||
         (AChar >= 'a' && AChar <= 'z') || AChar == '-' || AChar == '_';
}

/// A name that was refused, fit for a message.
std::string Shown(std::string_view AName) {
  std::string Result(AName.substr(0, 80));
  std::replace_if(Result.begin(), Result.end(), &IsControl, '?');
  return Result;
}

[[noreturn]] void Refuse(const std::string& APlace, const std::string& AMessage) {
  throw EFileError(APlace.empty() ? AMessage : APlace + ": " + AMessage);
}

/// Takes a line off the front of a text.
std::string_view NextLine(std::string_view& AText) {
  const std::size_t End = std::min(AText.find('\n'), AText.size());
  std::string_view Result = AText.substr(0, End);
  AText.remove_prefix(std::min(End + 1, AText.size()));
  if (Result.ends_with('\r')) Result.remove_suffix(1);
  return Result;
}

std::string_view WithoutBlankEnd(std::string_view AText) {
  const std::size_t Last = AText.find_last_not_of("\r\n");
  return AText.substr(0, Last == std::string_view::npos ? 0 : Last + 1);
}

}  // namespace

bool IsBundleId(std::string_view AnId) noexcept {
  return !AnId.empty() && AnId.size() <= MaxBundleId &&
         std::all_of(AnId.begin(), AnId.end(), &IsIdCharacter);
}

bool IsBundlePath(std::string_view APath) noexcept {
  return !APath.empty() && APath.size() <= MaxBundlePath &&
         WithoutByteOrderMark(APath).size() == APath.size() &&
         std::none_of(APath.begin(), APath.end(), &IsControl) &&
         FindNoXMLCharacter(APath) == std::string_view::npos;
}

void CheckBundleId(std::string_view AnId, const std::string& APlace) {
  if (!IsBundleId(AnId))
    Refuse(APlace, fmt::format(fmt::runtime(Messages::SBundleId), Shown(AnId), MaxBundleId));
}

void CheckBundlePath(std::string_view APath, const std::string& APlace) {
  if (!IsBundlePath(APath))
    Refuse(APlace, fmt::format(fmt::runtime(Messages::SBundlePath), Shown(APath), MaxBundlePath));
}

void CheckBundleFileCount(std::size_t ACount, const std::string& APlace) {
  if (ACount > MaxBundleFiles)
    Refuse(APlace, fmt::format(fmt::runtime(Messages::SBundleMany), MaxBundleFiles));
}

std::vector<TBundleName> ReadIdTable(std::string_view AText, const std::string& AFileName) {
  std::vector<TBundleName> Result;
  std::string_view Rest = WithoutBlankEnd(WithoutByteOrderMark(AText));
  for (int Line = 1; !Rest.empty(); Line += 2) {
    const std::string_view Path = NextLine(Rest);
    CheckBundlePath(Path, fmt::format("{}:{}", AFileName, Line));
    if (Rest.empty())
      Refuse(fmt::format("{}:{}", AFileName, Line), std::string(Messages::SBundleNoPair));
    const std::string_view Id = NextLine(Rest);
    CheckBundleId(Id, fmt::format("{}:{}", AFileName, Line + 1));
    Result.push_back({std::string(Path), std::string(Id)});
    CheckBundleFileCount(Result.size(), AFileName);
  }
  return Result;
}

void AppendToIdTable(std::string& ATable, std::string_view APath, std::string_view AnId) {
  ATable.append(APath).append("\n").append(AnId).append("\n");
}

}  // namespace System::Beacon::Fencing
