// The map component in an application: a project file, a live radio, positions on the main thread.
#include <cstdio>

#include "fencing/System.Beacon.Fencing.h"

using namespace System;
using namespace System::Beacon::Fencing;

int main(int ACount, char** AValues) {
  TBeaconMapFencing Fencing;
  Fencing.SetOnPositionEstimated([&](const TPointF& AEstimated, const TPointF& AOnPath) {
    const TFencingProject Project = Fencing.GetProjectInformation();
    const auto Map = static_cast<std::size_t>(Fencing.GetMapIndex());
    std::printf("%s: %.1f, %.1f; on the path %.1f, %.1f\n",
                Project.Maps[Map].Map->GetName().c_str(),
                static_cast<double>(AEstimated.X),
                static_cast<double>(AEstimated.Y),
                static_cast<double>(AOnPath.X),
                static_cast<double>(AOnPath.Y));
  });
  Fencing.SetOnZoneEnter([](TObject*, const TRef<IDesignZone>& AZone) {
    std::printf("in %s\n", AZone->GetName().c_str());
  });
  Fencing.SetOnZoneExit([](TObject*, const TRef<IDesignZone>& AZone) {
    std::printf("out of %s\n", AZone->GetName().c_str());
  });
  try {
    if (!Fencing.LoadProjectFromXML(ACount > 1 ? AValues[1] : "shop.xml")) {
      std::fprintf(stderr, "there is no such project; example_make_project makes shop.xml\n");
      return 1;
    }
    Fencing.SetEnabled(true);  // scans and estimates from now on, on threads of its own
  } catch (const EGeneralError& Error) {
    std::fprintf(stderr, "%s\n", Error.what());
    return 1;
  }
  for (int Second = 0; Second < 60; ++Second) Sleep(1000);  // handlers run in here
}
