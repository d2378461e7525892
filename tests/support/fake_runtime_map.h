// A display that writes down what it is told, and a calculator that answers what a test decides.
#pragma once

#include <fmt/format.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "positioning/System.Beacon.Fencing.PositionCalculator.h"
#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.h"
#include "support/fake_design.h"

namespace System::Beacon::Fencing {

/// Shows nothing. What stands behind a project text is decided by `Projects`; another text than
/// those and the empty one is refused. While it lives, components are made with it.
class TFakeRuntimeMap final : public TBeaconFencingRuntimeMap {
 public:
  static inline std::map<std::string, std::function<TFencingProject()>> Projects;
  static inline std::string Log;  ///< calls since `Take`

  static std::string Take() { return std::exchange(Log, {}); }

  TPointF GetPathPosition() const override { return FPath; }
  void SetPathPosition(const TPointF& AValue) override {
    Write(fmt::format("path {:g},{:g}", AValue.X, AValue.Y));
    FPath = AValue;
  }
  TPointF GetRawPosition() const override { return FRaw; }
  void SetRawPosition(const TPointF& AValue) override {
    Write(fmt::format("raw {:g},{:g}", AValue.X, AValue.Y));
    FRaw = AValue;
  }
  std::string GetXmlData() const override { return FText; }
  void SetXmlData(const std::string& AValue) override {
    if (AValue == FText) return;
    if (!AValue.empty() && !Projects.contains(AValue)) throw EGeneralError("no project " + AValue);
    Write("text " + AValue);
    FText = AValue;
    FProject = AValue.empty() ? TFencingProject() : Projects.at(AValue)();
  }
  TFencingMapOptions GetMapOptions() const override { return FOptions; }
  void SetMapOptions(TFencingMapOptions AValue) override { FOptions = AValue; }
  TFencingOptions* GetFencingOptions() const override { return FFencingOptions; }
  void SetFencingOptions(TFencingOptions* AValue) override { FFencingOptions = AValue; }
  TControl* GetControl() const override { return FControl; }
  void SetControl(TControl* AValue) override { FControl = AValue; }
  void SetRotation(std::int32_t AAngle) override { Write(fmt::format("rotation {}", AAngle)); }
  void SetMapIndex(std::int32_t AIndex) override {
    Write(fmt::format("map {}", AIndex));
    FProject.SetCurrentMapIndex(AIndex);
  }
  void ControlPaint(TObject*, TDrawing*, const TRectF&) override { Write("paint"); }
  void ChangeBeaconColor(const TRef<IDesignBeacon>& ABeacon, TAlphaColor AColor) override {
    Write(fmt::format("color {} {:X}", ABeacon->GetName(), AColor.Value));
  }
  void HighLightZone(const TRef<IDesignZone>& AZone) override { HighLightZones({&AZone, 1}); }
  void HighLightZones(std::span<const TRef<IDesignZone>> AZones) override {
    std::string Names;
    for (const TRef<IDesignZone>& Zone : AZones) Names += " " + Zone->GetName();
    Write("highlight" + Names);
  }
  TFencingProject GetProjectInformation() override { return FProject; }

 private:
  static void Write(const std::string& AText) {
    EXPECT_TRUE(IsMainThread()) << AText;
    Log += (Log.empty() ? "" : "; ") + AText;
  }

  std::string FText;
  TFencingProject FProject;
  TPointF FPath, FRaw;
  TFencingMapOptions FOptions;
  TFencingOptions* FFencingOptions = nullptr;
  TControl* FControl = nullptr;
};

/// Answers every step at once, on the caller's thread, with the next of `Path` (calculator units),
/// and then with none.
class TFakeCalculator final : public TPositionCalculator {
 public:
  static inline std::vector<TPointF> Path;
  static inline TPointF Calibrated;
  static inline int Made = 0;

  TFakeCalculator(const TParticleFilterOptions&, const TRectF&, const TPathSegments&) { ++Made; }

  TEstimatedPositionEvent GetOnEstimatingPosition() const override { return FHandler; }
  void ApplyOptions(const TParticleFilterOptions&) override {}
  void SetOnEstimatingPosition(TEstimatedPositionEvent AValue) override {
    FHandler = std::move(AValue);
  }
  void ManualCalibration(const TPointF& ACPoint) override { Calibrated = ACPoint; }
  bool DoCalculateStep(const TFencingBeacons&, const TFencingBeacons&) override {
    if (Path.empty()) return false;
    const TPointF Place = Path.front();
    Path.erase(Path.begin());
    const TEstimatedPositionEvent Handler = FHandler;
    Handler(Place, Place);
    return true;
  }
  void DoBeaconProximityEvent(const TFencingBeacon&, TBeaconProximity) override {}
  double GetMotionAverage() const override { return 1.5; }
  bool DoCalcutateBeaconDistance(std::int32_t,
                                 std::int32_t,
                                 const TFencingBeacon&,
                                 double&) override {
    return false;
  }

 private:
  TEstimatedPositionEvent FHandler;
};

/// The two class variables, as long as it lives.
struct TFakeClasses {
  TFakeClasses() {
    TFakeRuntimeMap::Projects.clear();
    TFakeRuntimeMap::Log.clear();
    TFakeCalculator::Path.clear();
    TFakeCalculator::Made = 0;
  }
  ~TFakeClasses() {
    TBeaconFencingRuntimeMap::FRuntimeMapClass = RuntimeMap;
    TPositionCalculator::FPositionCalculatorClass = Calculator;
  }
  TFakeClasses(const TFakeClasses&) = delete;
  TFakeClasses& operator=(const TFakeClasses&) = delete;

  const TBeaconFencingRuntimeMapClass RuntimeMap = std::exchange(
      TBeaconFencingRuntimeMap::FRuntimeMapClass, RuntimeMapClassOf<TFakeRuntimeMap>());
  const TPositionCalculatorClass Calculator =
      std::exchange(TPositionCalculator::FPositionCalculatorClass, ClassOf<TFakeCalculator>());
};

}  // namespace System::Beacon::Fencing
