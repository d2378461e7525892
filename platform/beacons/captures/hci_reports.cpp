#include "platform/beacons/captures/hci_reports.h"

#include <algorithm>

#include "platform/beacons/captures/hci.h"

namespace System::Beacon {

namespace {

constexpr std::string_view SEventCutShort = "HCI event cut short";
constexpr std::string_view SReportCutShort = "advertising report cut short";

TFragmentKey KeyOf(const TBluetoothAddress& AAddress,
                   std::uint8_t AAddressType,
                   std::uint8_t ASet,
                   bool AIsScanResponse,
                   std::uint16_t AAdapter) {
  TFragmentKey Key;
  for (const std::uint8_t Byte : AAddress.Bytes) Key.Advertiser = Key.Advertiser << 8 | Byte;
  Key.Advertiser = Key.Advertiser << 8 | AAddressType;
  Key.Set = std::uint32_t{AAdapter} << 16 | std::uint32_t{AIsScanResponse} << 8 | ASet;
  return Key;
}

}  // namespace

std::string_view THciReports::ParsePacket(std::span<const std::uint8_t> APacket, TTicks ATime) {
  if (APacket.empty()) return "HCI packet cut short";
  if (APacket[0] != Hci::EventPacket) return {};
  return ParseEvent(APacket.subspan(1), ATime);
}

std::string_view THciReports::ParseEvent(std::span<const std::uint8_t> AEvent,
                                         TTicks ATime,
                                         std::uint16_t AAdapter) {
  TByteCursor Header(AEvent);
  const std::uint8_t Code = Header.Byte();
  const std::size_t Length = Header.Byte();
  if (Header.IsShort()) return SEventCutShort;
  if (Code != Hci::LeMetaEvent) return {};

  TByteCursor Cursor(Header.Take(std::min(Length, Header.GetLeft())));
  const std::uint8_t Subevent = Cursor.Byte();
  if (Cursor.IsShort()) return SEventCutShort;
  if (Subevent != Hci::AdvertisingReport && Subevent != Hci::ExtendedAdvertisingReport) return {};
  std::string_view Problem;
  const int Count = Cursor.Byte();
  for (int I = 0; I < Count && !Cursor.IsShort(); ++I) {
    if (Subevent == Hci::AdvertisingReport) {
      ParseReport(Cursor, ATime);
    } else if (const auto Text = ParseExtendedReport(Cursor, ATime, AAdapter); !Text.empty()) {
      Problem = Text;
    }
  }
  return Cursor.IsShort() ? SReportCutShort : Problem;
}

void THciReports::ParseReport(TByteCursor& ACursor, TTicks ATime) {
  TAdvertisement Report;
  Report.Time = ATime;
  ACursor.Take(2);  // kind of advertisement and of address
  Report.Address = ACursor.Address();
  Report.Payload = ACursor.Take(ACursor.Byte());
  Report.Rssi = RssiFromRadio(ACursor.SignedByte());
  if (!ACursor.IsShort()) FOut.Push(Report);
}

std::string_view THciReports::ParseExtendedReport(TByteCursor& ACursor,
                                                  TTicks ATime,
                                                  std::uint16_t AAdapter) {
  TAdvertisement Report;
  Report.Time = ATime;
  const std::uint16_t Kind = ACursor.Little16();
  const std::uint8_t AddressType = ACursor.Byte();
  Report.Address = ACursor.Address();
  ACursor.Take(2);  // primary and secondary PHY
  const std::uint8_t Set = ACursor.Byte();
  ACursor.Take(1);  // transmit power
  Report.Rssi = RssiFromRadio(ACursor.SignedByte());
  ACursor.Take(9);  // interval of periodic advertising, address of a directed advertisement
  Report.Payload = ACursor.Take(ACursor.Byte());
  if (ACursor.IsShort()) return {};
  const bool MoreToCome = (Kind & Hci::DataStatusMask) == Hci::DataIncomplete;
  const bool IsScanResponse = (Kind & Hci::ScanResponse) != 0;
  return FJoiner.Add(
      KeyOf(Report.Address, AddressType, Set, IsScanResponse, AAdapter), Report, MoreToCome);
}

}  // namespace System::Beacon
