// Builds captures byte by byte, and lists what a reader makes of them.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/beacons/captures/byte_stream.h"
#include "platform/beacons/captures/captures.h"
#include "platform/errors.h"
#include "platform/hex.h"

namespace System::Beacon::CaptureTests {

using TBytes = std::vector<std::uint8_t>;

/// An advertisement that a test can compare and print.
struct THeard {
  TTicks Time;
  std::string Address;
  int Rssi;
  std::string Payload;  // hexadecimal, upper case

  bool operator==(const THeard&) const = default;
};
inline std::ostream& operator<<(std::ostream& AStream, const THeard& AHeard) {
  return AStream << AHeard.Time << " " << AHeard.Address << " " << AHeard.Rssi << " "
                 << AHeard.Payload;
}

/// Everything that a reader yields; checks on the way that progress goes from 0 up to 1.
inline std::vector<THeard> ReadAll(IAdvertisementReader& AReader) {
  std::vector<THeard> Result;
  double Progress = 0.0;
  TAdvertisement Next;
  while (AReader.Read(Next)) {
    EXPECT_GE(AReader.GetProgress(), Progress);
    EXPECT_LE(AReader.GetProgress(), 1.0);
    Progress = AReader.GetProgress();
    Result.push_back({Next.Time, Next.Address.ToText(), Next.Rssi, BytesToHex(Next.Payload)});
  }
  EXPECT_EQ(AReader.GetProgress(), 1.0);
  EXPECT_FALSE(AReader.Read(Next)) << "the end is final";
  return Result;
}

/// The same, checking also that the reader has no problems.
inline std::vector<THeard> ReadAllWell(const TRef<IAdvertisementReader>& AReader) {
  auto Result = ReadAll(*AReader);
  EXPECT_EQ(AReader->GetProblems().Count, 0U);
  EXPECT_EQ(AReader->GetProblems().First, std::vector<std::string>());
  return Result;
}

inline TBytes Little(std::uint64_t AValue, int ASize) {
  TBytes Result;
  for (int I = 0; I < ASize; ++I) Result.push_back(static_cast<std::uint8_t>(AValue >> 8 * I));
  return Result;
}

inline TBytes Big(std::uint64_t AValue, int ASize) {
  const TBytes Reversed = Little(AValue, ASize);
  return {Reversed.rbegin(), Reversed.rend()};
}

inline TBytes Hex(std::string_view AText) {
  TBytes Result(AText.size() / 2);
  EXPECT_TRUE(HexToBytes(AText, Result)) << AText;
  return Result;
}

inline TBytes TextBytes(std::string_view AText) {
  return {AText.begin(), AText.end()};
}

inline TBytes Join(std::initializer_list<TBytes> AParts) {
  TBytes Result;
  for (const TBytes& Part : AParts) Result.insert(Result.end(), Part.begin(), Part.end());
  return Result;
}

inline TBytes ReportEvent(int ACount, const TBytes& AReports, std::uint8_t ASubevent = 0x02) {
  const auto Size = static_cast<std::uint8_t>(2 + AReports.size());
  return Join({{0x3E, Size, ASubevent, static_cast<std::uint8_t>(ACount)}, AReports});
}

inline TBytes ExtendedReportEvent(int ACount, const TBytes& AReports) {
  return ReportEvent(ACount, AReports, 0x0D);
}

/// One legacy report from C0:00:00:00:00:`AAddress`.
inline TBytes Report(std::uint8_t AAddress, int ARssi, const TBytes& APayload) {
  return Join({{3, 1, AAddress, 0, 0, 0, 0, 0xC0, static_cast<std::uint8_t>(APayload.size())},
               APayload,
               {static_cast<std::uint8_t>(ARssi)}});
}

/// One extended report of the same address; the status is 0 complete, 1 more to come, 2 truncated.
inline TBytes ExtendedReport(
    std::uint8_t AAddress, std::uint8_t ASet, int AStatus, int ARssi, const TBytes& APayload) {
  const auto Kind = static_cast<std::uint8_t>(AStatus << 5);
  const auto Rssi = static_cast<std::uint8_t>(ARssi);
  return Join({{Kind, 0, 1, AAddress, 0, 0, 0, 0, 0xC0, 1, 1, ASet, 127, Rssi},
               TBytes(9),
               {static_cast<std::uint8_t>(APayload.size())},
               APayload});
}

inline TBytes BtsnoopHeader(std::uint32_t ADatalink) {
  return Join({TextBytes({"btsnoop\0", 8}), Big(1, 4), Big(ADatalink, 4)});
}

/// A record at a time in microseconds since 1970.
inline TBytes BtsnoopRecord(std::uint32_t AFlags, TTicks ATime, const TBytes& APacket) {
  const auto Time = static_cast<std::uint64_t>(ATime + 0x00DCDDB30F2F8000);
  return Join({Big(APacket.size(), 4),
               Big(APacket.size(), 4),
               Big(AFlags, 4),
               Big(0, 4),
               Big(Time, 8),
               APacket});
}

/// A file in the folder for temporary files, removed with the object.
class TTemporaryFile {
 public:
  explicit TTemporaryFile(const TBytes& AContents = {})
      : FPath((std::filesystem::temp_directory_path() / "wayfence-capture-XXXXXX").string()) {
    ::close(::mkstemp(FPath.data()));
    std::ofstream File(FPath, std::ios::binary);
    std::copy(AContents.begin(), AContents.end(), std::ostreambuf_iterator<char>(File));
  }
  TTemporaryFile(const TTemporaryFile&) = delete;
  TTemporaryFile& operator=(const TTemporaryFile&) = delete;
  ~TTemporaryFile() { std::filesystem::remove(FPath); }

