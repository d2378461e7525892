#include "apps/wayfence/beacon_fields.h"

#include <fmt/format.h>

namespace Wayfence {

using namespace System;
using namespace System::Beacon;

namespace {

template <class TEnum>
std::string NameOfValue(TEnum AValue) {
  return std::string(TEnumNames<TEnum>::Names.at(static_cast<std::size_t>(AValue)));
}

}  // namespace

std::string NameOf(TKindofBeacon AKind) {
  return NameOfValue(AKind);
}
std::string NameOf(TBeaconProximity AProximity) {
  return NameOfValue(AProximity);
}

void AddBeacon(TJsonLine& ALine, const IBeacon& ABeacon) {
  ALine.Text("address", ABeacon.GetAddress().ToText());
  ALine.Text("kind", NameOf(ABeacon.GetKindofBeacon()));
  if (const IEddystoneBeacon* const View = ABeacon.GetEddystoneView()) {
    ALine.Text("namespace", View->GetEddystoneUID().GetNamespace());
    ALine.Text("instance", View->GetEddystoneUID().GetInstance());
  } else {
    ALine.Text("uuid", GUIDToString(ABeacon.GetGUID()));
    ALine.Number("major", ABeacon.GetMajor()).Number("minor", ABeacon.GetMinor());
  }
  if (ABeacon.GetRssi() != UnknownRssi) ALine.Number("rssi", ABeacon.GetRssi());
  if (ABeacon.GetDistance() >= 0.0) ALine.Decimal("distance", ABeacon.GetDistance());
  AddProximity(ALine, ABeacon.GetProximity());
}

void AddProximity(TJsonLine& ALine, TBeaconProximity AProximity) {
  ALine.Text("proximity", NameOf(AProximity));
}

void AddTelemetry(TJsonLine& ALine, const TEddystoneTLM& ATLM) {
  ALine.Decimal("voltage", ATLM.BatteryVoltage / 1000.0);
  if (ATLM.Temperature) ALine.Decimal("temperature", *ATLM.Temperature);
  ALine.Number("advertisements", ATLM.AdvertisementCount);
  ALine.Decimal("uptime", ATLM.TimeSinceBoot / 10.0, 1);
}

std::string RegionToJson(const TBeaconsRegion& ARegion) {
  TJsonLine Result;
  Result.Text("kind", NameOf(ARegion.KindofBeacon));
  if (ARegion.KindofBeacon == TKindofBeacon::Eddystone) {
    const TEddysUIDRegion& Part = ARegion.EddysUIDRegion;
    Result.Text("namespace", Part.GetNamespaceST());
    if (Part.HasInstance) Result.Text("instance", Part.GetInstanceST());
    return Result.ToText();
  }
  const TiBAltBeaconRegion& Part = ARegion.iBAltBeaconRegion;
  Result.Text("uuid", GUIDToString(Part.GUID));
  if (Part.Major) Result.Number("major", *Part.Major);
  if (Part.Minor) Result.Number("minor", *Part.Minor);
  if (Part.ManufacturerID >= 0)
    Result.Text("manufacturer", fmt::format("{:04X}", Part.ManufacturerID));
  return Result.ToText();
}

}  // namespace Wayfence
