#include "platform/beacons/bluez/device_properties.h"

#include <algorithm>
#include <string>

#include "platform/hex.h"

namespace System::Beacon {
namespace {

constexpr std::uint8_t ManufacturerDataType = 0xFF;
constexpr std::uint8_t ServiceDataType = 0x16;
// One byte holds the length of type, company or service, and data.
constexpr std::size_t MaxDataSize = 255 - 3;

class TPayloadBuilder {
 public:
  explicit TPayloadBuilder(TDeviceProperties& AProperties) : FProperties(AProperties) {
    for (const auto& Payload : AProperties.Payloads) FSize += Payload.size();
  }

  void Add(std::uint8_t AType, std::uint16_t AOwner, std::span<const std::uint8_t> AData) {
    const std::size_t Size = AData.size() + 4;
    if (AData.size() > MaxDataSize || FSize + Size > MaxPayloadSize) return;
    std::vector<std::uint8_t> Payload{static_cast<std::uint8_t>(Size - 1),
                                      AType,
                                      static_cast<std::uint8_t>(AOwner & 0xFF),
                                      static_cast<std::uint8_t>(AOwner >> 8)};
    Payload.insert(Payload.end(), AData.begin(), AData.end());
    auto& Payloads = FProperties.Payloads;
    if (std::find(Payloads.begin(), Payloads.end(), Payload) != Payloads.end()) return;
    Payloads.push_back(std::move(Payload));
    FSize += Size;
  }

 private:
  TDeviceProperties& FProperties;
  std::size_t FSize = 0;
};

// The number of a service with a 16-bit UUID, from the long form of it.
std::optional<std::uint16_t> ServiceNumber(std::string_view AUuid) {
  constexpr std::string_view Base = "-0000-1000-8000-00805f9b34fb";
  std::array<std::uint8_t, 4> Bytes{};
  const auto IsSame = [](char A, char B) {
    return A == B || (A >= 'A' && A <= 'F' && A + 32 == B);
  };
  if (AUuid.size() != 36 || !HexToBytes(AUuid.substr(0, 8), Bytes)) return {};
  if (!std::equal(Base.begin(), Base.end(), AUuid.begin() + 8, [&](char B, char A) {
        return IsSame(A, B);
      }))
    return {};
  if (Bytes[0] != 0 || Bytes[1] != 0) return {};
  return static_cast<std::uint16_t>(Bytes[2] << 8 | Bytes[3]);
}

void ReadManufacturerData(TBusReader& AReader, TDeviceProperties& AProperties) {
  TPayloadBuilder Builder(AProperties);
  AReader.InVariant("a{qv}", [&] {
    AReader.ForEachEntry("qv", [&] {
      std::uint16_t Company = 0;
      if (!AReader.Read(Company)) return;
      AReader.InVariant("ay",
                        [&] { Builder.Add(ManufacturerDataType, Company, AReader.ReadBytes()); });
    });
  });
}

void ReadServiceData(TBusReader& AReader, TDeviceProperties& AProperties) {
  TPayloadBuilder Builder(AProperties);
  AReader.InVariant("a{sv}", [&] {
    AReader.ForEachEntry("sv", [&] {
      const auto Service = ServiceNumber(AReader.ReadText());
      if (!Service) return;
      AReader.InVariant("ay", [&] { Builder.Add(ServiceDataType, *Service, AReader.ReadBytes()); });
    });
  });
}

void ReadAddress(TBusReader& AReader, TDeviceProperties& AProperties) {
  AReader.InVariant("s", [&] {
    TBluetoothAddress Address;
    if (TBluetoothAddress::Parse(AReader.ReadText(), Address)) AProperties.Address = Address;
  });
}

// What lies outside the range of the radio's readings is not known.
std::int8_t RssiOf(std::int16_t AValue) noexcept {
  return AValue >= -127 && AValue <= 20 ? static_cast<std::int8_t>(AValue) : UnknownRssi;
}

void ReadRssi(TBusReader& AReader, TDeviceProperties& AProperties) {
  if (const auto Value = AReader.ReadVariant<std::int16_t>()) AProperties.Rssi = RssiOf(*Value);
}

}  // namespace

TDeviceProperties ReadDeviceProperties(TBusReader& AReader) {
  TDeviceProperties Result;
  AReader.ForEachEntry("sv", [&] {
    const std::string_view Name = AReader.ReadText();
    if (Name == "Address") ReadAddress(AReader, Result);
    if (Name == "RSSI") ReadRssi(AReader, Result);
    if (Name == "ManufacturerData") ReadManufacturerData(AReader, Result);
    if (Name == "ServiceData") ReadServiceData(AReader, Result);
  });
  return Result;
}

bool AddressOfDevicePath(std::string_view APath, TBluetoothAddress& AAddress) {
  constexpr std::string_view Prefix = "dev_";
  const std::size_t Slash = APath.rfind('/');
  if (Slash == std::string_view::npos) return false;
  APath.remove_prefix(Slash + 1);
  if (APath.substr(0, Prefix.size()) != Prefix) return false;
  std::string Text(APath.substr(Prefix.size()));
  std::replace(Text.begin(), Text.end(), '_', ':');
  return TBluetoothAddress::Parse(Text, AAddress);
}

}  // namespace System::Beacon
