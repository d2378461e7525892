// The whole of the map component against an application that does everything at random.
#include <gtest/gtest.h>

#include "platform/controls/offscreen_control.h"
#include "platform/simulation.h"
#include "support/environment.h"
#include "support/live_map_stress.h"

namespace System::Beacon::Fencing {
namespace {

TEST(LiveMapStress, HoldsInTheSimulatedRuntimeForManySeeds) {
  const int Seeds = FromEnvironment("WAYFENCE_STRESS_SEEDS", 100);
  int Positions = 0, MapChanges = 0;
  for (int Seed = 1; Seed <= Seeds && !HasFailure(); ++Seed) {
    SCOPED_TRACE(testing::Message() << "seed " << Seed);
    const TSimulation Simulation({.Seed = static_cast<std::uint64_t>(Seed)});
    TOffscreenControl Control(40, 40);
    TLiveMapStress Stress(static_cast<std::uint64_t>(Seed), {50'000, 400, 1}, Control);
    for (int Step = 0; Step < 16; ++Step) {
      Stress.Step();
      if (Step % 4 == 0) Control.Update();
    }
    Positions += Stress.GetPositionCount();
    MapChanges += Stress.GetMapChangeCount();
  }
  EXPECT_GT(Positions, 2 * Seeds) << "too few to mean anything";
  EXPECT_GT(MapChanges, Seeds / 5) << "too few to mean anything";
}

TEST(LiveMapStress, HoldsInTheRealRuntime) {
  const TTicks End = Ticks() + FromEnvironment("WAYFENCE_STRESS_SECONDS", 2) * TicksPerSecond;
  TOffscreenControl Control(200, 200);
  TLiveMapStress Stress(1, {500, 4, 20}, Control);
  while (!HasFailure() && (Ticks() < End || Stress.GetPositionCount() < 100)) {
    Stress.Step();
    Control.Update();
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing
