#include "platform/beacons/bluez/monitor.h"

#include <systemd/sd-bus.h>

#include <array>
#include <span>

namespace System::Beacon {
namespace {

// An advertisement matches when its AD structure of this type holds these bytes at this offset.
struct TPattern {
  std::uint8_t Offset;
  std::uint8_t Type;
  std::span<const std::uint8_t> Bytes;
};

constexpr std::array<std::uint8_t, 4> IBeaconBytes{0x4C, 0x00, 0x02, 0x15};
constexpr std::array<std::uint8_t, 2> AltBeaconBytes{0xBE, 0xAC};
constexpr std::array<std::uint8_t, 2> EddystoneBytes{0xAA, 0xFE};
constexpr std::array<TPattern, 3> Patterns{TPattern{0, 0xFF, IBeaconBytes},
                                           TPattern{2, 0xFF, AltBeaconBytes},
                                           TPattern{0, 0x16, EddystoneBytes}};

int Acknowledge(sd_bus_message* AMessage, void*, sd_bus_error*) noexcept {
  return sd_bus_reply_method_return(AMessage, nullptr);
}

int Release(sd_bus_message* AMessage, void* AReleased, sd_bus_error*) noexcept {
  (*static_cast<std::function<void()>*>(AReleased))();
  return sd_bus_reply_method_return(AMessage, nullptr);
}

int AppendType(sd_bus*,
               const char*,
               const char*,
               const char*,
               sd_bus_message* AReply,
               void*,
               sd_bus_error*) noexcept {
  return sd_bus_message_append(AReply, "s", "or_patterns");
}

int AppendPattern(sd_bus_message* AReply, const TPattern& APattern) noexcept {
  int Result = sd_bus_message_open_container(AReply, 'r', "yyay");
  if (Result >= 0) Result = sd_bus_message_append(AReply, "yy", APattern.Offset, APattern.Type);
  if (Result >= 0)
    Result = sd_bus_message_append_array(AReply, 'y', APattern.Bytes.data(), APattern.Bytes.size());
  return Result < 0 ? Result : sd_bus_message_close_container(AReply);
}

int AppendPatterns(sd_bus*,
                   const char*,
                   const char*,
                   const char*,
                   sd_bus_message* AReply,
                   void*,
                   sd_bus_error*) noexcept {
  int Result = sd_bus_message_open_container(AReply, 'a', "(yyay)");
  for (const TPattern& Pattern : Patterns) {
    if (Result >= 0) Result = AppendPattern(AReply, Pattern);
  }
  return Result < 0 ? Result : sd_bus_message_close_container(AReply);
}

const sd_bus_vtable MonitorTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Activate", "", "", Acknowledge, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("DeviceFound", "o", "", Acknowledge, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("DeviceLost", "o", "", Acknowledge, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Release", "", "", Release, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Type", "s", AppendType, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Patterns", "a(yyay)", AppendPatterns, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END};

}  // namespace

TBeaconMonitor::TBeaconMonitor(TBus& ABus, std::function<void()> AReleased)
    : FReleased(std::move(AReleased)) {
  sd_bus_slot* Slot = nullptr;
  if (sd_bus_add_object_manager(ABus.GetHandle(), &Slot, Path) >= 0) FManager.reset(Slot);
  if (sd_bus_add_object_vtable(ABus.GetHandle(),
                               &Slot,
                               "/wayfence/beacons",
                               "org.bluez.AdvertisementMonitor1",
                               MonitorTable,
                               &FReleased) >= 0)
    FMonitor.reset(Slot);
}

}  // namespace System::Beacon
