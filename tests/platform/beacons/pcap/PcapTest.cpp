#include <gtest/gtest.h>

#include "platform/beacons/pcap/pcap_builders.h"
#include "support/raised.h"

namespace System::Beacon::CaptureTests {

namespace {

constexpr TTicks Start = 1'700'000'000'123'456;
const THeard IBeacon{Start,
                     "C0:00:00:00:00:01",
                     -60,
                     "0201061AFF4C000215E2C56DB5DFFB48D2B060D0F5A71096E000010007C5"};

std::vector<TPacket> PacketOf(const TBytes& ABytes) {
  return {{Start, ABytes}};
}

TBytes IBeaconFor(int ALinkType) {
  return PackFor(ALinkType, 1, -60, Hex(IBeacon.Payload));
}

/// What a capture of these link-layer packets holds, each as "address data", with no problems.
std::vector<std::string> HeardInAir(const std::vector<TBytes>& APackets) {
  std::vector<TPacket> Packets;
  for (const TBytes& Bytes : APackets) Packets.push_back({Start, Bytes});
  std::vector<std::string> Result;
  for (const THeard& Heard : ReadAllWell(OpenPcap(PcapFile(251, Packets)))) {
    Result.push_back(Heard.Address.substr(15) + " " + Heard.Payload);
  }
  return Result;
}

/// An extended advertising packet; address and data info as on air, mode 0 is neither connectable
/// nor scannable.
TBytes AirExtended(const char* AAdvertiser,
                   const char* ADataInfo,
                   bool AHasNext,
                   const char* AData) {
  const int Flags = (*AAdvertiser ? 1 : 0) | (*ADataInfo ? 8 : 0) | (AHasNext ? 0x10 : 0);
  TBytes Header = Join({Hex(AAdvertiser), Hex(ADataInfo), TBytes(AHasNext ? 3 : 0)});
  if (Flags != 0) Header = Join({{static_cast<std::uint8_t>(Flags)}, Header});
  const auto Size = static_cast<std::uint8_t>(Header.size());
  return AirPacket(7, Join({{Size}, Header, Hex(AData)}));
}

constexpr const char* First = "0100000000C0";
constexpr const char* Second = "0200000000C0";

}  // namespace

TEST(Pcap, ReadsEveryLinkTypeInEveryFileFormat) {
  for (const int Link : LinkTypes) {
    const auto Packets = PacketOf(IBeaconFor(Link));
    THeard Expected = IBeacon;
    if (Link == 251) Expected.Rssi = UnknownRssi;
    for (const TNumber Order : {Little, Big})
      for (const TBytes& File : {PcapFile(Link, Packets, Order),
                                 PcapFile(Link, Packets, Order, true),
                                 PcapngFile(Link, Packets, Order)}) {
        const auto Reader = OpenCapture(File);
        EXPECT_TRUE(Reader->HasWallTime());
        EXPECT_EQ(ReadAllWell(Reader), std::vector<THeard>{Expected})
            << Link << " " << BytesToHex(std::span(File).first(4));
      }
  }
}

TEST(Pcap, CountsPacketsThatAreCutShort) {
  for (const int Link : LinkTypes) {
    const TBytes Packet = IBeaconFor(Link);
    for (std::size_t Size = 0; Size < Packet.size(); ++Size) {
      const TBytes Cut(Packet.begin(), Packet.begin() + static_cast<long>(Size));
      const auto Reader = OpenPcap(PcapFile(Link, {{Start, Cut}, {Start, Packet}}));
      EXPECT_EQ(ReadAll(*Reader).size(), 1U) << Link << " cut at " << Size;
      ASSERT_EQ(Reader->GetProblems().Count, 1U) << Link << " cut at " << Size;
      EXPECT_TRUE(Reader->GetProblems().First[0].starts_with("byte 24: "));
    }
  }
}

TEST(Pcap, DeliversAdvertisementsAndScanResponsesOnly) {
  const TBytes Data = Hex("020106");
  EXPECT_EQ(HeardInAir({
                AirAdvertisement(0, Data, 0),                        // connectable
                AirAdvertisement(1, Hex("0100000000C0"), 1),         // directed
                AirAdvertisement(2, Data, 2),                        // not connectable
                AirAdvertisement(3, Hex("0100000000C0"), 3),         // scan request
                AirAdvertisement(4, Data, 4),                        // scan response
                AirPacket(5, TBytes(34)),                            // connection request
                AirAdvertisement(6, Data, 6),                        // scannable
                AirPacket(8, TBytes(10)),                            // connection response
                AirAdvertisement(7, {}, 0),                          // without data
                Join({Hex("11223344"), AirAdvertisement(9, Data)}),  // a connection
            }),
            (std::vector<std::string>{"00 020106", "02 020106", "04 020106", "06 020106", "07 "}));
}

TEST(Pcap, PassesOverWhatTheRadioReceivedDamaged) {
  // The checksum stands here as sniffers deliver it, so that it is not checked by itself.
  const TBytes Good =
      Hex("D6BE898E42240102030405C60201061AFF4C000215E2C56DB5DFFB48D2B060D0F5A71096E000010007C5"
          "071BAE");
  TBytes Bad = Good;
  Bad[20] ^= 1;
  const std::tuple<int, TBytes, std::size_t> Cases[] = {
      {251, Good, 1},
      {251, Bad, 0},
      {256, WithRadioHeader(Good, -60, 0x0001), 1},  // not checked by the sniffer
      {256, WithRadioHeader(Bad, -60, 0x0001), 0},
      {256, WithRadioHeader(Good, -60, 0x0401), 0},  // checked and wrong
      {256,
       WithRadioHeader(Bad, -60, 0x0C01),
       1},  // checked and valid: what a sniffer changed afterwards
      {272, WithNordicHeader(Good, -60, 2, 6, 1), 1},
      {272, WithNordicHeader(Good, -60, 2, 6, 0), 0},
  };
  for (const auto& [LinkType, Bytes, Heard] : Cases) {
    const auto File = PcapFile(LinkType, PacketOf(Bytes));
    EXPECT_EQ(ReadAllWell(OpenPcap(File)).size(), Heard) << BytesToHex(Bytes);
  }
}

TEST(Pcap, TakesTheStrengthFromTheSnifferOrSaysWhatIsWrong) {
  const TBytes Air = AirAdvertisement(1, Hex("020106"));
  const TBytes Coded =
      Join({TBytes(Air.begin(), Air.begin() + 4), {0}, TBytes(Air.begin() + 4, Air.end())});
  TBytes ShortHeader = WithNordicHeader(Air, -60);
  ShortHeader[7] = 9;
  const std::tuple<int, TBytes, const char*> Cases[] = {
      {256, WithRadioHeader(Air, -60, 0x0003), "-60"},
      {256, WithRadioHeader(Air, -60, 0x0001), "127"},  // signal not valid
      {256, WithRadioHeader(Air, 90, 0x0003), "127"},
      {256, WithRadioHeader(Air, -60, 0x4003), "-60"},    // 2M PHY
      {256, WithRadioHeader(Coded, -60, 0x8003), "-60"},  // coded PHY
      {256, WithRadioHeader(Air, -60, 0x0002), "packet recorded still whitened"},
      {272, WithNordicHeader(Air, -60, 1, 6), "-60"},
      {272, WithNordicHeader(Air, -127, 2, 6), "-127"},
      {272, WithNordicHeader(Air, -128, 2, 6), "127"},
      {272, WithNordicHeader(Air, 0, 3, 2), "0"},
      {272, WithNordicHeader(Coded, -60, 3, 2, 0x21), "-60"},
      {272, WithNordicHeader(Air, -60, 0), "sniffer header of an unknown version"},
      {272, WithNordicHeader(Air, -60, 4), "sniffer header of an unknown version"},
      {272, WithNordicHeader(Air, -60, 2, 0x0E), ""},  // an answer of the sniffer
      {272, ShortHeader, "sniffer header damaged"},
  };
  for (const auto& [Link, Packet, Expected] : Cases) {
    const auto Reader = OpenPcap(PcapFile(Link, PacketOf(Packet)));
    std::string Read;
    for (const THeard& Heard : ReadAll(*Reader)) {
      EXPECT_EQ(Heard.Payload, "020106");
      Read += std::to_string(Heard.Rssi);
    }
    for (const std::string& Problem : Reader->GetProblems().First) Read += Problem.substr(9);
    EXPECT_EQ(Read, Expected) << BytesToHex(Packet);
  }
}

TEST(Pcap, ReadsExtendedAdvertisements) {
  EXPECT_EQ(HeardInAir({AirExtended(First, "", false, "020106")}),
            std::vector<std::string>{"01 020106"});
  const TBytes Fields = Join({Hex(First),
                              TBytes(6),          // target
                              {0x14},             // constant tone
                              {0x34, 0x12},       // data info
                              TBytes(18),         // periodic advertising
                              {7},                // transmit power
                              TBytes(7, 0xEE)});  // data of the link layer
  EXPECT_EQ(HeardInAir({AirPacket(7, Join({{0x2A, 0x6F}, Fields, Hex("020106")}))}),
            std::vector<std::string>{"01 020106"})
      << "every field but the next packet";
}

TEST(Pcap, JoinsChainedExtendedAdvertisements) {
  EXPECT_EQ(HeardInAir({
                AirExtended(First, "3412", true, ""),   // announces on a primary channel
                AirExtended(First, "3412", true, ""),   // and on another
                AirExtended("", "3412", true, "0102"),  // its address stood in the first
                AirExtended(Second, "3512", true, "A1"),
                AirExtended("", "3412", true, "03"),
                AirExtended("", "3512", false, "A2"),
                AirExtended("", "3412", false, "04"),
                AirExtended("", "3412", false, "05"),  // of a chain that was not received
            }),
            (std::vector<std::string>{"02 A1A2", "01 01020304"}));
}

TEST(Pcap, CountsDamagedExtendedAdvertisements) {
  const std::pair<std::vector<TBytes>, std::string> Cases[] = {
      {{AirPacket(7, {})}, "extended advertising header damaged"},
      {{AirPacket(7, {0x07, 0x01, 1, 0, 0, 0})}, "extended advertising header damaged"},
      {{AirPacket(7, {0x03, 0x01, 1, 0, 0, 0, 0})}, "extended advertising header damaged"},
      {{AirPacket(7, Join({{0xC7, 0x01}, Hex(First)}))}, "extended advertising header damaged"},
      {{AirAdvertisement(1, TBytes(32))}, "advertising packet of an impossible length"},
      {{AirPacket(0, TBytes(5))}, "advertising packet of an impossible length"},
      {{AirExtended(First, "3412", true, "01")}, "without its last fragment"},
      {{AirExtended(First, "3412", true, "01"), AirExtended(First, "3412", true, "")},
       "without its last fragment"},
  };
  for (const auto& [Received, Problem] : Cases) {
    std::vector<TPacket> Packets;
    for (const TBytes& Bytes : Received) Packets.push_back({Start, Bytes});
    const auto Reader = OpenPcap(PcapFile(251, Packets));
    EXPECT_EQ(ReadAll(*Reader), std::vector<THeard>());
    ASSERT_EQ(Reader->GetProblems().Count, 1U) << Problem;
    EXPECT_NE(Reader->GetProblems().First[0].find(Problem), std::string::npos)
        << Reader->GetProblems().First[0];
  }
}

TEST(Pcap, KeepsWhatComesBeforeABrokenRecord) {
  constexpr int Link = 187;
  const TPacket Packet{Start, IBeaconFor(Link)};
  TBytes HugePacket = PcapFile(Link, {Packet, Packet});
  const std::size_t SecondRecord = 24 + 16 + Packet.Bytes.size();
  HugePacket[SecondRecord + 11] = 0x7F;
  const TBytes OtherInterface =
      Join({PcapngFile(Link, {Packet}), PcapngInterface(251), PcapngPacket(Packet)});
  TBytes HugeBlock = Join({PcapngFile(Link, {Packet}), PcapngPacket(Packet)});
  HugeBlock[HugeBlock.size() - PcapngPacket(Packet).size() + 7] = 0x7F;
  const TTicks FarAway = 20'000'000'000 * TicksPerSecond;
  const TBytes LateTime = PcapngFile(Link, {Packet, {FarAway, Packet.Bytes}});
  for (const TBytes& File : {HugePacket, OtherInterface, HugeBlock, LateTime}) {
    const auto Reader = OpenPcap(File);
    EXPECT_EQ(ReadAll(*Reader), std::vector<THeard>{IBeacon});
    EXPECT_EQ(Reader->GetProblems().Count, 1U);
  }
}

TEST(Pcap, RefusesWhatItCannotRead) {
  const std::pair<TBytes, const char*> Cases[] = {
      {{}, "not a pcap or pcapng file that can be read"},
      {TextBytes("hello, this is no capture"), "not a pcap or pcapng file that can be read"},
      {Little(0xA1B2C3D4, 4), "not a pcap or pcapng file that can be read"},
      {PcapngHeader(), "not a pcap or pcapng file that can be read"},
      {PcapFile(1, {}), "link type 1 (EN10MB) holds no Bluetooth advertisements"},
      {PcapFile(9999, {}), "link type 9999 holds no Bluetooth advertisements"},
  };
  for (const auto& [File, Message] : Cases) {
    const std::string Error = Raised<EBeaconSourceError>([&, &File = File] { OpenPcap(File); });
    EXPECT_NE(Error.find(Message), std::string::npos) << Error;
  }
}

}  // namespace System::Beacon::CaptureTests
