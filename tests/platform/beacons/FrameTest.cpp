// From advertising payloads to beacon frames.
#include "platform/beacons/frame.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>

#include "platform/beacons/System.Beacon.h"
#include "platform/beacons/captures/captures.h"
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

std::string ToText(const TBeaconFrame& AFrame) {
  const std::span<const std::uint8_t> Id(AFrame.Id, AFrame.Id ? 16 : 0);
  std::string URL;
  switch (AFrame.Kind) {
    case TFrameKind::iBeacon:
      return fmt::format(
          "iBeacon {} {}.{} {}", BytesToHex(Id), AFrame.Major, AFrame.Minor, AFrame.Power);
    case TFrameKind::AltBeacon:
      return fmt::format("AltBeacon {:04X} {} {}.{} {} {}",
                         AFrame.ManufacturerID,
                         BytesToHex(Id),
                         AFrame.Major,
                         AFrame.Minor,
                         AFrame.Power,
                         AFrame.Reserved);
    case TFrameKind::EddystoneUID:
      return fmt::format("UID {} {}", BytesToHex(Id), AFrame.Power);
    case TFrameKind::EddystoneURL:
      return fmt::format(
          "URL {} {}", DecodeEddystoneURL(AFrame.Data, URL) ? URL : "malformed", AFrame.Power);
    case TFrameKind::EddystoneTLM:
      return "TLM " + BytesToHex(AFrame.Data);
  }
  return {};
}

/// The frames of a payload, then what was malformed: "iBeacon …; malformed 1".
std::string FramesOf(const TBytes& APayload) {
  const TBytes Copy(APayload);  // of exactly this size, so that reading past its end is noticed
  TFrameReader Reader(Copy);
  TBeaconFrame Frame;
  std::string Result;
  while (Reader.Next(Frame)) Result += ToText(Frame) + "; ";
  if (Reader.GetMalformed() > 0) Result += fmt::format("malformed {}; ", Reader.GetMalformed());
  return Result;
}

constexpr const char* iBeaconData = "1AFF 4C00 0215 000102030405060708090A0B0C0D0E0F 0001 FFFE C5";
constexpr const char* AltBeaconData =
    "1BFF 1801 BEAC 000102030405060708090A0B0C0D0E0F 0001 FFFE C5 07";
constexpr const char* UIDData = "1516 AAFE 00EE 00112233445566778899 AABBCCDDEEFF";
constexpr const char* URLData = "0A16 AAFE 1000 03 616263 07";
constexpr const char* TLMData = "1116 AAFE 2000 0BB8 1980 00000001 0000000A";

constexpr const char* iBeaconText = "iBeacon 000102030405060708090A0B0C0D0E0F 1.65534 -59; ";
constexpr const char* AltBeaconText =
    "AltBeacon 0118 000102030405060708090A0B0C0D0E0F 1.65534 -59 7; ";
constexpr const char* UIDText = "UID 00112233445566778899AABBCCDDEEFF -59; ";
constexpr const char* URLText = "URL https://abc.com -41; ";
constexpr const char* TLMText = "TLM 0BB81980000000010000000A; ";

TEST(TFrameReader, ReadsTheFramesOfAPayload) {
  const std::string iBeacon = iBeaconData, UID = UIDData;
  const std::vector<std::pair<std::string, std::string>> Cases{
      {"", ""},
      {iBeacon, iBeaconText},
      {"020106" + iBeacon, iBeaconText},
      {"1BFF 4C00 0215 000102030405060708090A0B0C0D0E0F 0001 FFFE C5 99", iBeaconText},
      {AltBeaconData, AltBeaconText},
      {"1AFF 1801 BEAC 000102030405060708090A0B0C0D0E0F 0001 FFFE C5",
       "AltBeacon 0118 000102030405060708090A0B0C0D0E0F 1.65534 -59 0; "},
      {"1AFF 4C00 BEAC 000102030405060708090A0B0C0D0E0F 0001 FFFE C5",
       "AltBeacon 004C 000102030405060708090A0B0C0D0E0F 1.65534 -59 0; "},
      {UID, UIDText},
      {"1716 AAFE 00EE 00112233445566778899 AABBCCDDEEFF 0000", UIDText},
      {"1516 AAFE 007F 00112233445566778899 AABBCCDDEEFF",
       "UID 00112233445566778899AABBCCDDEEFF 127; "},
      {"1516 AAFE 0080 00112233445566778899 AABBCCDDEEFF",
       "UID 00112233445566778899AABBCCDDEEFF -128; "},
      {"020106 0303AAFE " + std::string(URLData), URLText},
      {TLMData, TLMText},
      // Several frames; a scan response after padding; padding at the end.
      {iBeacon + UID, std::string(iBeaconText) + UIDText},
      {iBeacon + "0000000000" + UID + "0000", std::string(iBeaconText) + UIDText},
      // Other companies, services and frames are no beacons and not malformed.
      {"1AFF 4D00 0215 000102030405060708090A0B0C0D0E0F 0001 FFFE C5", ""},
      {"1AFF 4C00 0216 000102030405060708090A0B0C0D0E0F 0001 FFFE C5", ""},
      {"03FF 4C00", ""},
      {"01FF 0116", ""},
      {"1516 AAFD 00EE 00112233445566778899 AABBCCDDEEFF", ""},
      {"0416 AAFE 40", ""},
      {"1116 AAFE 2001 0BB8 1980 00000001 0000000A", ""},
      // Malformed frames do not hide what follows; a structure that is cut short ends the payload.
      {"05FF 4C00 0215" + UID, std::string(UIDText) + "malformed 1; "},
      {"05FF 1801 BEAC", "malformed 1; "},
      {"0316 AAFE" + iBeacon, std::string(iBeaconText) + "malformed 1; "},
      {"0516 AAFE 1000", "malformed 1; "},
      {"0616 AAFE 2000 0B", "malformed 1; "},
      {"0616 AAFE 00EE 00", "malformed 1; "},
      {iBeacon + "1AFF 4C00", std::string(iBeaconText) + "malformed 1; "},
      {"FF", "malformed 1; "},
  };
  for (const auto& [Payload, Frames] : Cases)
    EXPECT_EQ(FramesOf(BytesOf(Payload)), Frames) << Payload;
}

