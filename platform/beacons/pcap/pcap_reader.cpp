#include "platform/beacons/pcap/pcap_reader.h"

#include <fmt/format.h>
#include <pcap/pcap.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "platform/beacons/captures/btsnoop.h"
#include "platform/beacons/captures/hci_reports.h"
#include "platform/beacons/pcap/sniffer_header.h"

namespace System::Beacon {

namespace {

ssize_t ReadStream(void* ACookie, char* ABuffer, std::size_t ASize) {
  auto& Stream = *static_cast<TByteStream*>(ACookie);
  const auto Bytes = Stream.Peek(1);
  const std::size_t Count = std::min(ASize, Bytes.size());
  std::copy_n(Bytes.begin(), Count, ABuffer);
  Stream.Skip(Count);
  return static_cast<ssize_t>(Count);
}

/// The stream as the C library's kind of file; unbuffered, so that the stream's position is
/// that of libpcap.
std::FILE* OpenStreamAsFile(TByteStream& AStream) {
  std::FILE* File =
      ::fopencookie(&AStream, "rb", {.read = ReadStream, .write = {}, .seek = {}, .close = {}});
  if (File) std::setvbuf(File, nullptr, _IONBF, 0);
  return File;
}

bool IsKnownLinkType(int ALinkType) {
  constexpr std::array Known{DLT_BLUETOOTH_HCI_H4,
                             DLT_BLUETOOTH_HCI_H4_WITH_PHDR,
                             DLT_BLUETOOTH_LE_LL,
                             DLT_BLUETOOTH_LINUX_MONITOR,
                             DLT_BLUETOOTH_LE_LL_WITH_PHDR,
                             DLT_NORDIC_BLE};
  return std::find(Known.begin(), Known.end(), ALinkType) != Known.end();
}

std::string NameOf(int ALinkType) {
  const char* Name = pcap_datalink_val_to_name(ALinkType);
  return Name ? fmt::format("{} ({})", ALinkType, Name) : fmt::to_string(ALinkType);
}

/// Microseconds since 1970; out of range when the seconds are.
TTicks TimeOf(const pcap_pkthdr& AHeader) {
  constexpr TTicks MaxSeconds = MaxCaptureTime / TicksPerSecond;
  const TTicks Seconds = std::clamp<TTicks>(AHeader.ts.tv_sec, -MaxSeconds - 1, MaxSeconds + 1);
  return Seconds * TicksPerSecond + AHeader.ts.tv_usec;
}

class TPcapReader : public TCaptureReader {
 public:
  explicit TPcapReader(std::unique_ptr<TByteStream> AStream);

 protected:
  bool ReadRecord() override;
  std::string GetPlace() const override { return fmt::format("byte {}", FRecordPosition); }

 private:
  using TBytes = std::span<const std::uint8_t>;

  void Open();
  std::string_view ParseRecord(TBytes ABytes, TTicks ATime);
  std::string_view ParseMonitor(TBytes ABytes, TTicks ATime);
  std::string_view ParseSniffed(TSniffedPacket ASniffed, TTicks ATime);

  std::unique_ptr<pcap_t, decltype(&pcap_close)> FPcap{nullptr, &pcap_close};
  int FLinkType = 0;
  std::uint64_t FRecordPosition = 0;
  THciReports FHciReports{FQueue};
  TLinkLayerReports FLinkLayerReports{FQueue};
};

TPcapReader::TPcapReader(std::unique_ptr<TByteStream> AStream)
    : TCaptureReader(std::move(AStream)) {
  Open();
  FLinkType = pcap_datalink(FPcap.get());
  if (!IsKnownLinkType(FLinkType)) {
    Refuse(
        fmt::format("link type {} holds no Bluetooth advertisements that are read; record with "
                    "link type 187, 201, 251, 254, 256 or 272",
                    NameOf(FLinkType)));
  }
}

void TPcapReader::Open() {
  std::FILE* File = OpenStreamAsFile(*FStream);
  if (!File) Refuse("out of memory");
  std::array<char, PCAP_ERRBUF_SIZE> Error{};
  FPcap.reset(pcap_fopen_offline(File, Error.data()));  // takes the file when it succeeds
  if (FPcap) return;
  std::fclose(File);
  Refuse(fmt::format("not a pcap or pcapng file that can be read: {}", Error.data()));
}

bool TPcapReader::ReadRecord() {
  FRecordPosition = FStream->GetPosition();
  pcap_pkthdr* Header = nullptr;
  const std::uint8_t* Data = nullptr;
  const int Result = pcap_next_ex(FPcap.get(), &Header, &Data);
  if (Result != 1) {
    if (Result == PCAP_ERROR) AddProblem(pcap_geterr(FPcap.get()));
    AddProblem(FHciReports.Finish());
    AddProblem(FLinkLayerReports.Finish());
    return false;
  }
  const TTicks Time = TimeOf(*Header);
  if (AcceptTime(Time)) AddProblem(ParseRecord({Data, Header->caplen}, Time));
  return true;
}

std::string_view TPcapReader::ParseRecord(TBytes ABytes, TTicks ATime) {
  constexpr std::size_t DirectionSize = 4;
  switch (FLinkType) {
    case DLT_BLUETOOTH_HCI_H4:
      return FHciReports.ParsePacket(ABytes, ATime);
    case DLT_BLUETOOTH_HCI_H4_WITH_PHDR:
      if (ABytes.size() < DirectionSize) return "HCI packet cut short";
      return FHciReports.ParsePacket(ABytes.subspan(DirectionSize), ATime);
    case DLT_BLUETOOTH_LINUX_MONITOR:
      return ParseMonitor(ABytes, ATime);
    case DLT_BLUETOOTH_LE_LL_WITH_PHDR:
      return ParseSniffed(ParseRadioHeader(ABytes), ATime);
    case DLT_NORDIC_BLE:
      return ParseSniffed(ParseNordicHeader(ABytes), ATime);
    default:
      return ParseSniffed(ParseBarePacket(ABytes), ATime);
  }
}

std::string_view TPcapReader::ParseMonitor(TBytes ABytes, TTicks ATime) {
  TByteCursor Cursor(ABytes);
  const std::uint16_t Adapter = Cursor.Big16();
  const std::uint16_t Opcode = Cursor.Big16();
  if (Cursor.IsShort()) return "monitor packet cut short";
  if (Opcode != Btsnoop::MonitorEventPacket) return {};
  return FHciReports.ParseEvent(Cursor.TakeRest(), ATime, Adapter);
}

std::string_view TPcapReader::ParseSniffed(TSniffedPacket ASniffed, TTicks ATime) {
  if (!ASniffed.Packet) return ASniffed.Problem;
  ASniffed.Packet->Time = ATime;
  return FLinkLayerReports.Parse(*ASniffed.Packet);
}

}  // namespace

TRef<IAdvertisementReader> ReadPcap(std::unique_ptr<TByteStream> AStream) {
  return New<TPcapReader>(std::move(AStream));
}

}  // namespace System::Beacon
