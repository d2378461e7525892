#include "platform/beacons/bluez/wake_up.h"

#include <fmt/format.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/beacons/advertisement.h"
#include "platform/beacons/bluez/messages.h"

namespace System::Beacon {

TWakeUp::TWakeUp() : FFd(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
  if (FFd < 0) throw EBeaconSourceError(fmt::format(Messages::SNoWakeUp, std::strerror(errno)));
}

TWakeUp::~TWakeUp() {
  close(FFd);
}

void TWakeUp::Set() noexcept {
  eventfd_write(FFd, 1);
}

bool TWakeUp::Take() noexcept {
  eventfd_t Value = 0;
  return eventfd_read(FFd, &Value) == 0;
}

}  // namespace System::Beacon
