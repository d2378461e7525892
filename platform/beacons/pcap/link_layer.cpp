#include "platform/beacons/pcap/link_layer.h"

#include <optional>

namespace System::Beacon {

namespace {

constexpr std::uint32_t AdvertisingAccessAddress = 0x8E89BED6;
constexpr std::size_t PduHeaderSize = 2;
constexpr std::size_t MinLegacySize = 6;
constexpr std::size_t MaxLegacySize = 37;

constexpr std::string_view SPacketCutShort = "advertising packet cut short";
constexpr std::string_view SLegacySize = "advertising packet of an impossible length";
constexpr std::string_view SExtendedHeader = "extended advertising header damaged";

enum class TPduKind : std::uint8_t {
  Connectable = 0,
  NonConnectable = 2,
  ScanResponse = 4,
  Scannable = 6,
  Extended = 7
};

struct TExtendedHeader {
  std::optional<TBluetoothAddress> Advertiser;
  std::optional<std::uint16_t> DataInfo;
  bool HasNext = false;  // points to a packet that goes on with the advertisement
};

/// Reads an extended header and leaves the advertising data; empty when it is damaged.
std::optional<TExtendedHeader> TakeExtendedHeader(TByteCursor& APayload) {
  const std::uint8_t LengthAndMode = APayload.Byte();
  TByteCursor Fields(APayload.Take(LengthAndMode & 0x3F));
  TExtendedHeader Header;
  const std::uint8_t Flags = Fields.GetLeft() > 0 ? Fields.Byte() : std::uint8_t{0};
  if (Flags & 0x01) Header.Advertiser = Fields.Address();
  if (Flags & 0x02) Fields.Take(6);  // target address
  if (Flags & 0x04) Fields.Take(1);  // constant tone
  if (Flags & 0x08) Header.DataInfo = Fields.Little16();
  Header.HasNext = (Flags & 0x10) != 0;
  if (Header.HasNext) Fields.Take(3);
  if (Flags & 0x20) Fields.Take(18);  // periodic advertising
  if (Flags & 0x40) Fields.Take(1);   // transmit power
  const bool IsReservedMode = LengthAndMode >> 6 == 3;
  if (APayload.IsShort() || Fields.IsShort() || IsReservedMode) return {};
  return Header;
}

/// The packets of one advertisement have its data info in common; the later ones lack the address.
TFragmentKey KeyOf(const TExtendedHeader& AHeader) {
  constexpr std::uint32_t NoDataInfo = 0x10000;
  return {.Set = AHeader.DataInfo ? *AHeader.DataInfo : NoDataInfo};
}

}  // namespace

std::uint32_t AdvertisingCrc(std::span<const std::uint8_t> APdu) {
  constexpr std::uint32_t InitialReversed = 0xAAAAAA;
  constexpr std::uint32_t PolynomialReversed = 0xDA6000;
  std::uint32_t Crc = InitialReversed;
  for (const std::uint8_t Byte : APdu) {
    Crc ^= Byte;
    for (int Bit = 0; Bit < 8; ++Bit) Crc = Crc >> 1 ^ (Crc & 1 ? PolynomialReversed : 0);
  }
  return Crc;
}

std::string_view TLinkLayerReports::Parse(const TRadioPacket& APacket) {
  TByteCursor Cursor(APacket.Bytes);
  const std::uint32_t AccessAddress = Cursor.Little32();
  Cursor.Take(APacket.IsCoded ? 1 : 0);
  if (Cursor.IsShort()) return SPacketCutShort;
  if (AccessAddress != AdvertisingAccessAddress) return {};

  const auto Pdu = Cursor.TakeRest();
  TByteCursor Header(Pdu);
  const auto Kind = static_cast<TPduKind>(Header.Byte() & 0x0F);
  const std::size_t Size = Header.Byte();
  const auto Payload = Header.Take(Size);
  const std::uint32_t Crc = Header.Little24();
  if (Header.IsShort()) return SPacketCutShort;
  if (APacket.Crc == TCrcState::Wrong) return {};
  const bool MustCheck = APacket.Crc == TCrcState::NotChecked;
  if (MustCheck && Crc != AdvertisingCrc(Pdu.first(PduHeaderSize + Size))) return {};

  TAdvertisement Report;
  Report.Time = APacket.Time;
  Report.Rssi = APacket.Rssi;
  switch (Kind) {
    case TPduKind::Connectable:
    case TPduKind::NonConnectable:
    case TPduKind::ScanResponse:
    case TPduKind::Scannable:
      return ParseLegacy(TByteCursor(Payload), Report);
    case TPduKind::Extended:
      return ParseExtended(TByteCursor(Payload), Report);
  }
  return {};
}

std::string_view TLinkLayerReports::ParseLegacy(TByteCursor APayload, TAdvertisement AReport) {
  if (APayload.GetLeft() < MinLegacySize || APayload.GetLeft() > MaxLegacySize) return SLegacySize;
  AReport.Address = APayload.Address();
  AReport.Payload = APayload.TakeRest();
  FOut.Push(AReport);
  return {};
}

std::string_view TLinkLayerReports::ParseExtended(TByteCursor APayload, TAdvertisement AReport) {
  const auto Header = TakeExtendedHeader(APayload);
  if (!Header) return SExtendedHeader;
  const TFragmentKey Key = KeyOf(*Header);
  std::string_view Problem;
  if (Header->Advertiser) {
    Problem = FJoiner.Drop(Key);  // the advertiser begins anew
    AReport.Address = *Header->Advertiser;
  } else if (const TBluetoothAddress* Known = FJoiner.FindAddress(Key)) {
    AReport.Address = *Known;
  } else {
    return {};  // goes on with an advertisement whose beginning was not received
  }
  AReport.Payload = APayload.TakeRest();
  const auto Text = FJoiner.Add(Key, AReport, Header->HasNext);
  return Text.empty() ? Problem : Text;
}

}  // namespace System::Beacon
