#include "apps/wayfence/csv.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "apps/wayfence/messages.h"
#include "platform/errors.h"
#include "platform/files.h"

namespace Wayfence {
namespace {

constexpr std::size_t MaxSize = 256 << 20;  // bytes
constexpr std::size_t MaxColumns = 1000;

std::string_view Trim(std::string_view AText) {
  const std::size_t First = AText.find_first_not_of(" \t");
  if (First == std::string_view::npos) return {};
  return AText.substr(First, AText.find_last_not_of(" \t") - First + 1);
}

/// As much of a text as a message shows.
std::string Shown(const std::string& AText) {
  constexpr std::size_t MaxShown = 300;
  return AText.size() <= MaxShown ? AText : AText.substr(0, MaxShown) + "…";
}

}  // namespace

TCsvReader::TCsvReader(const std::string& AFileName)
    : TCsvReader(AFileName, System::ReadWholeFile(AFileName, MaxSize)) {}

TCsvReader::TCsvReader(const std::string& AFileName, std::string AText)
    : FFileName(AFileName), FText(std::move(AText)) {
  Take("\xEF\xBB\xBF");
  if (!ReadRow()) Refuse("the file is empty; its first line names the columns");
  FColumns.swap(FFields);
  for (std::size_t I = 0; I < FColumns.size(); ++I)
    if (IndexOf(FColumns[I]) != I)
      Refuse(fmt::format("column {} is there twice{}", Clipped(FColumns[I]), GetHint()));
}

bool TCsvReader::Next() {
  if (!ReadRow()) return false;
  if (FFields.size() != FColumns.size())
    Refuse(fmt::format("{} where the first line names {}{}",
                       Counted(FFields.size(), "field"),
                       Counted(FColumns.size(), "column"),
                       GetHint()));
  return true;
}

// ---------------------------------------------------------------- fields

std::size_t TCsvReader::IndexOf(std::string_view AColumn) const {
  const auto Found = std::find(FColumns.begin(), FColumns.end(), AColumn);
  return static_cast<std::size_t>(Found - FColumns.begin());
}

std::string_view TCsvReader::ColumnOf(std::initializer_list<std::string_view> ANames) const {
  for (const std::string_view Name : ANames)
    if (IndexOf(Name) < FColumns.size()) return Name;
  throw System::EFileError(fmt::format("{}:1: there is no column {}; there are {}{}",
                                       FFileName,
                                       *ANames.begin(),
                                       Shown(fmt::format("{}", fmt::join(FColumns, ", "))),
                                       GetHint()));
}

std::string TCsvReader::GetHint() const {
  const std::string& First = FColumns.front();
  if (First.find_first_of(";\t") != std::string::npos) return "; commas separate columns";
  if (First.find_first_not_of("0123456789.-+eE") == std::string::npos)
    return "; the first line has to name the columns";
  return {};
}

std::string_view TCsvReader::GetText(std::string_view AColumn) const {
  const std::size_t Index = IndexOf(AColumn);
  return Index < FFields.size() ? std::string_view(FFields[Index]) : std::string_view();
}

std::string TCsvReader::GetSource() const {
  return fmt::format("{}:{}", FFileName, FRowLine);
}

// ---------------------------------------------------------------- text

bool TCsvReader::ReadRow() {
  while (TakeLineEnd()) {
  }
  FRowLine = FLine;
  if (FAt == FText.size()) return false;
  FFields.clear();
  do {
    if (FFields.size() == MaxColumns) Refuse(fmt::format("more than {} columns", MaxColumns));
    FFields.push_back(ReadField());
  } while (Take(","));
  if (FAt < FText.size() && !TakeLineEnd())
    Refuse("a comma or the end of the line is expected after the closing quote");
  return true;
}

std::string TCsvReader::ReadField() {
  if (Take("\"")) return ReadQuoted();
  const std::size_t End = std::min(FText.find_first_of(",\r\n", FAt), FText.size());
  const std::string_view Field = Trim(std::string_view(FText).substr(FAt, End - FAt));
  FAt = End;
  return std::string(Field);
}

std::string TCsvReader::ReadQuoted() {
  std::string Result;
  for (; FAt < FText.size(); ++FAt) {
    if (Take("\"") && (FAt == FText.size() || FText[FAt] != '"')) return Result;
    if (FText[FAt] == '\n') ++FLine;
    Result += FText[FAt];
  }
  Refuse("the closing quote of a field is missing");
}

bool TCsvReader::Take(std::string_view AText) {
  if (FText.compare(FAt, AText.size(), AText) != 0) return false;
  FAt += AText.size();
  return true;
}

bool TCsvReader::TakeLineEnd() {
  if (!Take("\r\n") && !Take("\n") && !Take("\r")) return false;
  ++FLine;
  return true;
}

}  // namespace Wayfence
