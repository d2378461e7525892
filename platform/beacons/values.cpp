// The plain records of the beacon service.
#include "platform/beacons/System.Beacon.h"
#include "platform/hex.h"

namespace System::Beacon {

bool TEddystoneUID::SetNamespace(std::string_view AText) noexcept {
  return HexToBytes(AText, Namespace);
}
bool TEddystoneUID::SetInstance(std::string_view AText) noexcept {
  return HexToBytes(AText, Instance);
}
std::string TEddystoneUID::GetNamespace() const {
  return BytesToHex(Namespace);
}
std::string TEddystoneUID::GetInstance() const {
  return BytesToHex(Instance);
}

void TEddysUIDRegion::Initialize(const std::array<std::uint8_t, 10>& ANamespace) {
  UID = {ANamespace, {}};
  HasInstance = false;
}

void TEddysUIDRegion::Initialize(const std::array<std::uint8_t, 10>& ANamespace,
                                 const std::array<std::uint8_t, 6>& AInstance) {
  UID = {ANamespace, AInstance};
  HasInstance = true;
}

void TiBAltBeaconRegion::Initialize(const TGUID& AGUID, TKindofBeacon AKind, int AManufacturerID) {
  *this = {AGUID, std::nullopt, std::nullopt, AKind, AManufacturerID};
}

void TiBAltBeaconRegion::Initialize(const TGUID& AGUID,
                                    std::uint16_t AMajor,
                                    TKindofBeacon AKind,
                                    int AManufacturerID) {
  *this = {AGUID, AMajor, std::nullopt, AKind, AManufacturerID};
}

void TiBAltBeaconRegion::Initialize(const TGUID& AGUID,
                                    std::uint16_t AMajor,
                                    std::uint16_t AMinor,
                                    TKindofBeacon AKind,
                                    int AManufacturerID) {
  *this = {AGUID, AMajor, AMinor, AKind, AManufacturerID};
}

TBluetoothLEManager& TBluetoothLEManager::GetCurrentManager() {
  static TBluetoothLEManager Instance;
  return Instance;
}

bool TBluetoothLEManager::GetIsSupported() const noexcept {
#ifdef WAYFENCE_HAS_BLUEZ
  return true;
#else
  return false;
#endif
}

}  // namespace System::Beacon
