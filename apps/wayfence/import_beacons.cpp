#include "apps/wayfence/import_beacons.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

namespace Wayfence {
namespace {

constexpr std::array<std::string_view, 13> BeaconColumns{"name",
                                                         "x",
                                                         "y",
                                                         "x_m",
                                                         "y_m",
                                                         "map",
                                                         "kind",
                                                         "uuid",
                                                         "major",
                                                         "minor",
                                                         "namespace",
                                                         "instance",
                                                         "power"};

TImportedBeacon ReadBeacon(const TBeaconRows& ARows) {
  const TListedBeacon::TRow& Row = ARows.GetRow();
  TImportedBeacon Result{
      {ARows.GetCsv().GetSource(), Row.Name, {}}, {Row.Place.X, Row.Place.Y}, Row};
  for (const std::string& Column : ARows.GetCsv().GetColumns()) {
    const std::string_view Text = ARows.GetCsv().GetText(Column);
    const bool IsKnown =
        std::find(BeaconColumns.begin(), BeaconColumns.end(), Column) != BeaconColumns.end();
    if (!IsKnown && !Text.empty()) Result.Thing.Description.emplace_back(Column, Text);
  }
  return Result;
}

/// Floors up to that of the number, begun at (0, 0).
void AddFloors(TImportedFloors& AFloors, std::size_t ACount, const TCsvReader& ACsv) {
  while (AFloors.size() < ACount) {
    TImportedFloor& Floor = AFloors.emplace_back();
    Floor.Thing.Source = ACsv.GetSource();
    Floor.Thing.Name = fmt::format("Map {}", AFloors.size() - 1);
    Floor.Outline.emplace_back();
  }
}

}  // namespace

void AddBeacons(TImportedFloors& AFloors, TBeaconRows ARows, const TPlacing& APlacing) {
  const bool IsNew = AFloors.empty();
  for (std::size_t Count = 1; ARows.Next(); ++Count) {
    if (Count > MaxImportedBeacons)
      ARows.GetCsv().Refuse(fmt::format("more than {} beacons", MaxImportedBeacons));
    const auto Map = static_cast<std::size_t>(ARows.GetRow().Map);
    const std::size_t Limit = IsNew ? MaxImportedFloors : AFloors.size();
    if (Map >= Limit)
      ARows.GetCsv().RefuseField("map",
                                 fmt::format("is no floor; they count from 0 to {}", Limit - 1));
    if (IsNew) AddFloors(AFloors, Map + 1, ARows.GetCsv());
    TImportedBeacon Beacon = ReadBeacon(ARows);
    if (!IsNew) Beacon.Place = PlaceOnMap(AFloors[Map], Beacon.Place, APlacing);
    AFloors[Map].Beacons.push_back(std::move(Beacon));
  }
  if (IsNew)
    for (TImportedFloor& Floor : AFloors) PlaceFloor(Floor, false, APlacing);
}

void KeepFirstBeacons(TImportedFloors& AFloors, TWarnings& AWarnings) {
  System::Beacon::TIdentityTable<bool> Seen;
  std::size_t Repeated = 0;
  std::string First;  // where the first of them stands
  for (TImportedFloor& Floor : AFloors)
    Repeated += std::erase_if(Floor.Beacons, [&](const TImportedBeacon& ABeacon) {
      if (Seen.Insert(ABeacon.Row.GetIdentity(), true)) return false;
      if (First.empty()) First = ABeacon.Thing.Source;
      return true;
    });
  if (Repeated > 0)
    AWarnings.push_back(fmt::format(
        "{}: the first of the beacons left out ({}) for having the identity of an earlier one",
        First,
        Repeated));
}

}  // namespace Wayfence
