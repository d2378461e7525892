#include <fmt/format.h>
#include <gtest/gtest.h>

#include <sstream>

#include "fencing/System.Beacon.Fencing.h"

namespace System::Beacon::Fencing {
namespace {

/// "kind u1 major minor manufacturer", "*" for any: "3 u1 5 * -1"; Eddystone: "2 n1 i2", "2 n1 *".
std::string NameOf(const TBeaconsRegion& ARegion) {
  const auto Number = [](auto A) { return A ? std::to_string(*A) : std::string("*"); };
  const auto Kind = static_cast<int>(ARegion.KindofBeacon);
  if (ARegion.KindofBeacon == TKindofBeacon::Eddystone) {
    const auto& [UID, HasInstance] = ARegion.EddysUIDRegion;
    const std::string Instance = HasInstance ? fmt::format("i{}", UID.Instance[0]) : "*";
    return fmt::format("{} n{} {}", Kind, UID.Namespace[0], Instance);
  }
  const TiBAltBeaconRegion& Part = ARegion.iBAltBeaconRegion;
  EXPECT_EQ(Part.KindofBeacon, ARegion.KindofBeacon);
  const std::string Major = Number(Part.Major), Minor = Number(Part.Minor);
  return fmt::format(
      "{} u{} {} {} {}", Kind, Part.GUID.Bytes[0], Major, Minor, Part.ManufacturerID);
}

std::string NameOf(const std::vector<TBeaconsRegion>& ARegions) {
  std::string Result;
  for (const TBeaconsRegion& Region : ARegions)
    Result += (Result.empty() ? "" : ", ") + NameOf(Region);
  return Result;
}

/// Adds an item written as a region is: "0 u1 5 6 4C", "2 n1 i2".
void AddItem(TBeaconZoneItem& AZone, const std::string& AText) {
  std::istringstream Words(AText);
  int Kind = 0, Major = 0, Minor = 0;
  char Letter = 0;
  int First = 0;
  std::string Manufacturer;
  Words >> Kind >> Letter >> First;
  TBeaconItem& Item = *AZone.GetBeaconList()->Add();
  Item.SetKindofBeacon(static_cast<TKindofBeacon>(Kind));
  if (Letter == 'n') {
    Words >> Letter >> Minor;
    Item.SetEddyUID({{static_cast<std::uint8_t>(First)}, {static_cast<std::uint8_t>(Minor)}});
    return;
  }
  Words >> Major >> Minor >> Manufacturer;
  Item.SetGUID({{static_cast<std::uint8_t>(First)}});
  Item.SetMajor(static_cast<std::uint16_t>(Major));
  Item.SetMinor(static_cast<std::uint16_t>(Minor));
  if (!Manufacturer.empty()) Item.SetManufacturerID(Manufacturer);
}

/// Zones are separated by "|", items by ",".
void FillZones(TBeaconZones& AZones, const std::string& AText) {
  std::istringstream Zones(AText);
  for (std::string Zone; std::getline(Zones, Zone, '|');) {
    TBeaconZoneItem& Added = *AZones.Add();
    std::istringstream Items(Zone);
    for (std::string Item; std::getline(Items, Item, ',');) AddItem(Added, Item);
  }
}

TEST(Regions, MergeWhatSharesAUUIDOrANamespace) {
  for (const auto& [Text, Regions] :
       {std::pair<const char*, const char*>{"", ""},
        {"|", ""},
        {"0 u1 5 6", "0 u1 5 6 -1"},
        {"0 u1 5 6 4C", "0 u1 5 6 76"},
        {"0 u1 5 6 | 0 u1 5 7", "0 u1 5 * -1"},
        {"0 u1 5 6 | 0 u1 6 6", "0 u1 * * -1"},
        {"0 u1 5 6, 0 u1 5 6", "0 u1 5 * -1"},  // one region covers all minors, also of one
        {"0 u1 5 6, 0 u1 7 6, 0 u1 5 6", "0 u1 * * -1"},  // once widened it stays widened
        {"0 u1 5 6, 1 u1 5 7", "3 u1 5 * -1"},
        {"1 u1 5 6, 1 u1 6 7, 0 u1 5 8", "3 u1 * * -1"},
        {"1 u1 5 6 4C, 1 u1 5 7 004c", "1 u1 5 * 76"},
        {"1 u1 5 6 4C, 1 u1 5 7 4D, 1 u1 5 7 4C", "1 u1 5 * -1"},
        {"2 n1 i2", "2 n1 i2"},
        {"1 u1 5 6 4C, 0 u1 5 7 4C", "3 u1 5 * 76"},
        {"2 n1 i2 | 2 n1 i2", "2 n1 i2"},
        {"2 n1 i2 | 2 n1 i3, 2 n1 i2", "2 n1 *"},
        {"2 n0 i0, 0 u0 0 0, 2 n0 i1, 3 u0 0 0", "2 n0 *, 3 u0 0 * -1"},
        {"0 u2 1 1 | 2 n1 i1, 0 u1 1 1 | 0 u2 1 2", "0 u2 1 * -1, 2 n1 i1, 0 u1 1 1 -1"}}) {
    TBeaconZones Zones(nullptr);
    FillZones(Zones, Text);
    EXPECT_EQ(NameOf(RegionsOfZones(Zones)), Regions) << Text;
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing
