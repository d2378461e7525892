#include "platform/beacons/frame.h"

#include <cstring>
#include <string_view>

namespace System::Beacon {
namespace {

using TBytes = std::span<const std::uint8_t>;

enum class TOutcome : std::uint8_t { Frame, NotABeacon, Malformed };

constexpr std::uint8_t ADManufacturerData = 0xFF;
constexpr std::uint8_t ADServiceData16 = 0x16;
constexpr std::size_t UUIDFrameSize = 25;    // company, code, UUID, major, minor, power
constexpr int EddystoneLossAtOneMetre = 41;  // dB

std::uint16_t LittleEndian16(const std::uint8_t* ABytes) noexcept {
  return static_cast<std::uint16_t>(ABytes[0] | ABytes[1] << 8);
}
std::uint16_t BigEndian16(const std::uint8_t* ABytes) noexcept {
  return static_cast<std::uint16_t>(ABytes[0] << 8 | ABytes[1]);
}

std::int8_t PowerAtOneMetre(std::uint8_t APowerAtZero) noexcept {
  const auto Power = static_cast<std::int8_t>(APowerAtZero);
  if (Power == NoPower) return NoPower;
  return static_cast<std::int8_t>(std::max(Power - EddystoneLossAtOneMetre, -128));
}

/// `AData`: company identifier, code, UUID, major, minor, power and, for AltBeacon, one byte more.
TOutcome ReadManufacturerData(TBytes AData, TBeaconFrame& AFrame) noexcept {
  if (AData.size() < 4) return TOutcome::NotABeacon;
  const bool IsIBeacon =
      AData[0] == 0x4C && AData[1] == 0x00 && AData[2] == 0x02 && AData[3] == 0x15;
  const bool IsAltBeacon = AData[2] == 0xBE && AData[3] == 0xAC;
  if (!IsIBeacon && !IsAltBeacon) return TOutcome::NotABeacon;
  if (AData.size() < UUIDFrameSize) return TOutcome::Malformed;
  AFrame.Kind = IsIBeacon ? TFrameKind::iBeacon : TFrameKind::AltBeacon;
  AFrame.ManufacturerID = LittleEndian16(AData.data());
  AFrame.Id = AData.data() + 4;
  AFrame.Major = BigEndian16(AData.data() + 20);
  AFrame.Minor = BigEndian16(AData.data() + 22);
  AFrame.Power = static_cast<std::int8_t>(AData[24]);
  AFrame.Reserved = IsAltBeacon && AData.size() > UUIDFrameSize ? AData[25] : 0;
  AFrame.Data = {};
  return TOutcome::Frame;
}

TOutcome ReadEddystone(TBytes AFrameBytes, TBeaconFrame& AFrame) noexcept {
  if (AFrameBytes.empty()) return TOutcome::Malformed;
  AFrame = {};
  switch (AFrameBytes[0]) {
    case 0x00:  // UID: power at 0 m, namespace, instance, perhaps two reserved bytes
      if (AFrameBytes.size() < 18) return TOutcome::Malformed;
      AFrame.Kind = TFrameKind::EddystoneUID;
      AFrame.Power = PowerAtOneMetre(AFrameBytes[1]);
      AFrame.Id = AFrameBytes.data() + 2;
      return TOutcome::Frame;
    case 0x10:  // URL: power at 0 m, scheme, text
      if (AFrameBytes.size() < 3) return TOutcome::Malformed;
      AFrame.Kind = TFrameKind::EddystoneURL;
      AFrame.Power = PowerAtOneMetre(AFrameBytes[1]);
      AFrame.Data = AFrameBytes.subspan(2);
      return TOutcome::Frame;
    case 0x20:  // telemetry: version 0 is plain, the others are encrypted
      if (AFrameBytes.size() < 2) return TOutcome::Malformed;
      if (AFrameBytes[1] != 0) return TOutcome::NotABeacon;
      if (AFrameBytes.size() < 14) return TOutcome::Malformed;
      AFrame.Kind = TFrameKind::EddystoneTLM;
      AFrame.Data = AFrameBytes.subspan(2, 12);
      return TOutcome::Frame;
    default:
      return TOutcome::NotABeacon;
  }
}

TOutcome ReadServiceData(TBytes AData, TBeaconFrame& AFrame) noexcept {
  if (AData.size() < 2 || AData[0] != 0xAA || AData[1] != 0xFE) return TOutcome::NotABeacon;
  return ReadEddystone(AData.subspan(2), AFrame);
}

TOutcome ReadStructure(TBytes AStructure, TBeaconFrame& AFrame) noexcept {
  switch (AStructure[0]) {
    case ADManufacturerData:
      return ReadManufacturerData(AStructure.subspan(1), AFrame);
    case ADServiceData16:
      return ReadServiceData(AStructure.subspan(1), AFrame);
    default:
      return TOutcome::NotABeacon;
  }
}

}  // namespace

TGUID TBeaconFrame::GetGUID() const noexcept {
  TGUID Result;
  std::memcpy(Result.Bytes.data(), Id, Result.Bytes.size());
  return Result;
}

bool TFrameReader::Next(TBeaconFrame& AFrame) noexcept {
  while (!FRest.empty()) {
    const std::size_t Length = FRest[0];
    if (Length == 0) {  // padding: a scan response may follow it
      FRest = FRest.subspan(1);
      continue;
    }
    if (Length >= FRest.size()) {
      ++FMalformed;
      FRest = {};
      return false;
    }
    const TBytes Structure = FRest.subspan(1, Length);
    FRest = FRest.subspan(1 + Length);
    const TOutcome Outcome = ReadStructure(Structure, AFrame);
    if (Outcome == TOutcome::Frame) return true;
    if (Outcome == TOutcome::Malformed) ++FMalformed;
  }
  return false;
}

bool DecodeEddystoneURL(TBytes AData, std::string& AURL) {
  static constexpr std::string_view Schemes[] = {
      "http://www.", "https://www.", "http://", "https://"};
  static constexpr std::string_view Endings[] = {".com/",
                                                 ".org/",
                                                 ".edu/",
                                                 ".net/",
                                                 ".info/",
                                                 ".biz/",
                                                 ".gov/",
                                                 ".com",
                                                 ".org",
                                                 ".edu",
                                                 ".net",
                                                 ".info",
                                                 ".biz",
                                                 ".gov"};
  if (AData.empty() || AData[0] >= std::size(Schemes)) return false;
  std::string Result(Schemes[AData[0]]);
  for (const std::uint8_t Byte : AData.subspan(1)) {
    if (Byte < std::size(Endings))
      Result += Endings[Byte];
    else if (Byte > 0x20 && Byte < 0x7F)
      Result += static_cast<char>(Byte);
    else
      return false;
  }
  AURL = std::move(Result);
  return true;
}

}  // namespace System::Beacon
