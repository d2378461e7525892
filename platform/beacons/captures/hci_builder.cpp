#include "platform/beacons/captures/hci_builder.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "platform/beacons/captures/advertisement_queue.h"
#include "platform/beacons/captures/capture_reader.h"
#include "platform/beacons/captures/hci.h"

namespace System::Beacon {

namespace {

using TBytes = std::vector<std::uint8_t>;

constexpr std::uint8_t RandomAddress = 1;
constexpr std::uint8_t NonConnectable = 3;
constexpr std::uint8_t Phy1M = 1;
constexpr std::uint8_t UnknownPower = 127;

void AppendAddress(TBytes& AEvent, const TBluetoothAddress& AAddress) {
  AEvent.insert(AEvent.end(), AAddress.Bytes.rbegin(), AAddress.Bytes.rend());
}

void AppendPayload(TBytes& AEvent, std::span<const std::uint8_t> APayload) {
  AEvent.push_back(static_cast<std::uint8_t>(APayload.size()));
  AEvent.insert(AEvent.end(), APayload.begin(), APayload.end());
}

TBytes BeginPacket(std::uint8_t ASubevent) {
  return {Hci::EventPacket, Hci::LeMetaEvent, 0, ASubevent, 1};
}

TBytes EndPacket(TBytes APacket) {
  APacket[2] = static_cast<std::uint8_t>(APacket.size() - 3);
  return APacket;
}

TBytes BuildLegacy(const TAdvertisement& AAdvertisement) {
  TBytes Packet = BeginPacket(Hci::AdvertisingReport);
  Packet.insert(Packet.end(), {NonConnectable, RandomAddress});
  AppendAddress(Packet, AAdvertisement.Address);
  AppendPayload(Packet, AAdvertisement.Payload);
  Packet.push_back(static_cast<std::uint8_t>(RssiFromRadio(AAdvertisement.Rssi)));
  return EndPacket(std::move(Packet));
}

TBytes BuildFragment(const TAdvertisement& AAdvertisement,
                     std::span<const std::uint8_t> AFragment,
                     bool AMoreToCome) {
  TBytes Packet = BeginPacket(Hci::ExtendedAdvertisingReport);
  const std::uint16_t Kind = AMoreToCome ? Hci::DataIncomplete : 0;
  Packet.insert(Packet.end(), {static_cast<std::uint8_t>(Kind), 0, RandomAddress});
  AppendAddress(Packet, AAdvertisement.Address);
  const auto Rssi = static_cast<std::uint8_t>(RssiFromRadio(AAdvertisement.Rssi));
  Packet.insert(Packet.end(), {Phy1M, Phy1M, 0, UnknownPower, Rssi});
  Packet.insert(Packet.end(), 9, 0);  // no periodic advertising, not directed
  AppendPayload(Packet, AFragment);
  return EndPacket(std::move(Packet));
}

}  // namespace

std::vector<TBytes> BuildReports(const TAdvertisement& AAdvertisement) {
  auto Rest = AAdvertisement.Payload;
  if (Rest.size() <= Hci::MaxLegacyPayload) return {BuildLegacy(AAdvertisement)};
  std::vector<TBytes> Packets;
  while (!Rest.empty()) {
    const auto Fragment = Rest.first(std::min(Rest.size(), Hci::MaxFragment));
    Rest = Rest.subspan(Fragment.size());
    Packets.push_back(BuildFragment(AAdvertisement, Fragment, !Rest.empty()));
  }
  return Packets;
}

void CheckWritable(const TAdvertisement& AAdvertisement, const std::string& APath) {
  if (AAdvertisement.Payload.size() > MaxPayloadSize) {
    throw EFileError(fmt::format("{}: a payload of {} bytes cannot be written; {} are the most",
                                 APath,
                                 AAdvertisement.Payload.size(),
                                 MaxPayloadSize));
  }
  if (AAdvertisement.Time > MaxCaptureTime || AAdvertisement.Time < -MaxCaptureTime) {
    throw EFileError(fmt::format(
        "{}: a time of {} µs cannot be written; it is out of range", APath, AAdvertisement.Time));
  }
}

}  // namespace System::Beacon