  const std::string& GetPath() const { return FPath; }
  TBytes Read() const {
    std::ifstream File(FPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(File), {}};
  }

 private:
  std::string FPath;
};

/// A source that breaks when its bytes are used up.
class TBrokenSource : public TByteSource {
 public:
  explicit TBrokenSource(TBytes ABytes) : FBytes(MakeMemorySource(std::move(ABytes))) {}
  std::size_t Read(std::span<std::uint8_t> ABuffer) override {
    const std::size_t Count = FBytes->Read(ABuffer);
    if (Count == 0) throw EFileError("Input/output error");
    return Count;
  }

 private:
  std::unique_ptr<TByteSource> FBytes;
};

/// A stream over such a source.
inline std::unique_ptr<TByteStream> BrokenStream(TBytes ABytes) {
  return std::make_unique<TByteStream>(std::make_unique<TBrokenSource>(std::move(ABytes)), "card");
}

/// A format in which captures are written and read back.
struct TCaptureFormat {
  const char* Name;
  TRef<IAdvertisementWriter> (*Create)(const std::string& APath);
};

/// All formats that this build can read.
inline std::vector<TCaptureFormat> CaptureFormats() {
  return {
      {"btsnoop", CreateBtsnoop},
#ifdef WAYFENCE_HAS_PCAP
      {"pcap", CreatePcap},
#endif
      {"log",
       [](const std::string& APath) { return CreateAdvertisementLog(APath, TCaptureClock::Wall); }},
  };
}

/// Advertisements of every size class, within the second `AStart` (seconds since 1970).
inline std::vector<THeard> SampleAdvertisements(TTicks AStart) {
  const TTicks Start = AStart * TicksPerSecond;
  const std::string Manufacturer = "1AFF4C000215E2C56DB5DFFB48D2B060D0F5A71096E000010007C5";
  std::vector<THeard> Result = {
      {Start + 1, "C4:BE:84:01:02:03", -67, "020106" + Manufacturer},
      {Start + 100'000, "00:00:00:00:00:00", -127, "0303AAFE0E16AAFE10EE026578616D706C6507"},
      {Start + 100'000, "FF:FF:FF:FF:FF:FF", UnknownRssi, ""},
      {Start + 99'999, "C4:BE:84:01:02:04", 20, "0201061BFF" + std::string(52, 'A')},
  };
  for (const std::size_t Size : {32U, 229U, 230U, 458U, 1650U}) {
    std::string Payload = BytesToHex(Big(0x1BFF18010000BEAC + Size, 8));
    while (Payload.size() < 2 * Size) Payload += BytesToHex(Big(Payload.size() / 2, 2));
    Payload.resize(2 * Size);
    Result.push_back({Start + 123'456, "C4:BE:84:01:02:05", -80, Payload});
  }
  return Result;
}

inline TAdvertisement AsAdvertisement(const THeard& AHeard, const TBytes& APayload) {
  TAdvertisement Result{AHeard.Time, {}, static_cast<std::int8_t>(AHeard.Rssi), APayload};
  EXPECT_TRUE(TBluetoothAddress::Parse(AHeard.Address, Result.Address));
  return Result;
}

/// The bytes of a file of a format that holds these advertisements.
inline TBytes Written(const TCaptureFormat& AFormat, const std::vector<THeard>& AAdvertisements) {
  const TTemporaryFile File;
  const auto Writer = AFormat.Create(File.GetPath());
  for (const THeard& Heard : AAdvertisements) {
    const TBytes Payload = Hex(Heard.Payload);
    Writer->Write(AsAdvertisement(Heard, Payload));
  }
  Writer->Close();
  return File.Read();
}

}  // namespace System::Beacon::CaptureTests
