#include "platform/beacons/bluez/bus_reader.h"

#include <systemd/sd-bus.h>

#include <string>

namespace System::Beacon {

std::string_view TBusReader::GetPath() const noexcept {
  const char* Path = sd_bus_message_get_path(FMessage);
  return Path ? Path : std::string_view();
}

std::string_view TBusReader::ReadText() noexcept {
  char Type = 0;
  if (FIsBroken || sd_bus_message_peek_type(FMessage, &Type, nullptr) <= 0) return {};
  const char* Text = nullptr;
  if (Type != SD_BUS_TYPE_STRING && Type != SD_BUS_TYPE_OBJECT_PATH) return {};
  if (sd_bus_message_read_basic(FMessage, Type, &Text) <= 0) return {};
  return Text;
}

std::span<const std::uint8_t> TBusReader::ReadBytes() noexcept {
  const void* First = nullptr;
  std::size_t Size = 0;
  if (FIsBroken || sd_bus_message_read_array(FMessage, 'y', &First, &Size) <= 0) return {};
  return {static_cast<const std::uint8_t*>(First), Size};
}

bool TBusReader::Read(std::int16_t& AValue) noexcept {
  return !FIsBroken && sd_bus_message_read_basic(FMessage, 'n', &AValue) > 0;
}

bool TBusReader::Read(std::uint16_t& AValue) noexcept {
  return !FIsBroken && sd_bus_message_read_basic(FMessage, 'q', &AValue) > 0;
}

bool TBusReader::Read(bool& AValue) noexcept {
  int Value = 0;
  if (FIsBroken || sd_bus_message_read_basic(FMessage, 'b', &Value) <= 0) return false;
  AValue = Value != 0;
  return true;
}

bool TBusReader::Enter(char AKind, const char* AContents) noexcept {
  return !FIsBroken && sd_bus_message_enter_container(FMessage, AKind, AContents) > 0;
}

bool TBusReader::EnterDictionary(const char* AEntry) noexcept {
  return Enter('a', ('{' + std::string(AEntry) + '}').c_str());
}

void TBusReader::Leave() noexcept {
  while (sd_bus_message_at_end(FMessage, 0) == 0) {
    if (sd_bus_message_skip(FMessage, nullptr) <= 0) break;
  }
  if (sd_bus_message_exit_container(FMessage) < 0) FIsBroken = true;
}

}  // namespace System::Beacon
