// What a radio heard, and the two ways it reaches the beacon service: a reader that yields
// what a recording holds, and a source that delivers at the time when it is due.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/errors.h"
#include "platform/ref.h"
#include "platform/time.h"

namespace System::Beacon {

/// A 48-bit Bluetooth device address, most significant byte first, as it is printed.
struct TBluetoothAddress {
  std::array<std::uint8_t, 6> Bytes{};

  /// "C4:BE:84:01:02:03".
  std::string ToText() const;
  /// Reads the form that `ToText` prints, either letter case; false leaves `AAddress` alone.
  static bool Parse(std::string_view AText, TBluetoothAddress& AAddress) noexcept;

  auto operator<=>(const TBluetoothAddress&) const = default;
};

/// Strength value that stands for "not known".
inline constexpr std::int8_t UnknownRssi = 127;
/// The longest advertising payload that the protocol allows (chained extended advertising), bytes.
inline constexpr std::size_t MaxPayloadSize = 1650;

/// One advertisement. A plain value, except that the payload is a view into the buffer of
/// whoever delivered it, valid until the next one is asked for.
struct TAdvertisement {
  TTicks Time = 0;  ///< microseconds, in the clock of who delivers it
  TBluetoothAddress Address;
  std::int8_t Rssi = UnknownRssi;         ///< dBm
  std::span<const std::uint8_t> Payload;  ///< AD structures: length, type, data
};

/// A source or a recording that cannot be used. The message says what, where and what to do.
class EBeaconSourceError : public EGeneralError {
 public:
  using EGeneralError::EGeneralError;
};

/// What a reader could not read: how many places, and the first of them in words.
struct TReadProblems {
  static constexpr std::size_t MaxKept = 10;

  std::uint64_t Count = 0;
  std::vector<std::string> First;  ///< at most `MaxKept`, "byte 1234: record cut short"

  void Add(std::string_view AWhere, std::string_view AWhat);
};

/// Yields the advertisements of a recording in file order, as fast as they can be read.
/// One thread at a time. Rubbish never raises: it is counted in `GetProblems`, and what can
/// still be read after it is delivered.
class IAdvertisementReader : public virtual IInterface {
 public:
  /// The next advertisement; false at the end. `Time` is microseconds since 1 January 1970
  /// when `HasWallTime`, else since an origin of the recording's own.
  virtual bool Read(TAdvertisement& AAdvertisement) = 0;
  /// Whether times count from 1 January 1970, UTC.
  virtual bool HasWallTime() const = 0;
  virtual const TReadProblems& GetProblems() const = 0;
  /// How far the reader is, from 0 to 1, for progress display.
  virtual double GetProgress() const = 0;

 protected:
  ~IAdvertisementReader() = default;
};

/// What `IAdvertisementSource::Next` came back with.
enum class TSourceResult : std::uint8_t { Advertisement, TimedOut, Interrupted, Finished };

/// Delivers advertisements when they happen: a radio, a replayed recording, a simulated radio.
/// `Open`, `Next` and `Close` are called by one thread at a time (the beacon manager opens on the
/// thread that starts scanning, and calls `Next` on its reporting thread); `Interrupt` by any.
class IAdvertisementSource : public virtual IInterface {
 public:
  /// Makes the source ready. Raises `EBeaconSourceError`; the source is then closed.
  virtual void Open() = 0;
  /// Ends delivery and frees what `Open` took. Closing a closed source does nothing.
  virtual void Close() noexcept = 0;
  /// Waits for the next advertisement, at most until `ADeadline` (of `Ticks`), and fills
  /// `AAdvertisement` when the result is `Advertisement`; its `Time` is the `Ticks` of its
  /// arrival. `Finished` is final until the source is opened again. Raises `EBeaconSourceError`
  /// when the source has failed for good; what can heal (an adapter that comes back) does not
  /// raise.
  virtual TSourceResult Next(TAdvertisement& AAdvertisement, TTicks ADeadline) = 0;
  /// Makes the `Next` that waits now, or else the next one, come back at once with `Interrupted`.
  virtual void Interrupt() noexcept = 0;
  /// Whether the source is a radio, whose reception the scanning windows gate.
  virtual bool IsLive() const = 0;

 protected:
  ~IAdvertisementSource() = default;
};

}  // namespace System::Beacon
