// Builds pcap and pcapng files and the packets in them byte by byte.
#pragma once

#include "platform/beacons/captures/capture_builders.h"
#include "platform/beacons/pcap/link_layer.h"

namespace System::Beacon::CaptureTests {

struct TPacket {
  TTicks Time;  // microseconds since 1970
  TBytes Bytes;
};

/// A number in the byte order of a file.
using TNumber = TBytes (*)(std::uint64_t AValue, int ASize);

inline TBytes PcapFile(int ALinkType,
                       const std::vector<TPacket>& APackets,
                       TNumber ANumber = Little,
                       bool AIsNano = false) {
  const TBytes Version = Join({ANumber(2, 2), ANumber(4, 2)});
  const TBytes Limits = Join({ANumber(0, 8), ANumber(65535, 4), ANumber(ALinkType, 4)});
  TBytes File = Join({ANumber(AIsNano ? 0xA1B23C4D : 0xA1B2C3D4, 4), Version, Limits});
  for (const TPacket& Packet : APackets) {
    const TTicks Fraction = Packet.Time % TicksPerSecond * (AIsNano ? 1000 : 1);
    const TBytes Size = ANumber(Packet.Bytes.size(), 4);
    const TBytes Time = Join({ANumber(Packet.Time / TicksPerSecond, 4), ANumber(Fraction, 4)});
    File = Join({File, Time, Size, Size, Packet.Bytes});
  }
  return File;
}

inline TBytes PcapngBlock(std::uint32_t AType, const TBytes& ABody, TNumber ANumber) {
  const TBytes Padding((4 - ABody.size() % 4) % 4);
  const TBytes Size = ANumber(12 + ABody.size() + Padding.size(), 4);
  return Join({ANumber(AType, 4), Size, ABody, Padding, Size});
}

inline TBytes PcapngHeader(TNumber ANumber = Little) {
  const TBytes UnknownSize(8, 0xFF);
  return PcapngBlock(0x0A0D0D0A,
                     Join({ANumber(0x1A2B3C4D, 4), ANumber(1, 2), ANumber(0, 2), UnknownSize}),
                     ANumber);
}

inline TBytes PcapngInterface(int ALinkType, TNumber ANumber = Little) {
  return PcapngBlock(1, Join({ANumber(ALinkType, 2), ANumber(0, 2), ANumber(65535, 4)}), ANumber);
}

inline TBytes PcapngPacket(const TPacket& APacket, TNumber ANumber = Little) {
  const auto Time = static_cast<std::uint64_t>(APacket.Time);
  const TBytes Size = ANumber(APacket.Bytes.size(), 4);
  const TBytes Times = Join({ANumber(Time >> 32, 4), ANumber(Time & 0xFFFFFFFF, 4)});
  return PcapngBlock(6, Join({ANumber(0, 4), Times, Size, Size, APacket.Bytes}), ANumber);
}

inline TBytes PcapngFile(int ALinkType,
                         const std::vector<TPacket>& APackets,
                         TNumber ANumber = Little) {
  TBytes File = Join({PcapngHeader(ANumber), PcapngInterface(ALinkType, ANumber)});
  for (const TPacket& Packet : APackets) File = Join({File, PcapngPacket(Packet, ANumber)});
  return File;
}

/// A link-layer packet on an advertising channel with its checksum.
inline TBytes AirPacket(int AKind, const TBytes& APayload) {
  const TBytes Pdu =
      Join({{static_cast<std::uint8_t>(0x40 | AKind), static_cast<std::uint8_t>(APayload.size())},
            APayload});
  return Join({Hex("D6BE898E"), Pdu, Little(AdvertisingCrc(Pdu), 3)});
}

/// A legacy advertisement from C0:00:00:00:00:`AAddress`.
inline TBytes AirAdvertisement(std::uint8_t AAddress, const TBytes& AData, int AKind = 2) {
  return AirPacket(AKind, Join({{AAddress, 0, 0, 0, 0, 0xC0}, AData}));
}

/// Link type 256; the flags say dewhitened and signal valid unless others are given.
inline TBytes WithRadioHeader(const TBytes& AAirPacket, int ARssi, int AFlags = 0x0013) {
  return Join({{39, static_cast<std::uint8_t>(ARssi), 0x80, 0},
               Hex("D6BE898E"),
               Little(AFlags, 2),
               AAirPacket});
}

/// Link type 272, by header version; the flags say CRC ok unless others are given.
inline TBytes WithNordicHeader(
    const TBytes& AAirPacket, int ARssi, int AVersion = 2, int AMessage = 6, int AFlags = 1) {
  const auto Flags = static_cast<std::uint8_t>(AFlags);
  const TBytes Body =
      Join({{10, Flags, 39, static_cast<std::uint8_t>(-ARssi)}, TBytes(6), AAirPacket});
  const TBytes Size = AVersion == 1 ? Join({{6}, Little(Body.size(), 1)}) : Little(Body.size(), 2);
  const auto Byte = [](int A) { return static_cast<std::uint8_t>(A); };
  return Join({{1}, Size, {Byte(AVersion), 0, 0, Byte(AMessage)}, Body});
}

inline constexpr int LinkTypes[] = {187, 201, 251, 254, 256, 272};

/// An advertisement packed for a link type; 251 has no strength.
inline TBytes PackFor(int ALinkType, std::uint8_t AAddress, int ARssi, const TBytes& AData) {
  if (ALinkType == 251) return AirAdvertisement(AAddress, AData);
  if (ALinkType == 256) return WithRadioHeader(AirAdvertisement(AAddress, AData), ARssi);
  if (ALinkType == 272) return WithNordicHeader(AirAdvertisement(AAddress, AData), ARssi);
  const TBytes Event = ReportEvent(1, Report(AAddress, ARssi, AData));
  if (ALinkType == 254) return Join({{0, 0, 0, 3}, Event});
  return Join({ALinkType == 201 ? TBytes{0, 0, 0, 1, 4} : TBytes{4}, Event});
}

}  // namespace System::Beacon::CaptureTests
