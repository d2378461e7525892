#include "platform/beacons/advertisement.h"

#include <fmt/format.h>

#include <charconv>

namespace System::Beacon {

std::string TBluetoothAddress::ToText() const {
  return fmt::format("{:02X}:{:02X}:{:02X}:{:02X}:{:02X}:{:02X}",
                     Bytes[0],
                     Bytes[1],
                     Bytes[2],
                     Bytes[3],
                     Bytes[4],
                     Bytes[5]);
}

bool TBluetoothAddress::Parse(std::string_view AText, TBluetoothAddress& AAddress) noexcept {
  if (AText.size() != 17) return false;
  TBluetoothAddress Result;
  for (std::size_t I = 0; I < 6; ++I) {
    const char* First = AText.data() + 3 * I;
    if (I > 0 && First[-1] != ':') return false;
    const auto [End, Error] = std::from_chars(First, First + 2, Result.Bytes[I], 16);
    if (Error != std::errc{} || End != First + 2) return false;
  }
  AAddress = Result;
  return true;
}

void TReadProblems::Add(std::string_view AWhere, std::string_view AWhat) {
  if (++Count <= MaxKept) First.push_back(fmt::format("{}: {}", AWhere, AWhat));
}

}  // namespace System::Beacon
