// A position calculator of one's own: the place of the nearest beacon, nothing more. The map
// component makes its calculators of whatever class the class variable names.
#include <cstdio>
#include <mutex>

#include "fencing/System.Beacon.Fencing.h"
#include "positioning/System.Beacon.Fencing.PositionCalculator.h"

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

/// Answers at once, on the component's timer thread, which has ended before the component takes its
/// handler off. One that answers on a thread of its own waits there until the handler has returned.
class TNearestBeacon final : public TPositionCalculator {
 public:
  TNearestBeacon(const TParticleFilterOptions&, const TRectF&, const TPathSegments&) {}

  bool DoCalculateStep(const TFencingBeacons& ABeacons, const TFencingBeacons&) override {
    const TFencingBeacon& Nearest = ABeacons[0];  // the list is in order, and never empty
    if (!Nearest.BTBeacon || Nearest.BTBeacon->GetDistance() < 0.0) return true;
    const TPointF Place = ToCalculator(Nearest.DesignBeacon->GetCenterInGlobalSpace());
    const TEstimatedPositionEvent Handler = GetOnEstimatingPosition();
    Handler(Place, Place);
    return true;
  }
  TEstimatedPositionEvent GetOnEstimatingPosition() const override {
    const std::lock_guard Guard(FLock);
    return FHandler;
  }
  void SetOnEstimatingPosition(TEstimatedPositionEvent AValue) override {
    const std::lock_guard Guard(FLock);
    std::swap(FHandler, AValue);
  }
  void ApplyOptions(const TParticleFilterOptions&) override {}
  void ManualCalibration(const TPointF&) override {}
  void DoBeaconProximityEvent(const TFencingBeacon&, TBeaconProximity) override {}
  double GetMotionAverage() const override { return 0.0; }
  /// The distance is left to the beacon service.
  bool DoCalcutateBeaconDistance(std::int32_t,
                                 std::int32_t,
                                 const TFencingBeacon&,
                                 double&) override {
    return false;
  }

 private:
  mutable std::mutex FLock;  // guards FHandler
  TEstimatedPositionEvent FHandler;
};

int main(int ACount, char** AValues) {
  TPositionCalculator::FPositionCalculatorClass = ClassOf<TNearestBeacon>();
  TBeaconMapFencing Fencing;
  Fencing.SetOnPositionEstimated([](const TPointF& AEstimated, const TPointF&) {
    std::printf("near the beacon at %.1f, %.1f\n",
                static_cast<double>(AEstimated.X),
                static_cast<double>(AEstimated.Y));
  });
  try {
    if (!Fencing.LoadProjectFromXML(ACount > 1 ? AValues[1] : "shop.xml")) {
      std::fprintf(stderr, "there is no such project; example_make_project makes shop.xml\n");
      return 1;
    }
    Fencing.SetEnabled(true);
  } catch (const EGeneralError& Error) {
    std::fprintf(stderr, "%s\n", Error.what());
    return 1;
  }
  for (int Second = 0; Second < 60; ++Second) Sleep(1000);
}
