#include <fmt/format.h>
#include <gtest/gtest.h>

#include <sstream>

#include "fencing/System.Beacon.Fencing.h"
#include "platform/random.h"

namespace System::Beacon::Fencing {
namespace {

/// "kind u1 major minor manufacturer", "*" for any: "3 u1 5 * -1"; Eddystone: "2 n1 i2", "2 n1 *".
std::string NameOf(const TBeaconsRegion& ARegion) {
  const auto Number = [](auto A) { return A ? std::to_string(*A) : std::string("*"); };
  std::ostringstream Text;
  Text << static_cast<int>(ARegion.KindofBeacon);
  if (ARegion.KindofBeacon == TKindofBeacon::Eddystone) {
    const TEddysUIDRegion& Part = ARegion.EddysUIDRegion;
    Text << " n" << int{Part.UID.Namespace[0]};
    if (Part.HasInstance)
      Text << " i" << int{Part.UID.Instance[0]};
    else
      Text << " *";
  } else {
    const TiBAltBeaconRegion& Part = ARegion.iBAltBeaconRegion;
    Text << " u" << int{Part.GUID.Bytes[0]} << " " << Number(Part.Major) << " "
         << Number(Part.Minor) << " " << Part.ManufacturerID;
    EXPECT_EQ(Part.KindofBeacon, ARegion.KindofBeacon);
  }
  return Text.str();
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
  struct TCase {
    const char* Zones;
    const char* Regions;
  };
  for (const TCase& C :
       {TCase{"", ""},
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
        {"2 n1 i2 | 2 n1 i3", "2 n1 *"},
        {"2 n0 i0, 0 u0 0 0, 2 n0 i1, 3 u0 0 0", "2 n0 *, 3 u0 0 * -1"},
        {"0 u2 1 1 | 2 n1 i1, 0 u1 1 1 | 0 u2 1 2", "0 u2 1 * -1, 2 n1 i1, 0 u1 1 1 -1"}}) {
    TBeaconZones Zones(nullptr);
    FillZones(Zones, C.Zones);
    EXPECT_EQ(NameOf(RegionsOfZones(Zones)), C.Regions) << C.Zones;
  }
}

// ---------------------------------------------------------------- step by step

/// Widens one region for an item as the description of the merging has it, text by text.
bool CoverPlainly(TBeaconsRegion& ARegion, const TBeaconItem& AItem) {
  const TKindofBeacon Kind = AItem.GetKindofBeacon();
  const bool BothEddystone =
      ARegion.KindofBeacon == TKindofBeacon::Eddystone && Kind == TKindofBeacon::Eddystone;
  if (BothEddystone) {
    TEddysUIDRegion& Part = ARegion.EddysUIDRegion;
    if (Part.GetNamespaceST() != AItem.GetEddyNamespace()) return false;
    if (Part.GetInstanceST() != AItem.GetEddyInstance())
      Part.Initialize(AItem.GetEddyUID().Namespace);
    return true;
  }
  if (ARegion.KindofBeacon == TKindofBeacon::Eddystone || Kind == TKindofBeacon::Eddystone)
    return false;
  TiBAltBeaconRegion& Part = ARegion.iBAltBeaconRegion;
  if (Part.GUID != AItem.GetGUID()) return false;
  const bool KeepsMajor = Part.Major.has_value() && *Part.Major == AItem.GetMajor();
  const bool KeepsManufacturer = Part.ManufacturerID == AItem.GetMID();
  ARegion.KindofBeacon = ARegion.KindofBeacon == Kind ? Kind : TKindofBeacon::iBeaconAltBeacon;
  const int Manufacturer = KeepsManufacturer ? AItem.GetMID() : -1;
  if (KeepsMajor)
    Part.Initialize(AItem.GetGUID(), AItem.GetMajor(), ARegion.KindofBeacon, Manufacturer);
  else
    Part.Initialize(AItem.GetGUID(), ARegion.KindofBeacon, Manufacturer);
  return true;
}

TBeaconsRegion PlainRegionOf(const TBeaconItem& AItem) {
  TBeaconsRegion Result;
  Result.KindofBeacon = AItem.GetKindofBeacon();
  const TEddystoneUID UID = AItem.GetEddyUID();
  if (Result.KindofBeacon == TKindofBeacon::Eddystone)
    Result.EddysUIDRegion.Initialize(UID.Namespace, UID.Instance);
  else
    Result.iBAltBeaconRegion.Initialize(
        AItem.GetGUID(), AItem.GetMajor(), AItem.GetMinor(), Result.KindofBeacon, AItem.GetMID());
  return Result;
}

std::vector<TBeaconsRegion> MergePlainly(const TBeaconZones& AZones) {
  std::vector<TBeaconsRegion> Result;
  for (int I = 0; I < AZones.GetCount(); ++I) {
    const TBeaconInZoneList& List = *AZones.GetItems(I)->GetBeaconList();
    for (int J = 0; J < List.GetCount(); ++J) {
      bool IsCovered = false;
      for (TBeaconsRegion& Region : Result) IsCovered |= CoverPlainly(Region, *List.GetItems(J));
      if (!IsCovered) Result.push_back(PlainRegionOf(*List.GetItems(J)));
    }
  }
  return Result;
}

TEST(Regions, AreThoseOfTheStepByStepMerging) {
  TRandomStream Random(7);
  const auto Below = [&Random](std::uint32_t A) { return Random.NextBelow(A); };
  for (int Round = 0; Round < 3000; ++Round) {
    TBeaconZones Zones(nullptr);
    TBeaconZoneItem* Zone = Zones.Add();
    for (std::uint32_t Items = Random.NextBelow(12); Items > 0; --Items) {
      const std::uint32_t Kind = Random.NextBelow(4);
      AddItem(*Zone,
              Kind == 2 ? fmt::format("2 n{} i{}", Below(3), Below(3))
                        : fmt::format("{} u{} {} {}{}",
                                      Kind,
                                      Below(3),
                                      Below(3),
                                      Below(3),
                                      Below(2) ? fmt::format(" {}", Below(2)) : ""));
      if (Random.NextBelow(3) == 0) Zone = Zones.Add();
    }
    const std::vector<TBeaconsRegion> Expected = MergePlainly(Zones);
    ASSERT_EQ(RegionsOfZones(Zones), Expected)
        << NameOf(RegionsOfZones(Zones)) << "\ninstead of " << NameOf(Expected);
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing
