#include "platform/beacons/captures/captures.h"

#include <fmt/format.h>

#include <memory>
#include <utility>

#include "platform/beacons/captures/btsnoop_reader.h"
#include "platform/beacons/captures/capture_kind.h"
#include "platform/beacons/captures/log_reader.h"
#ifdef WAYFENCE_HAS_PCAP
#include "platform/beacons/pcap/pcap_reader.h"
#endif

namespace System::Beacon {

namespace {

using TStream = std::unique_ptr<TByteStream>;

/// Opens a file and reads its first bytes, so that what cannot be read at all is refused here.
TStream OpenStream(const std::string& APath) {
  auto Stream = std::make_unique<TByteStream>(OpenFileSource(APath), APath);
  Stream->Peek(1);
  if (!Stream->GetFailure().empty()) {
    throw EBeaconSourceError(
        fmt::format("{}: cannot be read: {}; check the file", APath, Stream->GetFailure()));
  }
  return Stream;
}

TStream OpenStream(std::vector<std::uint8_t> ABytes) {
  return std::make_unique<TByteStream>(MakeMemorySource(std::move(ABytes)), "capture in memory");
}

#ifndef WAYFENCE_HAS_PCAP
TRef<IAdvertisementReader> ReadPcap(TStream AStream) {
  throw EBeaconSourceError(
      fmt::format("{}: this build reads no pcap or pcapng captures; install the package "
                  "libpcap-dev and build again",
                  AStream->GetName()));
}
#endif

TRef<IAdvertisementReader> ReadCapture(TStream AStream) {
  switch (DetectCaptureKind(*AStream)) {
    case TCaptureKind::Btsnoop:
      return ReadBtsnoop(std::move(AStream));
    case TCaptureKind::Pcap:
      return ReadPcap(std::move(AStream));
    case TCaptureKind::Log:
      break;
  }
  return ReadAdvertisementLog(std::move(AStream));
}

}  // namespace

TRef<IAdvertisementReader> OpenCapture(const std::string& APath) {
  return ReadCapture(OpenStream(APath));
}

TRef<IAdvertisementReader> OpenBtsnoop(const std::string& APath) {
  return ReadBtsnoop(OpenStream(APath));
}

TRef<IAdvertisementReader> OpenPcap(const std::string& APath) {
  return ReadPcap(OpenStream(APath));
}

TRef<IAdvertisementReader> OpenAdvertisementLog(const std::string& APath) {
  return ReadAdvertisementLog(OpenStream(APath));
}

TRef<IAdvertisementReader> OpenCapture(std::vector<std::uint8_t> ABytes) {
  return ReadCapture(OpenStream(std::move(ABytes)));
}

TRef<IAdvertisementReader> OpenBtsnoop(std::vector<std::uint8_t> ABytes) {
  return ReadBtsnoop(OpenStream(std::move(ABytes)));
}

TRef<IAdvertisementReader> OpenPcap(std::vector<std::uint8_t> ABytes) {
  return ReadPcap(OpenStream(std::move(ABytes)));
}

TRef<IAdvertisementReader> OpenAdvertisementLog(std::vector<std::uint8_t> ABytes) {
  return ReadAdvertisementLog(OpenStream(std::move(ABytes)));
}

}  // namespace System::Beacon
