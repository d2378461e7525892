#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/beacons/captures/capture_builders.h"
#include "support/raised.h"

namespace System::Beacon::CaptureTests {

namespace {

constexpr std::uint32_t Received = 3;
constexpr TTicks Start = 1'700'000'000'000'000;

/// A capture of controller packets, one a millisecond.
TBytes H4Capture(std::initializer_list<TBytes> AEvents) {
  TBytes File = BtsnoopHeader(1002);
  TTicks Time = Start;
  for (const TBytes& Event : AEvents) {
    File = Join({File, BtsnoopRecord(Received, Time, Join({{4}, Event}))});
    Time += 1000;
  }
  return File;
}

/// What a capture without problems holds, each as "microseconds address strength data".
std::string HeardIn(const TBytes& AFile) {
  std::string Result;
  for (const auto& [Time, Address, Rssi, Payload] : ReadAllWell(OpenBtsnoop(AFile)))
    Result += fmt::format("{} {} {} {}; ", Time - Start, Address.substr(15), Rssi, Payload);
  return Result;
}

std::vector<std::string> ProblemsOf(const TBytes& AFile) {
  const auto Reader = OpenBtsnoop(AFile);
  ReadAll(*Reader);
  EXPECT_EQ(Reader->GetProblems().Count, Reader->GetProblems().First.size());
  return Reader->GetProblems().First;
}

}  // namespace

TEST(Btsnoop, DeliversEveryReportOfAnEvent) {
  const TBytes Reports =
      Join({Report(1, -60, Hex("020106")), Report(2, 127, {}), Report(3, 50, Hex("0303AAFE"))});
  EXPECT_EQ(HeardIn(H4Capture({ReportEvent(3, Reports)})),
            "0 01 -60 020106; 0 02 127 ; 0 03 127 0303AAFE; ");
}

TEST(Btsnoop, ReadsTheEventsOfEveryAdapterOfAMonitor) {
  const TBytes Event = ReportEvent(1, Report(1, -60, Hex("020106")));
  const TBytes File = Join({BtsnoopHeader(2001),
                            BtsnoopRecord(0, Start, TBytes(16)),       // new adapter
                            BtsnoopRecord(3, Start + 1, Event),        // event of adapter 0
                            BtsnoopRecord(0x10003, Start + 2, Event),  // event of adapter 1
                            BtsnoopRecord(2, Start + 3, Event)});      // a command
  EXPECT_EQ(HeardIn(File), "1 01 -60 020106; 2 01 -60 020106; ");
}

TEST(Btsnoop, PassesOverOtherPackets) {
  const TBytes File = Join({BtsnoopHeader(1002),
                            BtsnoopRecord(2, Start, Hex("01030C00")),        // a command
                            BtsnoopRecord(1, Start, Hex("020100020000")),    // data
                            BtsnoopRecord(3, Start, Hex("040E0401030C00")),  // another event
                            BtsnoopRecord(3, Start, Hex("043E0A010000000000000000"))});
  EXPECT_EQ(HeardIn(File), "");
}

TEST(Btsnoop, JoinsTheFragmentsOfExtendedAdvertisements) {
  const auto Fragment = [](int ADevice, int ASet, int AStatus, int ARssi, const char* AHex) {
    const auto Byte = [](int A) { return static_cast<std::uint8_t>(A); };
    return ExtendedReport(Byte(ADevice), Byte(ASet), AStatus, ARssi, Hex(AHex));
  };
  const auto Two = [](const TBytes& AFirst, const TBytes& ASecond) {
    return ExtendedReportEvent(2, Join({AFirst, ASecond}));
  };
  EXPECT_EQ(HeardIn(H4Capture({
                ExtendedReportEvent(1, Fragment(1, 0, 1, -60, "0102")),
                Two(Fragment(1, 1, 1, -61, "A1"), Fragment(2, 0, 1, -62, "B1")),
                ExtendedReportEvent(1, Fragment(1, 0, 1, 127, "03")),
                Two(Fragment(2, 0, 0, -64, "B2"), Fragment(1, 0, 0, 127, "0405")),
                ExtendedReportEvent(1, Fragment(1, 1, 2, -65, "A2")),  // truncated
                ExtendedReportEvent(1, Fragment(1, 0, 0, -66, "06")),
            })),
            "3000 02 -64 B1B2; 3000 01 -60 0102030405; 4000 01 -65 A1A2; 5000 01 -66 06; ");
}

TEST(Btsnoop, KeepsTheFragmentsOfAdaptersApart) {
  const auto Fragment = [](int AStatus, const char* AHex) {
    return ExtendedReportEvent(1, ExtendedReport(1, 0, AStatus, -60, Hex(AHex)));
  };
  const TBytes File = Join({BtsnoopHeader(2001),
                            BtsnoopRecord(0x00003, Start, Fragment(1, "01")),
                            BtsnoopRecord(0x10003, Start, Fragment(1, "01")),
                            BtsnoopRecord(0x10003, Start, Fragment(0, "02")),
                            BtsnoopRecord(0x00003, Start, Fragment(0, "03"))});
  EXPECT_EQ(HeardIn(File), "0 01 -60 0102; 0 01 -60 0103; ");
}

TEST(Btsnoop, BoundsWhatFragmentsMayAddUpTo) {
  TBytes File = BtsnoopHeader(1002);
  const auto Add = [&File](std::uint8_t AAddress, int AStatus, const TBytes& APayload) {
    const TBytes Event =
        ExtendedReportEvent(1, ExtendedReport(AAddress, 0, AStatus, -60, APayload));
    File = Join({File, BtsnoopRecord(Received, Start, Join({{4}, Event}))});
  };
  for (int I = 0; I < 100; ++I) Add(1, 1, TBytes(229));
  Add(1, 0, Hex("01"));
  for (std::uint8_t Address = 2; Address < 22; ++Address) Add(Address, 1, Hex("02"));
  Add(21, 0, Hex("03"));
  const auto Reader = OpenBtsnoop(File);
  const std::vector<THeard> Expected = {{Start, "C0:00:00:00:00:15", -60, "0203"}};
  EXPECT_EQ(ReadAll(*Reader), Expected);
  const auto& Problems = Reader->GetProblems();
  ASSERT_EQ(Problems.Count, 6U) << "one too long, four pushed out, the rest unfinished";
  EXPECT_NE(Problems.First[0].find("longer than 1650 bytes"), std::string::npos);
  EXPECT_NE(Problems.First[5].find("without its last fragment"), std::string::npos);
}

TEST(Btsnoop, SaysWhereRecordsAreDamaged) {
  const TBytes Good = ReportEvent(1, Report(1, -60, Hex("020106")));
  const TBytes Header = BtsnoopHeader(1002);
  TBytes HugeRecord = BtsnoopRecord(Received, Start, {});
  HugeRecord[4] = 0xFF;
  TBytes TooMany = Good;
  TooMany[3] = 2;
  const std::pair<TBytes, std::string> Cases[] = {
      {Join({Header, HugeRecord}), "byte 16: record of 4278190080 bytes; the rest is not read"},
      {Join({Header, Hex("0000")}), "byte 16: record cut short"},
      {H4Capture({Hex("3E")}), "byte 16: HCI event cut short"},
      {H4Capture({Good, TBytes(Good.begin(), Good.end() - 1)}),
       "byte 58: advertising report cut short"},
      {H4Capture({TooMany}), "byte 16: advertising report cut short"},
      {H4Capture({ExtendedReportEvent(1, Hex("0000"))}), "byte 16: advertising report cut short"},
      {Join({Header, BtsnoopRecord(Received, 20'000'000'000'000'000, Join({{4}, Good}))}),
       "byte 16: time out of range"},
  };
  for (const auto& [File, Problem] : Cases) {
    EXPECT_EQ(ProblemsOf(File), std::vector<std::string>{Problem});
  }
}

TEST(Btsnoop, RefusesWhatItCannotRead) {
  const std::pair<TBytes, const char*> Cases[] = {
      {{}, "not a btsnoop file"},
      {TextBytes("btsnoop"), "not a btsnoop file"},
      {TextBytes({"btsnoop\0\0\0", 10}), "cut short in its header"},
      {Join({TextBytes({"btsnoop\0", 8}), Big(2, 4), Big(1002, 4)}), "btsnoop version 2"},
      {BtsnoopHeader(1001), "btsnoop datalink 1001; record with datalink 1002"},
  };
  for (const auto& [File, Message] : Cases) {
    const std::string Error = Raised<EBeaconSourceError>([&, &File = File] { OpenBtsnoop(File); });
    EXPECT_NE(Error.find(Message), std::string::npos) << Error;
  }
}

}  // namespace System::Beacon::CaptureTests
