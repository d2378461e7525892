// Files of comma-separated values.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "apps/wayfence/fields.h"

namespace Wayfence {

/// Reads a file whose first line names the columns, row by row. A field may stand in quotes, a
/// quote in it doubled, and then holds commas and line breaks; spaces around other fields and empty
/// lines are skipped. Whatever is wrong raises `EFileError` "FILE:LINE: what". One thread at a
/// time.
class TCsvReader final : public TFields {
 public:
  /// Reads the names of the columns.
  explicit TCsvReader(const std::string& AFileName);
  /// The same for a text that is there already; the name is for messages.
  TCsvReader(const std::string& AFileName, std::string AText);

  /// Goes to the next row; false at the end.
  bool Next();
  /// The line on which the row begins, from 1.
  int GetLine() const noexcept { return FRowLine; }

  /// The first of these columns that is there; refuses the file when none is.
  std::string_view ColumnOf(std::initializer_list<std::string_view> ANames) const;
  const std::vector<std::string>& GetColumns() const noexcept { return FColumns; }
  /// The row's field.
  std::string_view GetText(std::string_view AColumn) const override;

  std::string GetSource() const override;

 private:
  /// What the first line has wrong, if that can be seen, as the end of a message.
  std::string GetHint() const;
  bool ReadRow();
  std::string ReadField();
  std::string ReadQuoted();
  bool Take(std::string_view AText);
  bool TakeLineEnd();
  std::size_t IndexOf(std::string_view AColumn) const;

  std::string FFileName;
  std::string FText;
  std::size_t FAt = 0;
  int FLine = 1;
  int FRowLine = 1;
  std::vector<std::string> FColumns;
  std::vector<std::string> FFields;
};

}  // namespace Wayfence
