#include "platform/beacons/pcap/sniffer_header.h"

#include <algorithm>

namespace System::Beacon {

namespace {

// Flags of link type 256.
constexpr std::uint16_t Dewhitened = 0x0001;
constexpr std::uint16_t SignalValid = 0x0002;
constexpr std::uint16_t CrcChecked = 0x0400;
constexpr std::uint16_t CrcValid = 0x0800;
constexpr int RadioPhyShift = 14;

// Link type 272.
constexpr std::uint8_t AdvertisingMessage = 0x02;
constexpr std::uint8_t PacketMessage = 0x06;
constexpr std::size_t PacketHeaderSize = 10;
constexpr std::uint8_t CrcOk = 0x01;

constexpr int CodedPhy = 2;

TCrcState CrcStateOf(std::uint16_t AFlags) {
  if (!(AFlags & CrcChecked)) return TCrcState::NotChecked;
  return AFlags & CrcValid ? TCrcState::Valid : TCrcState::Wrong;
}

/// The packet behind the message header of a Nordic sniffer: flags, channel, strength, times.
std::optional<TRadioPacket> ParseNordicPacket(TByteCursor AMessage) {
  const std::size_t HeaderSize = AMessage.Byte();
  if (HeaderSize < PacketHeaderSize) return {};
  TByteCursor Header(AMessage.Take(HeaderSize - 1));
  const std::uint8_t Flags = Header.Byte();
  Header.Take(1);  // channel
  TRadioPacket Packet;
  Packet.Rssi = RssiFromRadio(-Header.Byte());
  Packet.Crc = Flags & CrcOk ? TCrcState::Valid : TCrcState::Wrong;
  Packet.IsCoded = (Flags >> 4 & 0x07) == CodedPhy;
  Packet.Bytes = AMessage.TakeRest();
  if (AMessage.IsShort()) return {};
  return Packet;
}

}  // namespace

TSniffedPacket ParseBarePacket(std::span<const std::uint8_t> ABytes) {
  TRadioPacket Packet;
  Packet.Bytes = ABytes;
  return {Packet, {}};
}

TSniffedPacket ParseRadioHeader(std::span<const std::uint8_t> ABytes) {
  TByteCursor Cursor(ABytes);
  Cursor.Take(1);  // channel
  const std::int8_t Signal = Cursor.SignedByte();
  Cursor.Take(6);  // noise, access address offences, reference access address
  const std::uint16_t Flags = Cursor.Little16();
  if (Cursor.IsShort()) return {{}, "radio header cut short"};
  if (!(Flags & Dewhitened)) return {{}, "packet recorded still whitened"};
  TRadioPacket Packet;
  if (Flags & SignalValid) Packet.Rssi = RssiFromRadio(Signal);
  Packet.Crc = CrcStateOf(Flags);
  Packet.IsCoded = Flags >> RadioPhyShift == CodedPhy;
  Packet.Bytes = Cursor.TakeRest();
  return {Packet, {}};
}

TSniffedPacket ParseNordicHeader(std::span<const std::uint8_t> ABytes) {
  TByteCursor Cursor(ABytes);
  Cursor.Take(1);  // board
  const std::uint8_t First = Cursor.Byte();
  const std::uint8_t Second = Cursor.Byte();
  const std::uint8_t Version = Cursor.Byte();
  Cursor.Take(2);  // message counter
  const std::uint8_t Message = Cursor.Byte();
  if (Cursor.IsShort()) return {{}, "sniffer header cut short"};
  if (Version < 1 || Version > 3) return {{}, "sniffer header of an unknown version"};
  if (Message != AdvertisingMessage && Message != PacketMessage) return {};
  // Version 1 has the sizes of header and message, the later ones a message size of two bytes.
  const std::size_t Size = Version == 1 ? Second : std::size_t{Second} << 8 | First;
  const auto Rest = Cursor.TakeRest();
  auto Packet = ParseNordicPacket(TByteCursor(Rest.first(std::min(Size, Rest.size()))));
  if (!Packet) return {{}, "sniffer header damaged"};
  return {Packet, {}};
}

}  // namespace System::Beacon
