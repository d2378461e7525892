#include "apps/wayfence/truth.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "apps/wayfence/csv.h"

namespace Wayfence {

using System::TPointF;

namespace {

constexpr double FurthestRow = 1.0;    // seconds
constexpr double FastestWalk = 3.0;    // m/s
constexpr double ShortestJump = 0.5;   // metres
constexpr double ShortestPause = 2.0;  // seconds
constexpr double PauseInUsualTimes = 10.0;
constexpr double MaxMetres = 1e5;
constexpr double MaxSeconds = 1e11;
constexpr int MaxMap = 1'000'000;
constexpr double Never = -std::numeric_limits<double>::infinity();

double Distance(TPointF A, TPointF B) {
  return std::hypot(A.X - B.X, A.Y - B.Y);
}

double MedianStep(const std::vector<TTruth::TRow>& ARows) {
  std::vector<double> Steps;
  for (std::size_t I = 1; I < ARows.size(); ++I)
    Steps.push_back(ARows[I].Seconds - ARows[I - 1].Seconds);
  if (Steps.empty()) return 0.0;
  const auto Middle = Steps.begin() + static_cast<std::ptrdiff_t>(Steps.size() / 2);
  std::nth_element(Steps.begin(), Middle, Steps.end());
  return *Middle;
}

TPointF Interpolate(const TTruth::TRow& AFrom, const TTruth::TRow& ATo, double ASeconds) {
  const double Time = ATo.Seconds - AFrom.Seconds;
  const double Part = Time > 0.0 ? (ASeconds - AFrom.Seconds) / Time : 0.0;
  return AFrom.Place + (ATo.Place - AFrom.Place) * static_cast<float>(Part);
}

}  // namespace

TTruth::TTruth(std::vector<TRow> ARows)
    : FRows(std::move(ARows)),
      FPause(std::max(ShortestPause, PauseInUsualTimes * MedianStep(FRows))) {
  double LastEnd = Never;
  for (std::size_t I = 0; I < FRows.size(); ++I) {
    if (I > 0 && IsJump(FRows[I - 1], FRows[I])) LastEnd = FRows[I].Seconds;
    FEndsOfJumps.push_back(LastEnd);
  }
}

TTruth TTruth::Read(const std::string& AFileName) {
  TCsvReader Csv(AFileName);
  for (const std::string_view Needed : {"t", "x", "y"}) Csv.ColumnOf({Needed});
  std::vector<TRow> Rows;
  while (Csv.Next()) {
    TRow Row;
    Row.Seconds = Csv.GetNumber("t", -MaxSeconds, MaxSeconds);
    Row.Place = {static_cast<float>(Csv.GetNumber("x", -MaxMetres, MaxMetres)),
                 static_cast<float>(Csv.GetNumber("y", -MaxMetres, MaxMetres))};
    if (!Csv.GetText("map").empty()) Row.Map = Csv.GetInteger("map", 0, MaxMap);
    if (!Rows.empty() && Row.Seconds < Rows.back().Seconds)
      Csv.RefuseField("t", "is earlier than the row before; sort the rows by time");
    Rows.push_back(Row);
  }
  if (Rows.empty()) Csv.Refuse("there is no position in this file");
  return TTruth(std::move(Rows));
}

bool TTruth::IsJump(const TRow& AFrom, const TRow& ATo) const {
  if (AFrom.Map != ATo.Map) return true;
  const double Length = Distance(AFrom.Place, ATo.Place);
  const double Time = ATo.Seconds - AFrom.Seconds;
  return Length > ShortestJump && (Length > FastestWalk * Time || Time > FPause);
}

TTruth::TRowsAround TTruth::GetRowsAround(double ASeconds) const {
  const auto Next =
      std::upper_bound(FRows.begin(), FRows.end(), ASeconds, [](double ATime, const TRow& ARow) {
        return ATime < ARow.Seconds;
      });
  const TRow* const After = Next == FRows.end() ? nullptr : &*Next;
  const TRow* const Before = Next == FRows.begin() ? nullptr : &*(Next - 1);
  const bool IsAfterNearer =
      After && !(Before && ASeconds - Before->Seconds <= After->Seconds - ASeconds);
  const TRow* const Nearest = IsAfterNearer ? After : Before;
  const bool IsNear = Nearest && std::abs(Nearest->Seconds - ASeconds) <= FurthestRow;
  return {Before, After, IsNear ? Nearest : nullptr};
}

std::optional<int> TTruth::GetMap(double ASeconds) const {
  const TRow* const Nearest = GetRowsAround(ASeconds).Nearest;
  return Nearest ? std::optional(Nearest->Map) : std::nullopt;
}

std::optional<TPointF> TTruth::GetPlace(double ASeconds, int AMap, double ASkip) const {
  const auto [Before, After, Nearest] = GetRowsAround(ASeconds);
  if (!Nearest || Nearest->Map != AMap) return std::nullopt;
  const double EndOfJump = FEndsOfJumps[static_cast<std::size_t>(Nearest - FRows.data())];
  if (ASkip > 0.0 && ASeconds < EndOfJump + ASkip) return std::nullopt;
  const bool IsBetween = Before && After && !IsJump(*Before, *After);
  return IsBetween ? Interpolate(*Before, *After, ASeconds) : Nearest->Place;
}

}  // namespace Wayfence
