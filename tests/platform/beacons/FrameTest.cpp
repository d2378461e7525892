// From advertising payloads to beacon frames.
#include "platform/beacons/frame.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "platform/beacons/System.Beacon.h"
#include "platform/beacons/captures/hci_reports.h"
#include "platform/beacons/tracker.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/hex.h"

namespace System::Beacon {
namespace {

using TBytes = std::vector<std::uint8_t>;

TBytes BytesOf(std::string_view AHex) {
  std::string Digits;
  for (const char C : AHex)
    if (C != ' ') Digits += C;
  TBytes Result(Digits.size() / 2);
  if (!HexToBytes(Digits, Result)) throw EConvertError("not hexadecimal: " + std::string(AHex));
  return Result;
}

std::string LowerCase(std::string AText) {
  for (char& C : AText) C = static_cast<char>(std::tolower(static_cast<unsigned char>(C)));
  return AText;
}

/// What a frame holds, under the names of the table of recorded advertisements.
std::string ToText(const TBeaconFrame& AFrame) {
  const std::string Id = LowerCase(BytesToHex({AFrame.Id, AFrame.Id ? 16U : 0U}));
  if (AFrame.Kind == TFrameKind::iBeacon || AFrame.Kind == TFrameKind::AltBeacon)
    return fmt::format("kind={};uuid={};major={};minor={};tx_1m={};manufacturer={};reserved={};",
                       AFrame.Kind == TFrameKind::iBeacon ? "ibeacon" : "altbeacon",
                       LowerCase(GUIDToString(AFrame.GetGUID()).substr(1, 36)),
                       AFrame.Major,
                       AFrame.Minor,
                       AFrame.Power,
                       AFrame.ManufacturerID,
                       AFrame.Reserved);
  const std::string Power =
      AFrame.Power == NoPower ? "none" : std::to_string(AFrame.Power + 41);  // at 0 m
  if (AFrame.Kind == TFrameKind::EddystoneUID)
    return fmt::format("kind=eddystone-uid;namespace={};instance={};tx_0m={};",
                       Id.substr(0, 20),
                       Id.substr(20),
                       Power);
  if (AFrame.Kind == TFrameKind::EddystoneURL) {
    std::string URL = "malformed";
    DecodeEddystoneURL(AFrame.Data, URL);
    return fmt::format("kind=eddystone-url;url={};tx_0m={};", URL, Power);
  }
  const TEddystoneTLM TLM = ReadTLM(AFrame.Data);
  return fmt::format(
      "kind=eddystone-tlm;voltage_mv={};temperature_raw_8_8={};adv_count={};uptime_0_1s={};",
      TLM.BatteryVoltage,
      TLM.Temperature ? fmt::format("{}", *TLM.Temperature * 256.0) : "none",
      TLM.AdvertisementCount,
      TLM.TimeSinceBoot);
}

/// The frames of a payload, then what was malformed.
std::string FramesOf(const TBytes& APayload) {
  const TBytes Copy(APayload);  // of exactly this size, so that reading past its end is noticed
  TFrameReader Reader(Copy);
  TBeaconFrame Frame;
  std::string Result;
  while (Reader.Next(Frame)) Result += ToText(Frame);
  if (Reader.GetMalformed() > 0) Result += fmt::format("malformed {}; ", Reader.GetMalformed());
  return Result;
}

constexpr const char* iBeaconData = "1AFF 4C00 0215 000102030405060708090A0B0C0D0E0F 0001 FFFE C5";
constexpr const char* AltBeaconData =
    "1BFF 1801 BEAC 000102030405060708090A0B0C0D0E0F 0001 FFFE C5 07";
constexpr const char* UIDData = "1516 AAFE 00EE 00112233445566778899 AABBCCDDEEFF";
constexpr const char* URLData = "0A16 AAFE 1000 03 616263 07";
constexpr const char* TLMData = "1116 AAFE 2000 0BB8 1980 00000001 0000000A";

const std::string UUIDText =
    "uuid=00010203-0405-0607-0809-0a0b0c0d0e0f;major=1;minor=65534;tx_1m=-59;";
const std::string iBeaconText = "kind=ibeacon;" + UUIDText + "manufacturer=76;reserved=0;";
const std::string AltBeaconText = "kind=altbeacon;" + UUIDText + "manufacturer=";
const std::string UIDText =
    "kind=eddystone-uid;namespace=00112233445566778899;instance=aabbccddeeff;tx_0m=";
const std::string URLText = "kind=eddystone-url;url=https://abc.com;tx_0m=0;";
const std::string TLMText = "kind=eddystone-tlm;voltage_mv=3000;temperature_raw_8_8=";

TEST(TFrameReader, ReadsTheFramesOfAPayload) {
  const std::string iBeacon = iBeaconData, UID = UIDData;
  const std::vector<std::pair<std::string, std::string>> Cases{
      {"", ""},
      {iBeacon, iBeaconText},
      {"020106" + iBeacon, iBeaconText},
      {"1BFF 4C00 0215 000102030405060708090A0B0C0D0E0F 0001 FFFE C5 99", iBeaconText},
      {AltBeaconData, AltBeaconText + "280;reserved=7;"},
      {"1AFF 1801 BEAC 000102030405060708090A0B0C0D0E0F 0001 FFFE C5",
       AltBeaconText + "280;reserved=0;"},
      {"1AFF 4C00 BEAC 000102030405060708090A0B0C0D0E0F 0001 FFFE C5",
       AltBeaconText + "76;reserved=0;"},
      {UID, UIDText + "-18;"},
      {"1716 AAFE 00EE 00112233445566778899 AABBCCDDEEFF 0000", UIDText + "-18;"},
      {"1516 AAFE 007F 00112233445566778899 AABBCCDDEEFF", UIDText + "none;"},
      {"1516 AAFE 0080 00112233445566778899 AABBCCDDEEFF", UIDText + "-87;"},
      {"020106 0303AAFE " + std::string(URLData), URLText},
      {TLMData, TLMText + "6528;adv_count=1;uptime_0_1s=10;"},
      {"1116 AAFE 2000 0BB8 8000 00010002 FFFFFFFF",
       TLMText + "none;adv_count=65538;uptime_0_1s=4294967295;"},
      {"1116 AAFE 2000 0BB8 FF80 00000000 00000000", TLMText + "-128;adv_count=0;uptime_0_1s=0;"},
      // Several frames; a scan response after padding; padding at the end.
      {iBeacon + UID, iBeaconText + UIDText + "-18;"},
      {iBeacon + "0000000000" + UID + "0000", iBeaconText + UIDText + "-18;"},
      // Other companies, services and frames are no beacons and not malformed.
      {"1AFF 4D00 0215 000102030405060708090A0B0C0D0E0F 0001 FFFE C5", ""},
      {"1AFF 4C00 0216 000102030405060708090A0B0C0D0E0F 0001 FFFE C5", ""},
      {"03FF 4C00", ""},
      {"01FF 0116", ""},
      {"1516 AAFD 00EE 00112233445566778899 AABBCCDDEEFF", ""},
      {"0416 AAFE 40", ""},
      {"1116 AAFE 2001 0BB8 1980 00000001 0000000A", ""},
      // Malformed frames do not hide what follows; a structure that is cut short ends the payload.
      {"05FF 4C00 0215" + UID, UIDText + "-18;malformed 1; "},
      {"05FF 1801 BEAC", "malformed 1; "},
      {"0316 AAFE" + iBeacon, iBeaconText + "malformed 1; "},
      {"0516 AAFE 1000", "malformed 1; "},
      {"0616 AAFE 2000 0B", "malformed 1; "},
      {"0616 AAFE 00EE 00", "malformed 1; "},
      {iBeacon + "1AFF 4C00", iBeaconText + "malformed 1; "},
      {"FF", "malformed 1; "},
  };
  for (const auto& [Payload, Frames] : Cases)
    EXPECT_EQ(FramesOf(BytesOf(Payload)), Frames) << Payload;
}

TEST(TFrameReader, APayloadOrAFrameThatIsCutShortIsMalformed) {
  for (const std::string Hex : {iBeaconData, AltBeaconData, UIDData, URLData, TLMData}) {
    const TBytes Whole = BytesOf(Hex);
    const bool IsOfOneSize = Hex != AltBeaconData && Hex != URLData;
    for (std::size_t Size = 1; Size < Whole.size(); ++Size) {
      TBytes Cut(Whole.begin(), Whole.begin() + static_cast<std::ptrdiff_t>(Size));
      EXPECT_EQ(FramesOf(Cut), "malformed 1; ") << Hex << " at " << Size;
      Cut[0] = static_cast<std::uint8_t>(Size - 1);
      if (IsOfOneSize && Size >= 6) {
        EXPECT_EQ(FramesOf(Cut), "malformed 1; ") << Hex << " of length " << Size;
      }
    }
  }
}

TEST(DecodeEddystoneURL, ExpandsSchemesAndEndings) {
  const std::vector<std::pair<const char*, const char*>> Cases{
      {"00", "http://www."},
      {"01 61 00", "https://www.a.com/"},
      {"02 61 0D 2F 62", "http://a.gov/b"},
      {"03 676F6F 0C 7E", "https://goo.biz~"},
      {"", "refused"},
      {"04 61", "refused"},
      {"03 61 0E", "refused"},
      {"03 61 20", "refused"},
      {"03 61 7F", "refused"},
      {"03 61 80", "refused"},
  };
  for (const auto& [Data, Text] : Cases) {
    std::string URL = "refused";
    DecodeEddystoneURL(BytesOf(Data), URL);
    EXPECT_EQ(URL, Text) << Data;
  }
}

/// The advertisement inside the bytes of a row, and what is around it.
TBytes PayloadIn(const std::string& ALayer, const TBytes& ABytes, std::string& AFields) {
  if (!ALayer.starts_with("hci_event")) return ABytes;
  TAdvertisementQueue Queue;
  EXPECT_EQ(THciReports(Queue).ParsePacket(ABytes, 0), "");
  TAdvertisement Heard;
  EXPECT_TRUE(Queue.Pop(Heard));
  AFields =
      fmt::format("address={};rssi={};", LowerCase(BytesToHex(Heard.Address.Bytes)), Heard.Rssi);
  return {Heard.Payload.begin(), Heard.Payload.end()};
}

TEST(RecordedAdvertisements, HoldTheFieldsThatOthersReadInThem) {
  const char* const Named = std::getenv("WAYFENCE_DATA_DIR");
  const std::filesystem::path Folder = Named ? Named : WAYFENCE_SOURCE_DIR "/../shared/data";
  const std::filesystem::path File = Folder / "advertisements/vectors.csv";
  if (!exists(File)) GTEST_SKIP() << "there is no folder of recordings; see WAYFENCE_DATA_DIR";
  std::istringstream Table(ReadWholeFile(File, 1 << 20));
  std::string Row;
  std::getline(Table, Row);
  int Rows = 0;
  for (; std::getline(Table, Row); ++Rows) {
    std::istringstream Cells(Row);
    std::string Name, Layer, Hex, Kind, Fields, Around;
    for (std::string* Cell : {&Name, &Layer, &Hex, &Kind, &Fields}) std::getline(Cells, *Cell, ',');
    const TBytes Payload = PayloadIn(Layer, BytesOf(Hex), Around);
    const std::string Frames = FramesOf(Payload);
    const bool HasFrame = Frames.starts_with("kind=");
    const std::string Read = ";" + Around + (HasFrame ? Frames : "kind=none;");
    std::istringstream Expected("kind=" + Kind + ";" + Fields);
    for (std::string Field; std::getline(Expected, Field, ';');)
      if (!Field.starts_with("address_type=") && !Field.starts_with("event_type=")) {
        EXPECT_NE(Read.find(";" + Field + ";"), std::string::npos) << Field << " in " << Read;
      }
    EXPECT_EQ(Frames.rfind("kind="), HasFrame ? 0 : std::string::npos) << "several: " << Row;
  }
  EXPECT_GT(Rows, 0);
}

}  // namespace
}  // namespace System::Beacon