TEST(TFrameReader, APayloadThatIsCutShortAnywhereGivesNoFrame) {
  for (const char* Hex : {iBeaconData, AltBeaconData, UIDData, URLData, TLMData}) {
    const TBytes Whole = BytesOf(Hex);
    for (std::size_t Size = 0; Size < Whole.size(); ++Size) {
      const TBytes Cut(Whole.begin(), Whole.begin() + static_cast<std::ptrdiff_t>(Size));
      EXPECT_EQ(FramesOf(Cut), Size == 0 ? "" : "malformed 1; ") << Hex << " at " << Size;
    }
  }
}

TEST(TFrameReader, AFrameThatIsTooShortForItsKindIsMalformed) {
  for (const char* Hex : {iBeaconData, UIDData, TLMData}) {
    const TBytes Whole = BytesOf(Hex);
    for (std::size_t Size = 6; Size < Whole.size(); ++Size) {
      TBytes Short(Whole.begin(), Whole.begin() + static_cast<std::ptrdiff_t>(Size));
      Short[0] = static_cast<std::uint8_t>(Size - 1);
      EXPECT_EQ(FramesOf(Short), "malformed 1; ") << Hex << " at " << Size;
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

TEST(ReadTLM, TellsWhatIsNotSupported) {
  const TEddystoneTLM Plain = ReadTLM(BytesOf("0BB8 1980 00010002 FFFFFFFF"));
  EXPECT_EQ(Plain.BatteryVoltage, 3000);
  EXPECT_EQ(Plain.Temperature, 25.5);
  EXPECT_EQ(Plain.AdvertisementCount, 65538U);
  EXPECT_EQ(Plain.TimeSinceBoot, 0xFFFFFFFFU);
  EXPECT_EQ(ReadTLM(BytesOf("0000 8000 00000000 00000000")).Temperature, std::nullopt);
  EXPECT_EQ(ReadTLM(BytesOf("0000 FF80 00000000 00000000")).Temperature, -0.5);
}

// ---------------------------------------------------------------- recorded advertisements

using TFields = std::map<std::string, std::string>;

/// The cells of one row; quoted ones may hold commas.
std::vector<std::string> CellsOf(const std::string& ARow) {
  std::vector<std::string> Result(1);
  bool IsQuoted = false;
  for (const char C : ARow) {
    if (C == '"')
      IsQuoted = !IsQuoted;
    else if (C == ',' && !IsQuoted)
      Result.emplace_back();
    else
      Result.back() += C;
  }
  return Result;
}

TFields FieldsOf(const std::string& AText) {
  TFields Result;
  for (std::size_t At = 0; At < AText.size();) {
    const std::size_t End = std::min(AText.find(';', At), AText.size());
    const std::string Field = AText.substr(At, End - At);
    Result[Field.substr(0, Field.find('='))] = Field.substr(Field.find('=') + 1);
    At = End + 1;
  }
  return Result;
}

std::string LowerCase(std::string AText) {
  for (char& C : AText) C = static_cast<char>(std::tolower(static_cast<unsigned char>(C)));
  return AText;
}

/// What a frame holds, under the names of the table of recorded advertisements.
TFields FieldsOf(const TBeaconFrame& AFrame) {
  const std::string Power = fmt::format("{}", AFrame.Power);
  const std::string AtZero = fmt::format("{}", AFrame.Power + 41);
  std::string URL;
  switch (AFrame.Kind) {
    case TFrameKind::iBeacon:
    case TFrameKind::AltBeacon:
      return {{"kind", AFrame.Kind == TFrameKind::iBeacon ? "ibeacon" : "altbeacon"},
              {"uuid", LowerCase(GUIDToString(AFrame.GetGUID()).substr(1, 36))},
              {"major", fmt::format("{}", AFrame.Major)},
              {"minor", fmt::format("{}", AFrame.Minor)},
              {"tx_1m", Power},
              {"manufacturer", fmt::format("{}", AFrame.ManufacturerID)},
              {"reserved", fmt::format("{}", AFrame.Reserved)}};
    case TFrameKind::EddystoneUID:
      return {{"kind", "eddystone-uid"},
              {"namespace", LowerCase(BytesToHex({AFrame.Id, 10}))},
              {"instance", LowerCase(BytesToHex({AFrame.Id + 10, 6}))},
              {"tx_0m", AtZero}};
    case TFrameKind::EddystoneURL:
      EXPECT_TRUE(DecodeEddystoneURL(AFrame.Data, URL));
      return {{"kind", "eddystone-url"}, {"url", URL}, {"tx_0m", AtZero}};
    case TFrameKind::EddystoneTLM:
      break;
  }
  const TEddystoneTLM TLM = ReadTLM(AFrame.Data);
  const int Temperature = TLM.Temperature ? static_cast<int>(*TLM.Temperature * 256.0) : -32768;
  return {{"kind", "eddystone-tlm"},
          {"voltage_mv", fmt::format("{}", TLM.BatteryVoltage)},
          {"temperature_raw_8_8", fmt::format("{}", Temperature)},
          {"adv_count", fmt::format("{}", TLM.AdvertisementCount)},
          {"uptime_0_1s", fmt::format("{}", TLM.TimeSinceBoot)}};
}

/// Recordings that lie outside the repository; empty where they are missing.
std::filesystem::path DataFolder() {
  const char* const Named = std::getenv("WAYFENCE_DATA_DIR");
  const std::filesystem::path Folder = Named ? Named : WAYFENCE_SOURCE_DIR "/../shared/data";
  return std::filesystem::exists(Folder / "advertisements") ? Folder / "advertisements"
                                                            : std::filesystem::path();
}

/// The advertisement inside the bytes of a row.
TFields ReadRow(const std::string& ALayer, const TBytes& ABytes, TBytes& APayload) {
  if (!ALayer.starts_with("hci_event")) {
    APayload = ABytes;
    return {};
  }
  TAdvertisementQueue Queue;
  THciReports Reports(Queue);
  EXPECT_EQ(Reports.ParsePacket(ABytes, 0), "");
  TAdvertisement Advertisement;
  EXPECT_TRUE(Queue.Pop(Advertisement));
  APayload.assign(Advertisement.Payload.begin(), Advertisement.Payload.end());
  return {{"address", LowerCase(BytesToHex(Advertisement.Address.Bytes))},
          {"rssi", fmt::format("{}", Advertisement.Rssi)}};
}

TEST(RecordedAdvertisements, HoldTheFieldsThatOthersReadInThem) {
  const std::filesystem::path Folder = DataFolder();
  if (Folder.empty()) GTEST_SKIP() << "there is no folder of recordings; see WAYFENCE_DATA_DIR";
  std::istringstream Table(ReadWholeFile(Folder / "vectors.csv", 1 << 20));
  std::string Row;
  std::getline(Table, Row);
  int Rows = 0;
  for (; std::getline(Table, Row); ++Rows) {
    const std::vector<std::string> Cells = CellsOf(Row);
    ASSERT_GE(Cells.size(), 5U) << Row;
    TBytes Payload;
    TFields Read = ReadRow(Cells[1], BytesOf(Cells[2]), Payload);
    TFrameReader Reader(Payload);
    TBeaconFrame Frame;
    Read.merge(Reader.Next(Frame) ? FieldsOf(Frame) : TFields{{"kind", "none"}});
    EXPECT_EQ(Read["kind"], Cells[3]) << Row;
    TFields Expected = FieldsOf(Cells[4]);
    for (const char* NotRead : {"", "address_type", "event_type"}) Expected.erase(NotRead);
    for (const auto& [Name, Value] : Expected) EXPECT_EQ(Read[Name], Value) << Row;
    EXPECT_FALSE(Reader.Next(Frame)) << Row;
  }
  EXPECT_GT(Rows, 0);
}

TEST(RecordedAdvertisements, ACaptureWithoutBeaconsYieldsNone) {
  const std::filesystem::path File = DataFolder() / "negative/nrf_sniffer_phones.pcapng.gz";
  if (!exists(File)) GTEST_SKIP() << "there is no folder of recordings; see WAYFENCE_DATA_DIR";
#ifndef WAYFENCE_HAS_PCAP
  GTEST_SKIP() << "built without libpcap";
#endif
  TBytes Bytes;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> Pipe(
      popen(("zcat '" + File.string() + "'").c_str(), "r"), &pclose);
  for (int C = std::fgetc(Pipe.get()); C != EOF; C = std::fgetc(Pipe.get()))
    Bytes.push_back(static_cast<std::uint8_t>(C));
  const TRef<IAdvertisementReader> Reader = OpenCapture(std::move(Bytes));
  TAdvertisement Advertisement;
  int Count = 0;
  for (; Reader->Read(Advertisement); ++Count) {
    TBeaconFrame Frame;
    EXPECT_FALSE(TFrameReader(Advertisement.Payload).Next(Frame));
  }
  EXPECT_GT(Count, 0);
}

}  // namespace
}  // namespace System::Beacon
