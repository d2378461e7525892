// The zone component in an application: zones in code, a live radio, events on the main thread.
#include <cstdio>

#include "fencing/System.Beacon.Fencing.h"

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

int main() {
  TBeaconZonesFencing Fencing;
  Fencing.SetBaseBeaconGUID("{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}");
  TBeaconZoneItem* const Lobby = Fencing.GetZones()->Add();
  Lobby->SetDisplayName("Lobby");
  Lobby->GetBeaconList()->Add()->SetMajor(1);  // any number of beacons, each with major and minor

  Fencing.SetOnZoneEnter([](TObject*, const TRef<IBeacon>&, TBeaconZoneItem* AZone) {
    std::printf("in %s\n", AZone->GetDisplayName().c_str());
  });
  Fencing.SetOnZoneExit([](TObject*, const TRef<IBeacon>&, TBeaconZoneItem* AZone) {
    std::printf("out of %s\n", AZone->GetDisplayName().c_str());
  });
  try {
    Fencing.SetEnabled(true);  // scans from now on, on a thread of its own
  } catch (const EGeneralError& Error) {
    std::fprintf(stderr, "%s\n", Error.what());
    return 1;
  }
  for (int Second = 0; Second < 60; ++Second) Sleep(1000);  // handlers run in here
}
