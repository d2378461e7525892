// The zone component inside an event loop that the application has already: here one over poll.
// Whatever wakes the loop up will do: a message of a window system, a timer, a socket.
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cstdio>

#include "fencing/System.Beacon.Fencing.h"
#include "persistence/component_file.h"

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

int main(int ACount, char** AValues) {
  const int WakeUp = eventfd(0, EFD_NONBLOCK);
  // Called on the reporting thread whenever a handler waits for the main thread.
  SetHandOffHook([WakeUp] { eventfd_write(WakeUp, 1); });

  TBeaconZonesFencing Fencing;
  Fencing.SetOnZoneEnter([](TObject*, const TRef<IBeacon>&, TBeaconZoneItem* AZone) {
    std::printf("in %s\n", AZone->GetDisplayName().c_str());
  });
  Fencing.SetOnZoneExit([](TObject*, const TRef<IBeacon>&, TBeaconZoneItem* AZone) {
    std::printf("out of %s\n", AZone->GetDisplayName().c_str());
  });
  try {
    LoadComponentFile(Fencing, ACount > 1 ? AValues[1] : "office.json");
    Fencing.SetEnabled(true);
    std::printf("type 'q' and enter to end\n");
    for (bool Goes = true; Goes;) {
      std::array<pollfd, 2> Inputs{{{WakeUp, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
      poll(Inputs.data(), Inputs.size(), -1);
      if (Inputs[0].revents != 0) {
        eventfd_t Ignored = 0;
        eventfd_read(WakeUp, &Ignored);
        ServeHandOffs();  // runs the handlers that wait, and raises what they raise
      }
      if (Inputs[1].revents != 0) {
        const int Key = std::getchar();
        Goes = Key != 'q' && Key != EOF;
      }
    }
    Fencing.SetEnabled(false);  // no handler is called any more
  } catch (const EGeneralError& Error) {
    std::fprintf(stderr, "%s\n", Error.what());
    return 1;
  }
  SetHandOffHook({});
  close(WakeUp);
}
