// What the readers deliver against what tshark sees in the same captures.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "platform/beacons/captures/capture_builders.h"
#include "platform/beacons/frame.h"

namespace System::Beacon::CaptureTests {

namespace {

constexpr TTicks Start = 1'700'000'000'000'001;

bool HasTshark() {
  return std::system("command -v tshark >/dev/null 2>&1") == 0;
}

/// The packets that pass a filter: time, address, strength, companies, manufacturer data and
/// service data, as far as a packet has them, with tabs between; the first `ACount` of these.
std::vector<std::string> TsharkLines(const std::string& APath,
                                     const std::string& AFilter,
                                     int ACount) {
  std::string Command = "tshark -r '" + APath + "' -Y '" + AFilter + "' -T fields";
  for (const char* Field : {"frame.time_epoch",
                            "bthci_evt.bd_addr",
                            "btle.advertising_address",
                            "bthci_evt.rssi",
                            "btle_rf.signal_dbm",
                            "nordic_ble.rssi",
                            "btcommon.eir_ad.entry.company_id",
                            "btcommon.eir_ad.entry.data",
                            "btcommon.eir_ad.entry.service_data"}) {
    Command.append(" -e ").append(Field);
  }
  const TTemporaryFile Output;
  Command += fmt::format(
      R"( 2>/dev/null | tr -s '\t' | sed 's/\t$//' | cut -f -{} >{})", ACount, Output.GetPath());
  EXPECT_EQ(std::system(Command.c_str()), 0);
  const TBytes Text = Output.Read();
  std::istringstream Stream(std::string(Text.begin(), Text.end()));
  std::vector<std::string> Lines;
  for (std::string Line; std::getline(Stream, Line);) Lines.push_back(Line);
  return Lines;
}

void AppendTo(std::string& AList, const std::string& AValue) {
  AList += (AList.empty() ? "" : ",") + AValue;
}

std::string LowerCase(std::string AText) {
  for (char& Char : AText) Char = static_cast<char>(std::tolower(Char));
  return AText;
}
std::string LowerHex(std::span<const std::uint8_t> ABytes) {
  return LowerCase(BytesToHex(ABytes));
}

/// The fields of a payload as tshark prints them: companies, their data, service data.
std::string PayloadText(const TBytes& APayload) {
  std::string Companies, Data, ServiceData;
  for (std::size_t I = 0; I < APayload.size(); I += std::size_t{APayload[I]} + 1) {
    const auto Field = std::span(APayload).subspan(I + 1, APayload[I]);
    if (Field[0] == 0xFF) {
      AppendTo(Companies, fmt::format("0x{:02x}{:02x}", Field[2], Field[1]));
      AppendTo(Data, LowerHex(Field.subspan(3)));
    } else if (Field[0] == 0x16) {
      AppendTo(ServiceData, LowerHex(Field.subspan(3)));
    }
  }
  for (std::string* Part : {&Companies, &Data, &ServiceData})
    if (!Part->empty()) *Part = fmt::format("\t{}", *Part);
  return Companies + Data + ServiceData;
}

/// The beginning of a line of `TsharkLines` from what a reader delivered.
std::string LineOf(const THeard& AHeard) {
  return fmt::format("{}.{:06}000\t{}\t{}",
                     AHeard.Time / TicksPerSecond,
                     AHeard.Time % TicksPerSecond,
                     LowerCase(AHeard.Address),
                     AHeard.Rssi);
}

const std::vector<std::string> Payloads = {
    "0201061AFF4C000215E2C56DB5DFFB48D2B060D0F5A71096E000010007C5",
    "1BFF1801BEAC0102030405060708090A0B0C0D0E0F1000030009BF00",
    "0201060303AAFE1516AAFE00EE0102030405060708090AAABBCCDDEEFF",
    "0201060303AAFE0E16AAFE10EE026578616D706C6507",
    "0201060303AAFE1116AAFE20000BB817000000006400000258",
};
const std::string LongPayload = Payloads[0] + Payloads[2].substr(6) + "05FF59000102";

}  // namespace

TEST(Tshark, SeesTheSameInWrittenCaptures) {
  if (!HasTshark()) GTEST_SKIP() << "tshark is not installed";
  std::vector<THeard> Sample{{Start, "C4:BE:84:01:02:04", UnknownRssi, LongPayload}};
  for (const std::string& Payload : Payloads)
    Sample.push_back({Start + 100'000, "C4:BE:84:01:02:03", -60, Payload});
  for (const TCaptureFormat& Format : CaptureFormats()) {
    if (Format.Name == std::string("log")) continue;
    const TTemporaryFile File(Written(Format, Sample));
    std::vector<std::string> Expected;
    for (const THeard& One : ReadAllWell(OpenCapture(File.GetPath())))
      Expected.push_back(LineOf(One) + PayloadText(Hex(One.Payload)));
    EXPECT_EQ(Expected.size(), Sample.size()) << Format.Name;
    EXPECT_EQ(TsharkLines(File.GetPath(), "btcommon.eir_ad.entry", 6), Expected) << Format.Name;
  }
}

/// A sniffer's recording of phones that lies beside the repository.
TEST(RecordedCaptures, YieldTheirAdvertisements) {
  const char* Folder = std::getenv("WAYFENCE_DATA_DIR");
  const std::filesystem::path Data = Folder ? Folder : WAYFENCE_SOURCE_DIR "/../shared/data";
  std::error_code Error;
  std::vector<std::filesystem::path> Files;
  for (const auto& Entry :
       std::filesystem::directory_iterator(Data / "advertisements" / "negative", Error)) {
    if (Entry.path().string().ends_with(".pcapng.gz")) Files.push_back(Entry.path());
  }
  if (Files.empty()) GTEST_SKIP() << "no recordings in " << Data;
  for (const auto& Packed : Files) {
    const TTemporaryFile File;
    ASSERT_EQ(std::system(("zcat '" + Packed.string() + "' > " + File.GetPath()).c_str()), 0);
    const auto Heard = ReadAllWell(OpenCapture(File.GetPath()));
    EXPECT_GT(Heard.size(), 100U) << Packed;
    for (const THeard& One : Heard) {
      const TBytes Payload = Hex(One.Payload);
      TBeaconFrame Frame;
      EXPECT_FALSE(TFrameReader(Payload).Next(Frame)) << "phones are no beacons";
    }
    if (!HasTshark()) continue;
    std::vector<std::string> Lines;
    for (const THeard& One : Heard) Lines.push_back(LineOf(One));
    EXPECT_EQ(Lines,
              TsharkLines(File.GetPath(),
                          "nordic_ble.crcok == 1 && btle.advertising_header && "
                          "btle.advertising_header.pdu_type != 3",
                          3))
        << Packed;
  }
}

}  // namespace System::Beacon::CaptureTests
