#include "fencing/sighting_matcher.h"

namespace System::Beacon::Fencing {
namespace {

/// The instance first: it differs most.
bool HasIdentity(const IDesignBeacon& ADesign, const TEddystoneUID& AUID) {
  TEddystoneUID UID;
  return UID.SetInstance(ADesign.GetEddyInstance()) && UID.Instance == AUID.Instance &&
         UID.SetNamespace(ADesign.GetEddyNamespace()) && UID.Namespace == AUID.Namespace;
}

}  // namespace

TSightingMatcher::TSightingMatcher(const IBeacon& ABeacon)
    : FBeacon(ABeacon),
      FKind(ABeacon.GetKindofBeacon()),
      FKey(LookUpKeyOf(ABeacon)),
      FMajor(ABeacon.GetMajor()),
      FMinor(ABeacon.GetMinor()),
      FGUID(ABeacon.GetGUID()) {
  if (const IEddystoneBeacon* const View = ABeacon.GetEddystoneView())
    FUID = View->GetEddystoneUID();
}

bool TSightingMatcher::operator()(const TFencingBeacon& AEntry) const {
  if (AEntry.BTBeacon) return IsBoundTo(*AEntry.BTBeacon);
  return FKey && AEntry.DesignBeacon && IsPlacedAs(*AEntry.DesignBeacon);
}

/// What `IsSameBeacon` says, found out with less work.
bool TSightingMatcher::IsBoundTo(const IBeacon& ABound) const {
  if (&ABound == &FBeacon) return true;
  if (!FKey || ABound.GetKindofBeacon() != FKind) return false;
  if (FKind != TKindofBeacon::Eddystone &&
      (ABound.GetMinor() != FMinor || ABound.GetMajor() != FMajor))
    return false;
  return LookUpKeyOf(ABound) == FKey;
}

bool TSightingMatcher::IsPlacedAs(const IDesignBeacon& ADesign) const {
  if (FKind == TKindofBeacon::Eddystone) return HasIdentity(ADesign, FUID);
  return HasIdentity(ADesign, FGUID, FMajor, FMinor);
}

bool HasIdentity(const IDesignBeacon& ADesign, const TGUID& AUUID, int AMajor, int AMinor) {
  return ADesign.GetMinor() == AMinor && ADesign.GetMajor() == AMajor && ADesign.GetGUID() == AUUID;
}

}  // namespace System::Beacon::Fencing
