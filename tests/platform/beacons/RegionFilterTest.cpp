// Regions and identities against a plain reading of the rules.
#include "platform/beacons/region_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "platform/random.h"
#include "support/fake_beacon.h"
#include "support/scripted_source.h"

namespace System::Beacon {
namespace {

/// Draws from so few values that identities meet often.
class TDraw {
 public:
  explicit TDraw(std::uint64_t ASeed) : FStream(ASeed) {}

  int Below(int ABound) { return static_cast<int>(FStream.NextBelow(ABound)); }
  TGUID GUID() {
    TGUID Result = TestGUID;
    Result.Bytes[15] = static_cast<std::uint8_t>(Below(3));
    return Result;
  }
  TEddystoneUID UID() {
    TEddystoneUID Result;
    Result.Namespace[9] = static_cast<std::uint8_t>(Below(2));
    Result.Instance[5] = static_cast<std::uint8_t>(Below(3));
    return Result;
  }
  TBeaconsRegion Region() {
    TBeaconsRegion Result;
    Result.KindofBeacon = static_cast<TKindofBeacon>(Below(4));
    Result.EddysUIDRegion.UID = UID();
    Result.EddysUIDRegion.HasInstance = Below(2) == 0;
    TiBAltBeaconRegion& Part = Result.iBAltBeaconRegion;
    Part.KindofBeacon = Result.KindofBeacon;
    Part.GUID = GUID();
    if (Below(2) == 0) Part.Major = static_cast<std::uint16_t>(Below(3));
    if (Part.Major && Below(2) == 0) Part.Minor = static_cast<std::uint16_t>(Below(3));
    Part.ManufacturerID = Below(3) == 0 ? 0x0118 : -1;
    return Result;
  }
  TPayload Payload() {
    const int What = Below(3);
    if (What == 0) return iBeaconPayload(GUID(), Below(3), Below(3));
    if (What == 1) return EddystoneUIDPayload(UID());
    return AltBeaconPayload(Below(2) == 0 ? 0x0118 : 0x0059, GUID(), Below(3), Below(3));
  }

 private:
  TRandomStream FStream;
};

bool IsIn(TKindofBeacon AKind, TKindofBeacons AKinds) {
  if (AKinds.Contains(AKind)) return true;
  return AKind != TKindofBeacon::Eddystone && AKinds.Contains(TKindofBeacon::iBeaconAltBeacon);
}

bool PlainlyAccepts(const TBeaconsRegion& ARegion, const TBeaconFrame& AFrame) {
  if (AFrame.Kind == TFrameKind::EddystoneUID) {
    const TEddysUIDRegion& Part = ARegion.EddysUIDRegion;
    return ARegion.KindofBeacon == TKindofBeacon::Eddystone &&
           std::equal(Part.UID.Namespace.begin(), Part.UID.Namespace.end(), AFrame.Id) &&
           (!Part.HasInstance ||
            std::equal(Part.UID.Instance.begin(), Part.UID.Instance.end(), AFrame.Id + 10));
  }
  const TiBAltBeaconRegion& Part = ARegion.iBAltBeaconRegion;
  const bool IsIBeacon = AFrame.Kind == TFrameKind::iBeacon;
  return IsIn(IsIBeacon ? TKindofBeacon::iBeacon : TKindofBeacon::AltBeacon,
              {ARegion.KindofBeacon}) &&
         Part.GUID == AFrame.GetGUID() && Part.Major.value_or(AFrame.Major) == AFrame.Major &&
         Part.Minor.value_or(AFrame.Minor) == AFrame.Minor &&
         (IsIBeacon || Part.ManufacturerID == -1 || Part.ManufacturerID == AFrame.ManufacturerID);
}

TEST(TRegionFilter, AcceptsWhatAWalkOverAllRegionsAccepts) {
  constexpr TKindofBeacon KindOfFrame[] = {
      TKindofBeacon::iBeacon, TKindofBeacon::AltBeacon, TKindofBeacon::Eddystone};
  int Accepted = 0, Refused = 0;
  TRegionFilter Filter;
  for (std::uint64_t Seed = 1; Seed <= 200; ++Seed) {
    TDraw Draw(Seed);
    std::vector<TBeaconsRegion> Regions(static_cast<std::size_t>(Draw.Below(8)));
    for (TBeaconsRegion& Region : Regions) Region = Draw.Region();
    const auto Kinds = TKindofBeacons::FromBits(static_cast<std::uint8_t>(Draw.Below(16)));
    Filter.Assign(Regions, Kinds);
    for (int I = 0; I < 50; ++I) {
      const TPayload Payload = Draw.Payload();
      TFrameReader Reader(Payload);
      TBeaconFrame Frame;
      ASSERT_TRUE(Reader.Next(Frame));
      const bool Expected =
          IsIn(KindOfFrame[static_cast<int>(Frame.Kind)], Kinds) &&
          std::any_of(Regions.begin(), Regions.end(), [&](const TBeaconsRegion& ARegion) {
            return PlainlyAccepts(ARegion, Frame);
          });
      ASSERT_EQ(Filter.Accepts(Frame), Expected) << "seed " << Seed << ", frame " << I;
      ++(Expected ? Accepted : Refused);
    }
  }
  EXPECT_GT(Accepted, 1'000);
  EXPECT_GT(Refused, 1'000);
}

TEST(TIdentityTable, HoldsWhatAMapHolds) {
  TRandomStream Random(3);
  const auto NewKey = [&Random] {
    TGUID GUID;
    GUID.Bytes[0] = static_cast<std::uint8_t>(Random.NextBelow(4));
    return TBeaconIdentity::OfUUID(GUID, 0, static_cast<std::uint16_t>(Random.NextBelow(60)));
  };
  TIdentityTable<int> Table;
  std::map<std::array<std::uint64_t, 3>, int> Map;
  for (int Step = 0; Step < 20'000; ++Step) {
    const TBeaconIdentity Key = NewKey();
    // Alternately more insertions and more erasures, so that the table fills and empties.
    const bool IsFilling = Step / 2'000 % 2 == 0;
    if (Random.NextBelow(4) < (IsFilling ? 3U : 1U)) {
      ASSERT_EQ(Table.Insert(Key, Step), Map.emplace(Key.Words, Step).second);
    } else {
      ASSERT_EQ(Table.Erase(Key), Map.erase(Key.Words) == 1);
    }
    ASSERT_EQ(Table.GetCount(), Map.size());
    const TBeaconIdentity Asked = NewKey();
    const int* const Found = Table.Find(Asked);
    const auto Expected = Map.find(Asked.Words);
    ASSERT_EQ(Found != nullptr, Expected != Map.end());
    ASSERT_EQ(Found ? *Found : -1, Found ? Expected->second : -1);
  }
}

}  // namespace
}  // namespace System::Beacon
