// Sightings whose every answer a test decides.
#pragma once

#include "platform/beacons/System.Beacon.h"

namespace System::Beacon {

/// A sighting of any kind. Its answers are plain members; one thread at a time.
class TFakeBeacon final : public TInterfacedObject,
                          public virtual IiBeacon,
                          public virtual IAltBeacon,
                          public virtual IEddystoneBeacon {
 public:
  TKindofBeacon Kind = TKindofBeacon::iBeacon;
  TGUID GUID;
  int Major = 0;
  int Minor = 0;
  TEddystoneUID UID;
  double Distance = -1.0;
  TBeaconProximity Proximity = TBeaconProximity::Away;
  bool Alive = true;
  bool OffersView = true;  ///< of its kind

  TKindofBeacon GetKindofBeacon() const override { return Kind; }
  TGUID GetGUID() const override { return GUID; }
  int GetMajor() const override { return Major; }
  int GetMinor() const override { return Minor; }
  double GetDistance() const override { return Distance; }
  TBeaconProximity GetProximity() const override { return Proximity; }
  bool IsAlive() const override { return Alive; }
  int GetRssi() const override { return -60; }
  int GetTxPower() const override { return -59; }
  TBluetoothAddress GetAddress() const override { return {}; }
  int GetManufacturerID() const override { return 0x0118; }
  TEddystoneUID GetEddystoneUID() const override { return UID; }
  const IiBeacon* GetiBeaconView() const override {
    return Offers(TKindofBeacon::iBeacon) || Offers(TKindofBeacon::iBeaconAltBeacon) ? this
                                                                                     : nullptr;
  }
  const IAltBeacon* GetAltBeaconView() const override {
    return Offers(TKindofBeacon::AltBeacon) ? this : nullptr;
  }
  const IEddystoneBeacon* GetEddystoneView() const override {
    return Offers(TKindofBeacon::Eddystone) ? this : nullptr;
  }

 private:
  bool Offers(TKindofBeacon AKind) const { return OffersView && Kind == AKind; }
};

/// The UUID that tests give their beacons unless they say otherwise.
inline const TGUID TestGUID = StringToGUID("{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}");

/// A sighting of `TestGUID`, major 0 and the given minor.
inline TRef<TFakeBeacon> NewFakeBeacon(int AMinor, TKindofBeacon AKind = TKindofBeacon::iBeacon) {
  TRef<TFakeBeacon> Result = New<TFakeBeacon>();
  Result->Kind = AKind;
  Result->GUID = TestGUID;
  Result->Minor = AMinor;
  return Result;
}

}  // namespace System::Beacon
