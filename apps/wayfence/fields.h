// Things that are read as named texts: the row of a table, the properties of a feature.
#pragma once

#include <string>
#include <string_view>

namespace Wayfence {

/// The fields of one thing, and how they become values.
class TFields {
 public:
  virtual ~TFields() = default;

  /// Empty when there is no such field.
  virtual std::string_view GetText(std::string_view AName) const = 0;
  double GetNumber(std::string_view AName, double AFrom, double ATo) const;
  int GetInteger(std::string_view AName, int AFrom, int ATo) const;

  /// Where the thing stands: "FILE:LINE".
  virtual std::string GetSource() const = 0;

  /// Raises `EFileError` "FILE:LINE: what".
  [[noreturn]] void Refuse(std::string_view AWhat) const;
  [[noreturn]] void RefuseField(std::string_view AName, std::string_view AWhat) const;

 protected:
  TFields() = default;
  TFields(const TFields&) = default;
  TFields(TFields&&) = default;
  TFields& operator=(const TFields&) = default;
  TFields& operator=(TFields&&) = default;
};

}  // namespace Wayfence
