#include <gtest/gtest.h>

#include <optional>

#include "platform/beacons/captures/btsnoop_reader.h"
#include "platform/beacons/captures/capture_builders.h"
#include "platform/beacons/captures/log_reader.h"
#ifdef WAYFENCE_HAS_PCAP
#include "platform/beacons/pcap/pcap_reader.h"
#endif
#include "support/raised.h"

namespace System::Beacon::CaptureTests {

namespace {

constexpr TTicks Start = 1'795'384'174;  // seconds since 1970

std::string OpenError(const std::string& APath) {
  return Raised<EBeaconSourceError>([&] { OpenCapture(APath); });
}

/// The advertisements that a damaged capture still yields; none when it is refused.
std::optional<std::vector<THeard>> ReadDamaged(const TBytes& AFile) {
  try {
    return ReadAll(*OpenCapture(AFile));
  } catch (const EBeaconSourceError&) {
    return {};
  }
}

}  // namespace

TEST(CaptureFiles, AreReadBackAsTheyWereWritten) {
  for (const bool HasWallTime : {true, false}) {
    const auto Sample = SampleAdvertisements(HasWallTime ? Start : 0);
    for (TCaptureFormat Format : CaptureFormats()) {
      if (!HasWallTime && Format.Name == std::string("log"))
        Format.Create = [](const std::string& APath) { return CreateAdvertisementLog(APath); };
      const TTemporaryFile File(Written(Format, Sample));
      const auto Reader = OpenCapture(File.GetPath());
      EXPECT_EQ(Reader->HasWallTime(), HasWallTime) << Format.Name;
      EXPECT_EQ(ReadAllWell(Reader), Sample) << Format.Name;
    }
  }
}

TEST(CaptureFiles, YieldWhatIsLeftWhenCutAnywhere) {
  const auto Sample = SampleAdvertisements(Start);
  for (const TCaptureFormat& Format : CaptureFormats()) {
    const TBytes File = Written(Format, Sample);
    std::size_t MostHeard = 0;
    for (std::size_t Size = 0; Size < File.size(); ++Size) {
      const auto Heard = ReadDamaged({File.begin(), File.begin() + static_cast<long>(Size)});
      if (!Heard) continue;
      ASSERT_LE(Heard->size(), Sample.size());
      ASSERT_TRUE(std::equal(Heard->begin(), Heard->end(), Sample.begin()))
          << Format.Name << " cut at " << Size;
      ASSERT_GE(Heard->size(), MostHeard) << Format.Name << " cut at " << Size;
      MostHeard = Heard->size();
    }
    EXPECT_GE(MostHeard, Sample.size() - 1) << Format.Name;
  }
}

TEST(CaptureFiles, SurviveDamageAtEveryByte) {
  const auto Sample = SampleAdvertisements(Start);
  const std::vector<THeard> Few(Sample.begin(), Sample.begin() + 5);
  for (const TCaptureFormat& Format : CaptureFormats()) {
    const TBytes File = Written(Format, Few);
    for (std::size_t I = 0; I < File.size(); ++I) {
      for (const int Change : {0x01, 0x80, 0xFF}) {
        TBytes Damaged = File;
        Damaged[I] = static_cast<std::uint8_t>(Damaged[I] ^ Change);
        const auto Heard = ReadDamaged(Damaged).value_or(Few);
        EXPECT_LE(Heard.size(), Few.size()) << Format.Name << " byte " << I;
      }
    }
  }
}

TEST(CaptureFiles, AreStreamedThroughABoundedBuffer) {
  std::vector<THeard> Sample;
  for (int I = 0; I < 4000; ++I)
    Sample.push_back({Start * TicksPerSecond + I, "C4:BE:84:01:02:03", -60, std::string(62, 'A')});
  for (const TCaptureFormat& Format : CaptureFormats()) {
    const TBytes File = Written(Format, Sample);
    ASSERT_GT(File.size(), 2 * TByteStream::Capacity);
    EXPECT_EQ(ReadAllWell(OpenCapture(File)), Sample) << Format.Name;
  }
}

TEST(CaptureFiles, CountAReadErrorAndKeepWhatCameBefore) {
  const auto Sample = SampleAdvertisements(Start);
  const auto Check = [&Sample](const TRef<IAdvertisementReader>& AReader) {
    EXPECT_EQ(ReadAll(*AReader), Sample);
    ASSERT_EQ(AReader->GetProblems().Count, 1U);
    EXPECT_NE(AReader->GetProblems().First[0].find("cannot be read: Input/output error"),
              std::string::npos);
  };
  const auto Formats = CaptureFormats();
  Check(ReadBtsnoop(BrokenStream(Written(Formats.front(), Sample))));
#ifdef WAYFENCE_HAS_PCAP
  Check(ReadPcap(BrokenStream(Written(Formats[1], Sample))));
#endif
  Check(ReadAdvertisementLog(BrokenStream(Written(Formats.back(), Sample))));
}

TEST(CaptureFiles, AreToldByTheirFirstBytes) {
  const std::string Line = R"({"t": 0, "address": "C4:BE:84:01:02:03", "adv": ""})";
  for (const std::string& Text : {Line,
                                  "# a comment\n" + Line,
                                  "\n\n  " + Line,
                                  "\xEF\xBB\xBF" + Line,
                                  "\xEF\xBB\xBF# a comment\n" + Line,
                                  "rubbish \x01\x02\n" + Line,
                                  "{ " + Line.substr(1)}) {
    EXPECT_EQ(ReadAll(*OpenCapture(TextBytes(Text))).size(), 1U) << Text;
  }
}

TEST(CaptureFiles, AreRefusedWithAdvice) {
  const std::pair<std::string, std::string> Cases[] = {
      {"", "the file is empty"},
      {"\x1F\x8B\x08", "is compressed (gzip); unpack it first"},
      {std::string("PK\x03\x04", 4), "is compressed (zip); unpack it first"},
      {"hello\n", "is no capture; btsnoop, pcap, pcapng and logs"},
      {"{1}", "is no capture"},
      {std::string("\177ELF\0\0\n#", 8), "is no capture"},
      {std::string("btsnoop\0\0\0\0\1\0\0\0\1", 16), "btsnoop datalink 1"},
  };
  for (const auto& [Contents, Wanted] : Cases) {
    const TTemporaryFile File(TextBytes(Contents));
    const std::string Message = OpenError(File.GetPath());
    EXPECT_TRUE(Message.starts_with(File.GetPath() + ": " + Wanted)) << Message;
  }
  const std::string Folder = std::filesystem::temp_directory_path().string();
  EXPECT_NE(OpenError(Folder).find(": is a folder"), std::string::npos);
  EXPECT_NE(OpenError(Folder + "/none.log").find("No such file"), std::string::npos);
  EXPECT_NE(OpenError("/proc/self/mem").find("cannot be read: Input/output"), std::string::npos);
}

#ifndef WAYFENCE_HAS_PCAP
TEST(CaptureFiles, NameThePackageThatPcapNeeds) {
  const TTemporaryFile File(Little(0xA1B2C3D4, 4));
  EXPECT_NE(OpenError(File.GetPath()).find("libpcap-dev"), std::string::npos);
}
#endif

TEST(CaptureWriters, ReportWhatCannotBeWritten) {
  for (const TCaptureFormat& Format : CaptureFormats()) {
    const auto Full = Format.Create("/dev/full");
    Full->Write({});
    EXPECT_THROW(Full->Close(), EFileError) << Format.Name;
    EXPECT_NO_THROW(Full->Close()) << Format.Name << ": closed already";
    EXPECT_THROW(Full->Write({}), EFileError) << Format.Name;
    EXPECT_THROW(Format.Create("/nowhere/capture"), EFileError) << Format.Name;
    EXPECT_NO_THROW({
      const auto Dropped = Format.Create("/dev/full");
      Dropped->Write({});
    });
  }
}

TEST(CaptureWriters, RefuseWhatNoReaderWouldTake) {
  const TBytes TooLong(MaxPayloadSize + 1);
  const auto Sample = SampleAdvertisements(Start);
  for (const TCaptureFormat& Format : CaptureFormats()) {
    const TTemporaryFile File;
    const auto Writer = Format.Create(File.GetPath());
    EXPECT_THROW(Writer->Write({0, {}, -60, TooLong}), EFileError) << Format.Name;
    EXPECT_THROW(Writer->Write({NoDeadline, {}, -60, {}}), EFileError) << Format.Name;
    const TBytes Payload = Hex(Sample[0].Payload);
    Writer->Write(AsAdvertisement(Sample[0], Payload));
    Writer->Close();
    EXPECT_EQ(ReadAllWell(OpenCapture(File.GetPath())), std::vector<THeard>{Sample[0]});
  }
  const TTemporaryFile File;
  EXPECT_THROW(CreatePcap(File.GetPath())->Write({-1, {}, -60, {}}), EFileError);
}

}  // namespace System::Beacon::CaptureTests
