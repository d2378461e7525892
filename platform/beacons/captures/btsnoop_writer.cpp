#include "platform/beacons/captures/btsnoop.h"
#include "platform/beacons/captures/captures.h"
#include "platform/beacons/captures/hci_builder.h"
#include "platform/beacons/captures/output_file.h"

namespace System::Beacon {

namespace {

void AppendBig(std::vector<std::uint8_t>& ABytes, std::uint64_t AValue, int ASize) {
  for (int Shift = 8 * (ASize - 1); Shift >= 0; Shift -= 8) {
    ABytes.push_back(static_cast<std::uint8_t>(AValue >> Shift));
  }
}

class TBtsnoopWriter : public TInterfacedObject, public virtual IAdvertisementWriter {
 public:
  explicit TBtsnoopWriter(const std::string& APath);
  void Write(const TAdvertisement& AAdvertisement) override;
  void Close() override { FFile.Close(); }

 private:
  TOutputFile FFile;
};

TBtsnoopWriter::TBtsnoopWriter(const std::string& APath) : FFile(APath) {
  std::vector<std::uint8_t> Header(Btsnoop::Magic.begin(), Btsnoop::Magic.end());
  AppendBig(Header, Btsnoop::Version, 4);
  AppendBig(Header, Btsnoop::DatalinkH4, 4);
  FFile.Write(Header);
}

void TBtsnoopWriter::Write(const TAdvertisement& AAdvertisement) {
  CheckWritable(AAdvertisement, FFile.GetPath());
  for (const auto& Packet : BuildReports(AAdvertisement)) {
    std::vector<std::uint8_t> Record;
    AppendBig(Record, Packet.size(), 4);  // on the wire
    AppendBig(Record, Packet.size(), 4);  // in the file
    AppendBig(Record, Btsnoop::ReceivedEvent, 4);
    AppendBig(Record, 0, 4);  // packets that were dropped
    AppendBig(Record, static_cast<std::uint64_t>(AAdvertisement.Time + Btsnoop::UnixEpoch), 8);
    Record.insert(Record.end(), Packet.begin(), Packet.end());
    FFile.Write(Record);
  }
}

}  // namespace

TRef<IAdvertisementWriter> CreateBtsnoop(const std::string& APath) {
  return New<TBtsnoopWriter>(APath);
}

}  // namespace System::Beacon
