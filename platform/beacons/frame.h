// Beacon frames inside advertising payloads.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "platform/guid.h"

namespace System::Beacon {

enum class TFrameKind : std::uint8_t {
  iBeacon,
  AltBeacon,
  EddystoneUID,
  EddystoneURL,
  EddystoneTLM
};

/// Calibrated power that stands for "none".
inline constexpr std::int8_t NoPower = 127;

/// One decoded frame; a view into the payload.
struct TBeaconFrame {
  TFrameKind Kind = TFrameKind::iBeacon;
  std::int8_t Power = NoPower;         ///< dBm at 1 m (Eddystone: what is sent, less 41 dB)
  std::uint16_t Major = 0;             ///< iBeacon, AltBeacon
  std::uint16_t Minor = 0;             ///< iBeacon, AltBeacon
  std::uint16_t ManufacturerID = 0;    ///< company identifier of iBeacon and AltBeacon
  std::uint8_t Reserved = 0;           ///< AltBeacon's manufacturer-reserved byte, 0 when not sent
  const std::uint8_t* Id = nullptr;    ///< 16 bytes: UUID, or Eddystone namespace and instance
  std::span<const std::uint8_t> Data;  ///< EddystoneURL: scheme and text; EddystoneTLM: 12 bytes

  TGUID GetGUID() const noexcept;
};

/// Walks the beacon frames of one advertising payload. Payloads without a flags field, with a scan
/// response appended or padded with zeros are common and valid. Never reads outside the payload.
class TFrameReader {
 public:
  explicit TFrameReader(std::span<const std::uint8_t> APayload) noexcept : FRest(APayload) {}

  /// The next frame; false at the end.
  bool Next(TBeaconFrame& AFrame) noexcept;
  /// How many beacon frames were malformed so far, and whether the payload is cut short.
  unsigned GetMalformed() const noexcept { return FMalformed; }

 private:
  std::span<const std::uint8_t> FRest;
  unsigned FMalformed = 0;
};

/// The text of an Eddystone URL frame's `Data` ("https://www.example.com/"); false for a scheme or
/// a character that the format does not know.
bool DecodeEddystoneURL(std::span<const std::uint8_t> AData, std::string& AURL);

}  // namespace System::Beacon
