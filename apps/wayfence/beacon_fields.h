// The members by which events name beacons and regions.
#pragma once

#include <string>
#include <vector>

#include "apps/wayfence/json_line.h"
#include "platform/beacons/System.Beacon.h"

namespace Wayfence {

/// `address`, `kind`, `uuid`, `major`, `minor` or `namespace`, `instance`, then `rssi` (dBm),
/// `distance` (metres) and `proximity`; what is unknown is left out.
void AddBeacon(TJsonLine& ALine, const System::Beacon::IBeacon& ABeacon);
void AddProximity(TJsonLine& ALine, System::Beacon::TBeaconProximity AProximity);
/// `voltage` (volts), `temperature` (degrees Celsius, when known), `advertisements`, `uptime`
/// (seconds).
void AddTelemetry(TJsonLine& ALine, const System::Beacon::TEddystoneTLM& ATLM);

/// `kind`, then the identity as far as the region holds it; `manufacturer` when it asks for one.
std::string RegionToJson(const System::Beacon::TBeaconsRegion& ARegion);

/// The name of a value of the beacon service.
std::string NameOf(System::Beacon::TKindofBeacon AKind);
std::string NameOf(System::Beacon::TBeaconProximity AProximity);

}  // namespace Wayfence
