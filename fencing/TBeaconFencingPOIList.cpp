#include <algorithm>
#include <utility>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"

namespace System::Beacon::Fencing {
namespace {

using TInformation = std::pair<std::string, std::string>;

/// A point for each piece of information whose `AField` contains a text.
TArray<TBeaconFencingPOI> FindByInformation(const TArray<TBeaconFencingPOI>& APoints,
                                            std::string TInformation::*AField,
                                            std::string_view AText) {
  std::vector<TBeaconFencingPOI> Result;
  for (const TBeaconFencingPOI& Point : APoints)
    for (const TInformation& Piece : Point.Information)
      if ((Piece.*AField).find(AText) != std::string::npos) Result.push_back(Point);
  return TArray<TBeaconFencingPOI>(std::move(Result));
}

}  // namespace

void TBeaconFencingPOIList::AddPOI(const TBeaconFencingPOI& APOI) {
  PoiList.Append(APOI);
}

TBeaconFencingPOI TBeaconFencingPOIList::FindPOI(std::string_view AName) const {
  const auto* const Found =
      std::find_if(PoiList.begin(), PoiList.end(), [AName](const TBeaconFencingPOI& APoint) {
        return APoint.Name == AName;
      });
  return Found != PoiList.end() ? *Found : TBeaconFencingPOI{};
}

TArray<TBeaconFencingPOI> TBeaconFencingPOIList::FindPOIByKey(std::string_view AKey) const {
  return FindByInformation(PoiList, &TInformation::first, AKey);
}

TArray<TBeaconFencingPOI> TBeaconFencingPOIList::FindPOIByValue(std::string_view AValue) const {
  return FindByInformation(PoiList, &TInformation::second, AValue);
}

}  // namespace System::Beacon::Fencing
