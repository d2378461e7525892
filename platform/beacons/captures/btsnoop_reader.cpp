#include "platform/beacons/captures/btsnoop_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "platform/beacons/captures/btsnoop.h"
#include "platform/beacons/captures/hci_reports.h"

namespace System::Beacon {

namespace {

struct TRecordHeader {
  std::size_t Size;
  std::uint32_t Flags;
  std::uint64_t RawTime;
};

TRecordHeader ParseRecordHeader(std::span<const std::uint8_t> ABytes) {
  TByteCursor Cursor(ABytes.first(Btsnoop::RecordHeaderSize));
  Cursor.Take(4);  // size on the wire; what is in the file counts
  const std::size_t Size = Cursor.Big32();
  const std::uint32_t Flags = Cursor.Big32();
  Cursor.Take(4);  // packets that were dropped
  return {Size, Flags, Cursor.Big64()};
}

/// Microseconds since 1970; a time that wraps around ends up out of range.
TTicks TimeOf(const TRecordHeader& AHeader) {
  return static_cast<TTicks>(AHeader.RawTime - static_cast<std::uint64_t>(Btsnoop::UnixEpoch));
}

class TBtsnoopReader : public TCaptureReader {
 public:
  explicit TBtsnoopReader(std::unique_ptr<TByteStream> AStream);

 protected:
  bool ReadRecord() override;

 private:
  void ParseRecord(const TRecordHeader& AHeader, std::span<const std::uint8_t> AData);
  bool StopAt(std::string_view AWhat);

  std::uint32_t FDatalink = 0;
  THciReports FReports{FQueue};
};

TBtsnoopReader::TBtsnoopReader(std::unique_ptr<TByteStream> AStream)
    : TCaptureReader(std::move(AStream)) {
  TByteCursor Cursor(FStream->Peek(Btsnoop::FileHeaderSize));
  const auto Magic = Cursor.Take(Btsnoop::Magic.size());
  if (!std::equal(Magic.begin(), Magic.end(), Btsnoop::Magic.begin(), Btsnoop::Magic.end())) {
    Refuse("not a btsnoop file: it does not begin with \"btsnoop\"");
  }
  const std::uint32_t Version = Cursor.Big32();
  FDatalink = Cursor.Big32();
  if (Cursor.IsShort()) Refuse("btsnoop file cut short in its header; record it again");
  if (Version != Btsnoop::Version) {
    Refuse(fmt::format("btsnoop version {}; only version 1 is read", Version));
  }
  if (FDatalink != Btsnoop::DatalinkH4 && FDatalink != Btsnoop::DatalinkMonitor) {
    Refuse(fmt::format("btsnoop datalink {}; record with datalink 1002 (HCI H4) or 2001 (monitor)",
                       FDatalink));
  }
  FStream->Skip(Btsnoop::FileHeaderSize);
}

bool TBtsnoopReader::ReadRecord() {
  const auto Bytes = FStream->Peek(Btsnoop::RecordHeaderSize);
  if (Bytes.empty()) return StopAt({});
  if (Bytes.size() < Btsnoop::RecordHeaderSize) return StopAt("record cut short");
  const TRecordHeader Header = ParseRecordHeader(Bytes);
  if (Header.Size > MaxRecordSize) {
    return StopAt(fmt::format("record of {} bytes; the rest is not read", Header.Size));
  }
  const std::size_t Size = Btsnoop::RecordHeaderSize + Header.Size;
  const auto Record = FStream->Peek(Size);
  if (Record.size() < Size) return StopAt("record cut short");
  ParseRecord(Header, Record.subspan(Btsnoop::RecordHeaderSize, Header.Size));
  FStream->Skip(Size);
  return true;
}

void TBtsnoopReader::ParseRecord(const TRecordHeader& AHeader,
                                 std::span<const std::uint8_t> AData) {
  const TTicks Time = TimeOf(AHeader);
  if (!AcceptTime(Time)) return;
  if (FDatalink == Btsnoop::DatalinkH4) {
    AddProblem(FReports.ParsePacket(AData, Time));
  } else if ((AHeader.Flags & 0xFFFF) == Btsnoop::MonitorEventPacket) {
    const auto Adapter = static_cast<std::uint16_t>(AHeader.Flags >> 16);
    AddProblem(FReports.ParseEvent(AData, Time, Adapter));
  }
}

bool TBtsnoopReader::StopAt(std::string_view AWhat) {
  AddProblem(AWhat);
  AddProblem(FReports.Finish());
  return false;
}

}  // namespace

TRef<IAdvertisementReader> ReadBtsnoop(std::unique_ptr<TByteStream> AStream) {
  return New<TBtsnoopReader>(std::move(AStream));
}

}  // namespace System::Beacon
