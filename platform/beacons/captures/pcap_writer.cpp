#include <fmt/format.h>

#include <limits>

#include "platform/beacons/captures/captures.h"
#include "platform/beacons/captures/hci_builder.h"
#include "platform/beacons/captures/output_file.h"

namespace System::Beacon {

namespace {

constexpr std::uint32_t Magic = 0xA1B2C3D4;  // times in microseconds
constexpr std::uint32_t Version = 4 << 16 | 2;
constexpr std::uint32_t MaxPacketSize = 65535;
constexpr std::uint32_t LinkTypeH4WithDirection = 201;
constexpr std::array<std::uint8_t, 4> Received{0, 0, 0, 1};

void AppendLittle32(std::vector<std::uint8_t>& ABytes, std::uint64_t AValue) {
  for (int Shift = 0; Shift < 32; Shift += 8) {
    ABytes.push_back(static_cast<std::uint8_t>(AValue >> Shift));
  }
}

class TPcapWriter : public TInterfacedObject, public virtual IAdvertisementWriter {
 public:
  explicit TPcapWriter(const std::string& APath);
  void Write(const TAdvertisement& AAdvertisement) override;
  void Close() override { FFile.Close(); }

 private:
  TOutputFile FFile;
};

TPcapWriter::TPcapWriter(const std::string& APath) : FFile(APath) {
  std::vector<std::uint8_t> Header;
  for (const std::uint32_t Field :
       {Magic, Version, 0U, 0U, MaxPacketSize, LinkTypeH4WithDirection}) {
    AppendLittle32(Header, Field);
  }
  FFile.Write(Header);
}

void TPcapWriter::Write(const TAdvertisement& AAdvertisement) {
  CheckWritable(AAdvertisement, FFile.GetPath());
  const TTicks Seconds = AAdvertisement.Time / TicksPerSecond;
  if (AAdvertisement.Time < 0 || Seconds > std::numeric_limits<std::uint32_t>::max()) {
    throw EFileError(fmt::format(
        "{}: a time of {} s cannot be written; pcap holds 1970 to 2106", FFile.GetPath(), Seconds));
  }
  for (const auto& Packet : BuildReports(AAdvertisement)) {
    const std::size_t Size = Received.size() + Packet.size();
    std::vector<std::uint8_t> Record;
    AppendLittle32(Record, static_cast<std::uint64_t>(Seconds));
    AppendLittle32(Record, static_cast<std::uint64_t>(AAdvertisement.Time % TicksPerSecond));
    AppendLittle32(Record, Size);  // in the file
    AppendLittle32(Record, Size);  // on the wire
    Record.insert(Record.end(), Received.begin(), Received.end());
    Record.insert(Record.end(), Packet.begin(), Packet.end());
    FFile.Write(Record);
  }
}

}  // namespace

TRef<IAdvertisementWriter> CreatePcap(const std::string& APath) {
  return New<TPcapWriter>(APath);
}

}  // namespace System::Beacon
