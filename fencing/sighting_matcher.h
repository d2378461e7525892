// Which entry of a beacon list is the one of a sighting.
#pragma once

#include <optional>

#include "fencing/System.Beacon.Fencing.Types.h"

namespace System::Beacon::Fencing {

/// Recognises the beacon of one sighting: an entry that is bound by the identity of its sighting,
/// one that is not by its design beacon. What the sighting says of itself is read once. A sighting
/// without the view of its kind is recognised nowhere but where it is bound already.
class TSightingMatcher {
 public:
  /// The sighting must outlive the matcher.
  explicit TSightingMatcher(const IBeacon& ABeacon);

  bool operator()(const TFencingBeacon& AEntry) const;

 private:
  bool IsBoundTo(const IBeacon& ABound) const;
  bool IsPlacedAs(const IDesignBeacon& ADesign) const;

  const IBeacon& FBeacon;
  const TKindofBeacon FKind;
  const std::optional<TBeaconIdentity> FKey;
  const int FMajor;
  const int FMinor;
  const TGUID FGUID;
  TEddystoneUID FUID;  // of kind Eddystone
};

/// Whether a design beacon has a UUID, major and minor. What differs most is looked at first.
bool HasIdentity(const IDesignBeacon& ADesign, const TGUID& AUUID, int AMajor, int AMinor);

}  // namespace System::Beacon::Fencing
