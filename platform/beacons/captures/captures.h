// Recorded advertisements: what reads them and what writes them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/beacons/advertisement.h"

namespace System::Beacon {

// Readers. Files are streamed through a bounded buffer. Each function raises `EBeaconSourceError`
// for a file that is missing, cannot be read or is not what it should be; the message names the
// file and says what to do. What is damaged further inside is counted in `GetProblems`.
// The clock of a recording that begins before 1 January 1971 was never set: it has no wall time.

/// A capture of the kind that its first bytes tell: btsnoop, pcap, pcapng, else a plain log.
TRef<IAdvertisementReader> OpenCapture(const std::string& APath);
/// A btsnoop file of HCI packets (datalink 1002) or of a Bluetooth monitor (datalink 2001).
TRef<IAdvertisementReader> OpenBtsnoop(const std::string& APath);
/// A pcap or pcapng file of link type 187, 201, 251, 254, 256 or 272. Raises as well when the
/// library was built without libpcap.
TRef<IAdvertisementReader> OpenPcap(const std::string& APath);
/// A plain log: one JSON object per line, `#` starts a comment line.
TRef<IAdvertisementReader> OpenAdvertisementLog(const std::string& APath);

// The same from the bytes of a file, which the reader keeps.
TRef<IAdvertisementReader> OpenCapture(std::vector<std::uint8_t> ABytes);
TRef<IAdvertisementReader> OpenBtsnoop(std::vector<std::uint8_t> ABytes);
TRef<IAdvertisementReader> OpenPcap(std::vector<std::uint8_t> ABytes);
TRef<IAdvertisementReader> OpenAdvertisementLog(std::vector<std::uint8_t> ABytes);

/// Writes advertisements to a file. One thread at a time. What is written is read back with the
/// same address, strength, payload and time (microseconds).
class IAdvertisementWriter : public virtual IInterface {
 public:
  /// Adds one advertisement. Raises `EFileError` when the file cannot be written to, or for a
  /// payload above `MaxPayloadSize` or a time that the format cannot hold; the file stays usable
  /// after the latter two.
  virtual void Write(const TAdvertisement& AAdvertisement) = 0;
  /// Completes the file; a second call does nothing. Raises `EFileError` when anything written
  /// before did not reach it. A writer that is dropped unclosed closes its file quietly.
  virtual void Close() = 0;

 protected:
  ~IAdvertisementWriter() = default;
};

/// What the times of written advertisements count from.
enum class TCaptureClock : std::uint8_t {
  Recording,  ///< an origin of the recording's own
  Wall        ///< 1 January 1970, UTC
};

// Writers. An existing file is overwritten. Each function raises `EFileError` for a file that
// cannot be made.

/// A btsnoop file of HCI packets; what exceeds a legacy report is written as extended reports.
/// Btsnoop times are dates: `Recording` times are written as if the recording began in 1970.
TRef<IAdvertisementWriter> CreateBtsnoop(const std::string& APath);
/// A pcap file of HCI packets (link type 201), times as in `CreateBtsnoop`, from 1970 to 2106.
TRef<IAdvertisementWriter> CreatePcap(const std::string& APath);
/// A plain log. With `Wall` its times count from a start that a comment line states.
TRef<IAdvertisementWriter> CreateAdvertisementLog(const std::string& APath,
                                                  TCaptureClock AClock = TCaptureClock::Recording);

}  // namespace System::Beacon
