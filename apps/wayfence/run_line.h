// A line of a run file, with its members checked.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "platform/geometry.h"

namespace Wayfence {

/// A JSON object of a run file: the line, or an object within it. Looks at the JSON. What is asked
/// for and is missing or out of its range is refused: `EFileError` "FILE:LINE: what".
class TRunLine {
 public:
  TRunLine(const nlohmann::json& AJson, std::string APlace);

  bool Has(const char* AName) const { return FJson.contains(AName); }
  std::string GetText(const char* AName) const;
  double GetNumber(const char* AName, double AFrom, double ATo) const;
  /// Seconds since the begin of the run.
  double GetTime() const;
  /// A whole number from 0 on, below `ACount`.
  int GetIndex(const char* AName, std::size_t ACount) const;
  int GetInteger(const char* AName, int AFrom, int ATo) const;
  /// A point in map units.
  System::TPointF GetPoint(const char* AX, const char* AY) const;
  /// `[x, y]`.
  System::TPointF GetPoint(const char* AName) const { return GetPoint(Get(AName), AName); }
  System::TPointF GetPoint(const nlohmann::json& AJson, const char* AName) const;
  /// `[left, top, right, bottom]`.
  System::TRectF GetRect(const char* AName) const;
  const nlohmann::json& GetArray(const char* AName) const;

  /// "FILE:LINE".
  const std::string& GetPlace() const { return FPlace; }
  [[noreturn]] void Refuse(std::string_view AWhat) const;

 private:
  const nlohmann::json& Get(const char* AName) const;
  float GetCoordinate(const nlohmann::json& AJson, const char* AName) const;

  const nlohmann::json& FJson;
  const std::string FPlace;
};

}  // namespace Wayfence
