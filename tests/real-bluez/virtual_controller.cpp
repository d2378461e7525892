// A Bluetooth LE controller without a radio, for the kernel's virtual HCI device. It answers the
// host's commands, and has the host receive the advertisements that it reads from standard input:
//   ADDRESS RSSI PAYLOAD        for example  C0:00:00:00:00:01 -60 1AFF4C000215...
// It writes what happens to standard output, one line each.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

using TBytes = std::vector<std::uint8_t>;

constexpr std::uint8_t CommandPacket = 0x01;
constexpr std::uint8_t EventPacket = 0x04;
constexpr std::uint8_t VendorPacket = 0xFF;  // the driver's own, makes the device

constexpr std::uint16_t ReadLocalVersion = 0x1001;
constexpr std::uint16_t ReadLocalCommands = 0x1002;
constexpr std::uint16_t ReadLocalFeatures = 0x1003;
constexpr std::uint16_t ReadAddress = 0x1009;
constexpr std::uint16_t ReadLocalName = 0x0C14;
constexpr std::uint16_t LeReadBufferSize = 0x2002;
constexpr std::uint16_t LeSetScanEnable = 0x200C;

[[noreturn]] void Die(const char* AWhat) {
  std::perror(AWhat);
  std::exit(1);
}

class TController {
 public:
  TController() : FDevice(open("/dev/vhci", O_RDWR)) {
    if (FDevice < 0) Die("/dev/vhci");
    Send({VendorPacket, 0x00});
  }

  [[noreturn]] void Run() {
    std::array<pollfd, 2> Polled{pollfd{FDevice, POLLIN, 0}, pollfd{STDIN_FILENO, POLLIN, 0}};
    for (;;) {
      if (poll(Polled.data(), Polled.size(), -1) < 0) Die("poll");
      if (Polled[0].revents & POLLIN) TakePacket();
      if (Polled[1].revents & (POLLIN | POLLHUP)) TakeInput();
    }
  }

 private:
  void Send(const TBytes& APacket) {
    if (write(FDevice, APacket.data(), APacket.size()) < 0) Die("write to /dev/vhci");
  }

  void TakePacket() {
    std::array<std::uint8_t, 1024> Packet{};
    const ssize_t Size = read(FDevice, Packet.data(), Packet.size());
    if (Size < 4 || Packet[0] != CommandPacket) return;
    const auto Command = static_cast<std::uint16_t>(Packet[1] | Packet[2] << 8);
    if (Command == LeSetScanEnable) {
      FScans = Packet[4] != 0;
      std::printf("scan=%d filter=%d\n", Packet[4], Packet[5]);
    }
    Complete(Command, ReplyTo(Command));
  }

  static TBytes ReplyTo(std::uint16_t ACommand) {
    switch (ACommand) {
      case ReadLocalVersion:
        return {0, 9, 0, 0, 9, 0xF1, 5, 0, 0};  // version 5.0
      case ReadLocalCommands:
        return TBytes(65);
      case ReadLocalFeatures:
        return {0, 0, 0, 0, 0, 0x60, 0, 0, 0};  // LE, nothing else
      case ReadAddress:
        return {0, 0x55, 0x44, 0x33, 0x22, 0x11, 0};
      case ReadLocalName:
        return TBytes(249);
      case LeReadBufferSize:
        return {0, 27, 0, 8};
      default:
        return TBytes(17);  // done, all values zero
    }
  }

  void Complete(std::uint16_t ACommand, const TBytes& AReply) {
    TBytes Event{EventPacket,
                 0x0E,
                 static_cast<std::uint8_t>(AReply.size() + 3),
                 1,
                 static_cast<std::uint8_t>(ACommand & 0xFF),
                 static_cast<std::uint8_t>(ACommand >> 8)};
    Event.insert(Event.end(), AReply.begin(), AReply.end());
    Send(Event);
  }

  void TakeInput() {
    std::array<char, 1024> Text{};
    const ssize_t Size = read(STDIN_FILENO, Text.data(), Text.size());
    if (Size <= 0) std::exit(0);
    FInput.append(Text.data(), static_cast<std::size_t>(Size));
    for (auto End = FInput.find('\n'); End != std::string::npos; End = FInput.find('\n')) {
      Advertise(FInput.substr(0, End));
      FInput.erase(0, End + 1);
    }
  }

  void Advertise(const std::string& ALine) {
    std::istringstream Words(ALine);
    std::string Address, Payload;
    int Rssi = 0;
    if (!(Words >> Address >> Rssi >> Payload) || !FScans) {
      std::printf("not sent: %s\n", ALine.c_str());
      return;
    }
    const TBytes Data = FromHex(Payload);
    const auto Size = static_cast<std::uint8_t>(Data.size());
    // One report, not connectable, random address.
    TBytes Event{EventPacket, 0x3E, static_cast<std::uint8_t>(Size + 12), 0x02, 1, 3, 1};
    for (std::size_t I = 6; I-- > 0;) Event.push_back(FromHex(Address.substr(3 * I, 2)).at(0));
    Event.push_back(Size);
    Event.insert(Event.end(), Data.begin(), Data.end());
    Event.push_back(static_cast<std::uint8_t>(Rssi));
    Send(Event);
  }

  static TBytes FromHex(const std::string& AText) {
    TBytes Result;
    for (std::size_t I = 0; I + 1 < AText.size(); I += 2)
      Result.push_back(static_cast<std::uint8_t>(std::stoi(AText.substr(I, 2), nullptr, 16)));
    return Result;
  }

  int FDevice;
  bool FScans = false;
  std::string FInput;
};

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  TController().Run();
}
