#include "apps/wayfence/run_line.h"

#include <fmt/format.h>

#include <cmath>

#include "apps/wayfence/run_file.h"
#include "platform/errors.h"

namespace Wayfence {

using namespace System;
using TJson = nlohmann::json;

TRunLine::TRunLine(const TJson& AJson, std::string APlace)
    : FJson(AJson), FPlace(std::move(APlace)) {
  if (!FJson.is_object()) Refuse("this is no JSON object");
}

void TRunLine::Refuse(std::string_view AWhat) const {
  throw EFileError(fmt::format("{}: {}; make the run file again", FPlace, AWhat));
}

const TJson& TRunLine::Get(const char* AName) const {
  const auto Found = FJson.find(AName);
  if (Found == FJson.end()) Refuse(fmt::format("'{}' is missing", AName));
  return *Found;
}

std::string TRunLine::GetText(const char* AName) const {
  const TJson& Value = Get(AName);
  if (!Value.is_string()) Refuse(fmt::format("'{}' is no text", AName));
  return Value.get<std::string>();
}

double TRunLine::GetNumber(const char* AName, double AFrom, double ATo) const {
  const TJson& Value = Get(AName);
  const double Result = Value.is_number() ? Value.get<double>() : NAN;
  if (!(Result >= AFrom && Result <= ATo))
    Refuse(fmt::format("'{}' is no number from {} to {}", AName, AFrom, ATo));
  return Result;
}

double TRunLine::GetTime() const {
  return GetNumber("time", 0.0, MaxRunSeconds);
}

int TRunLine::GetInteger(const char* AName, int AFrom, int ATo) const {
  const double Result = GetNumber(AName, AFrom, ATo);
  if (Result != std::floor(Result)) Refuse(fmt::format("'{}' is no whole number", AName));
  return static_cast<int>(Result);
}

int TRunLine::GetIndex(const char* AName, std::size_t ACount) const {
  if (ACount == 0) Refuse(fmt::format("'{}' refers to what the header has none of", AName));
  return GetInteger(AName, 0, static_cast<int>(ACount) - 1);
}

float TRunLine::GetCoordinate(const TJson& AJson, const char* AName) const {
  const double Result = AJson.is_number() ? AJson.get<double>() : NAN;
  if (!(std::abs(Result) <= MaxRunCoordinate))
    Refuse(fmt::format("'{}' holds what is no coordinate", AName));
  return static_cast<float>(Result);
}

TPointF TRunLine::GetPoint(const char* AX, const char* AY) const {
  return {GetCoordinate(Get(AX), AX), GetCoordinate(Get(AY), AY)};
}

TPointF TRunLine::GetPoint(const TJson& AJson, const char* AName) const {
  if (!AJson.is_array() || AJson.size() != 2) Refuse(fmt::format("'{}' is not [x, y]", AName));
  return {GetCoordinate(AJson[0], AName), GetCoordinate(AJson[1], AName)};
}

TRectF TRunLine::GetRect(const char* AName) const {
  const TJson& Value = GetArray(AName);
  if (Value.size() != 4) Refuse(fmt::format("'{}' is not [left, top, right, bottom]", AName));
  const auto Edge = [&](std::size_t I) { return GetCoordinate(Value[I], AName); };
  return {Edge(0), Edge(1), Edge(2), Edge(3)};
}

const TJson& TRunLine::GetArray(const char* AName) const {
  const TJson& Value = Get(AName);
  if (!Value.is_array()) Refuse(fmt::format("'{}' is no array", AName));
  return Value;
}

}  // namespace Wayfence
