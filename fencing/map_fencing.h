// The map component. Applications include System.Beacon.Fencing.h.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "fencing/own_threads.h"
#include "fencing/run_switch.h"
#include "platform/beacons/System.Beacon.h"
#include "platform/components.h"
#include "platform/controls/control.h"
#include "platform/threads.h"
#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.h"

namespace System::Beacon::Fencing {

class TEstimateReceiver;
class TTrackedProject;
struct TMapCalculator;

/// Tells where the device is on the maps of a project: positions, zones, floor changes, beacons,
/// routes to points of interest; and shows the live map on a control. The application sets
/// `XMLMap`, the handlers it wants and switches `Enabled` on.
///
/// Properties and operations belong to the main thread, but for those marked "any thread".
/// Handlers are called on the main thread while the reporting thread waits, with no lock held,
/// except where said; see threads.h for how an application without a message loop serves them.
///
/// Positions that events report and operations take are in map units; `LastRawPosition` and
/// `LastPathPosition` are in calculator units, hundredths of them.
///
/// Disabling inside one of its own handlers stops the component at once; enabling it, or loading
/// another project, there takes effect when the handler has returned, and an error of that start is
/// then raised by `ServeHandOffs`. Destroying it inside one of its own handlers ends the process
/// with a message.
class TCustomBeaconMapFencing : public TComponent {
 public:
  FENCING_CLASS_INFO()

  /// Calls a handler again and again.
  class TBeaconFencingTimer : public TThread {
   public:
    TBeaconFencingTimer() : TThread("the timer of a map component") {}
    ~TBeaconFencingTimer() override;

    /// Milliseconds, 500 at creation; a change counts from the next sleep on. Any thread.
    std::int32_t GetUpdateInterval() const noexcept { return FUpdateInterval.load(); }
    void SetUpdateInterval(std::int32_t AValue) noexcept { FUpdateInterval.store(AValue); }
    /// Called on this thread with it as the sender. What it raises goes to the process's exception
    /// handler; the next interval follows. Any thread.
    TNotifyEvent GetOnIntervalPassed() const;
    void SetOnIntervalPassed(TNotifyEvent AValue);
    /// Ends the sleep and the thread, without waiting.
    void TerminateSoon();

   protected:
    void Execute() override;

   private:
    std::atomic<std::int32_t> FUpdateInterval{500};
    mutable std::mutex FLock;  // guards FOnIntervalPassed
    TNotifyEvent FOnIntervalPassed;
    TEvent FWakeUp{"the end of a map component's interval"};
  };

  /// Makes its runtime map, of `TBeaconFencingRuntimeMap::FRuntimeMapClass`.
  explicit TCustomBeaconMapFencing(TComponent* AOwner = nullptr);
  ~TCustomBeaconMapFencing() override;

  // ---- properties

  /// Starts and stops processing; while the component is loading or designed it only stores. A
  /// start that fails leaves the component stopped and `Enabled` false, and raises. Another thread
  /// (that of `OnCalcPosition`) waits until the main thread has done it.
  bool GetEnabled() const noexcept { return FEnabled.load(std::memory_order_acquire); }
  void SetEnabled(bool AValue);
  /// The text of the project. Setting another one unloads the old project: positions, zones (no
  /// exit is told) and the route are forgotten, and a running component starts anew with it; with
  /// the empty text it is disabled. A text that is refused raises, and the old project goes on.
  /// While designed it reads "<Project>" or "<Empty>" and cannot be set.
  std::string GetXMLMAp() const;
  void SetXMLMap(const std::string& AValue);
  const std::string& GetRawMap() const noexcept { return FXMLMap; }
  /// The record of the project that was handed over last; its arrays are shared. Any thread, but
  /// copies are released on the main thread, since the last one frees the scene.
  TFencingProject GetProjectInformation() const;
  /// Where the map is shown: the control's paint handler becomes `ControlPaint`. Not owned; the
  /// control may go first.
  TControl* GetPaintControl() const noexcept { return FControl.load(); }
  void SetPaintControl(TControl* AValue);
  /// The component's own options. Setting another object copies what its `Assign` copies.
  TParticleFilterOptions* GetParticleFilterOptions() const noexcept {
    return FParticleFilterOptions.get();
  }
  void SetParticleFilterOptions(TParticleFilterOptions* AValue);
  TBeaconManagerOptions* GetBeaconManagerOptions() const noexcept {
    return FBeaconManagerOptions.get();
  }
  void SetBeaconManagerOptions(TBeaconManagerOptions* AValue);
  /// What is shown, and whether zones are highlighted and beacons coloured by their proximity.
  TFencingMapOptions GetMapOptions() const noexcept { return FMapOptions.load(); }
  void SetMapOptions(TFencingMapOptions AValue);
  TFencingOptions* GetFencingOptions() const noexcept { return FFencingOptions.get(); }
  void SetFencingOptions(TFencingOptions* AValue);
  /// The beacons that are seen, as the service last reported them. Any thread.
  TBeaconList GetDetectedBeacons() const;
  /// The last estimate and the one that was fitted to the paths, calculator units. Any thread.
  TPointF GetLastRawPosition() const;
  TPointF GetLastPathPosition() const;
  /// How much the strengths vary on the current map, dB; 0 while there is no calculator.
  double GetMotionAverage() const;
  /// -1 to 100; kept for the application.
  std::int32_t GetZoneEnteringError() const noexcept { return FZoneEnteringError; }
  void SetZoneEnteringError(std::int32_t AValue);

  // ---- events

  const TFencingBeaconEnterExitEvent& GetOnBeaconEnter() const noexcept {
    return FOnBeaconEnter.Get();
  }
  void SetOnBeaconEnter(TFencingBeaconEnterExitEvent A) { FOnBeaconEnter.Set(std::move(A)); }
  const TFencingBeaconEnterExitEvent& GetOnBeaconExit() const noexcept {
    return FOnBeaconExit.Get();
  }
  void SetOnBeaconExit(TFencingBeaconEnterExitEvent A) { FOnBeaconExit.Set(std::move(A)); }
  // Beacons of the current map; proximity with the zone of the last position, or none.
  const TFencingBeaconProximityEvent& GetOnBeaconProximity() const noexcept {
    return FOnBeaconProximity.Get();
  }
  void SetOnBeaconProximity(TFencingBeaconProximityEvent A) {
    FOnBeaconProximity.Set(std::move(A));
  }
  const TFencingEddyBeaconURLEvent& GetOnBeaconEddyURL() const noexcept {
    return FOnBeaconEddyURL.Get();
  }
  void SetOnBeaconEddyURL(TFencingEddyBeaconURLEvent A) { FOnBeaconEddyURL.Set(std::move(A)); }
  const TFencingEddyBeaconTLMEvent& GetOnBeaconEddyTLM() const noexcept {
    return FOnBeaconEddyTLM.Get();
  }
  void SetOnBeaconEddyTLM(TFencingEddyBeaconTLMEvent A) { FOnBeaconEddyTLM.Set(std::move(A)); }
  /// The position came into a zone, left it; several zones may lie over each other.
  const TFencingZoneEnterEvent& GetOnZoneEnter() const noexcept { return FOnZoneEnter.Get(); }
  void SetOnZoneEnter(TFencingZoneEnterEvent A) { FOnZoneEnter.Set(std::move(A)); }
  const TFencingZoneEnterEvent& GetOnZoneExit() const noexcept { return FOnZoneExit.Get(); }
  void SetOnZoneExit(TFencingZoneEnterEvent A) { FOnZoneExit.Set(std::move(A)); }
  /// Called on the timer thread; it may compute the position itself. Any thread. The old handler
  /// may still be running when another one has been set.
  TCalcPositionEvent GetOnCalcPosition() const;
  void SetOnCalcPosition(TCalcPositionEvent AValue);
  /// Called after the map was painted on the control.
  const TPaintEvent& GetOnPaint() const noexcept { return FOnPaint; }
  void SetOnPaint(TPaintEvent AValue) { FOnPaint = std::move(AValue); }
  /// Map units.
  const TEstimatedPositionEvent& GetOnPositionEstimated() const noexcept {
    return FOnPositionEstimated.Get();
  }
  void SetOnPositionEstimated(TEstimatedPositionEvent A) { FOnPositionEstimated.Set(std::move(A)); }
  /// Another map is nearer: it becomes the current one unless the handler refuses. Called while
  /// the component's lock of map changes is held.
  const TFencingMapChangeEvent& GetOnBeforeMapChange() const noexcept {
    return FOnBeforeMapChange.Get();
  }
  void SetOnBeforeMapChange(TFencingMapChangeEvent A) { FOnBeforeMapChange.Set(std::move(A)); }
  /// The end of the route was reached. The route is cleared when the handler has returned.
  const TArrivedToPOIEvent& GetOnArrivedToPOI() const noexcept { return FOnArrivedToPOI.Get(); }
  void SetOnArrivedToPOI(TArrivedToPOIEvent A) { FOnArrivedToPOI.Set(std::move(A)); }

  // ---- life

  /// Stops, hands the project over and starts: calculators (kept while the text stays the same, one
  /// whose calculation has failed too), beacon service, which finds the radio itself, and timer.
  /// Raises `EComponentError` without a map or a class of calculators,
  /// and what the project's reader and the source raise.
  void StartProcess();
  void StopProcess();
  /// Makes the beacon manager, or replaces one of another scan mode unless it is scanning, and
  /// sets it up.
  void ConfigureBeaconManager();
  void RegisterBeaconRegions();
  void UnregisterBeaconRegions();
  /// Makes one calculator for each map, at most 4,096, unless there are some or a handler of the
  /// component is running, whose thread may look for them.
  void CreateParticlesFilter();
  /// Where advertisements come from, in place of the platform's radio. Taken at the next start.
  /// Not published.
  void SetSource(TRef<IAdvertisementSource> ASource) { FSource = std::move(ASource); }
  /// What the service has done since the last start.
  TScanStatistics GetScanStatistics() const;

  // ---- project and display

  /// Stores a text, which counts from the next start on.
  void SetXmlData(const std::string& AXml) { FXMLMap = AXml; }
  /// The same with the text of a file; false when there is none.
  bool LoadProjectFromXML(const std::string& APath);
  void SaveProjectToXML(const std::string& APath) const;
  /// Any thread.
  std::int32_t GetMapIndex() const;
  void SetMapIndex(std::int32_t AValue);
  /// Whole degrees from -180 to 180.
  void SetRotation(std::int32_t AAngle);
  void ControlPaint(TObject* ASender, TDrawing* ACanvas, const TRectF& ARect);
  /// Of the current map; centimetres when it does not tell.
  TMeasureUnits GetMeasureUnits() const;
  /// Corrects distances on the current map by the device's true position, map units.
  void ManualCalibration(const TPointF& ACPoint);
  /// Shows the way from the last position to a point of interest (an index into the project's
  /// list), anew when the device leaves it, until it is reached. False when there is none.
  bool ShowPathToNodeIndex(std::int32_t AIndex);
  void ClearRoute();
  /// The object behind the display.
  TBeaconFencingRuntimeMap& GetRuntimeMap() const noexcept { return *FRuntimeMap; }

  // ---- what the component installs on its parts

  void ParticleFilterOptionsChanged(TObject* ASender);
  void FencingOptionsChanged(TObject* ASender);
  // On the reporting thread.
  void BeaconEnterEvent(TObject* ASender,
                        const TRef<IBeacon>& ABeacon,
                        const TBeaconList& ACurrentBeaconList);
  void BeaconExitEvent(TObject* ASender,
                       const TRef<IBeacon>& ABeacon,
                       const TBeaconList& ACurrentBeaconList);
  void ProcessIncomingBeacon(const TRef<IBeacon>& ABeacon);
  void ProcessOutgoingBeacon(const TRef<IBeacon>& ABeacon);
  void BeaconProximityChangeEvent(TObject* ASender,
                                  const TRef<IBeacon>& ABeacon,
                                  TBeaconProximity AProximity);
  void BeaconEddystoneURLEvent(TObject* ASender,
                               const TRef<IBeacon>& ABeacon,
                               const TEddystoneURL& AEddystoneURL);
  void BeaconEddystoneTLMEvent(TObject* ASender,
                               const TRef<IBeacon>& ABeacon,
                               const TEddystoneTLM& AEddystoneTLM);
  void BeaconCalcDistancesEvent(TObject* ASender,
                                const TRef<IBeacon>& ABeacon,
                                int ATxPower,
                                int ARssi,
                                double& ANewDistance);
  // On the timer thread; the second one on the reporting thread too.
  void UpdateBeaconsPositionCalculator(TObject* ASender);
  void CheckMapChange();
  // On the thread of the current map's calculator, or on the timer thread; calculator units.
  void OnEstimatePosition(const TPointF& AEstimatedPoint, const TPointF& APointToPath);
  void CheckZonesEvent(const TPointF& APoint);

 protected:
  /// Hands the project over when the component was streamed in, and starts when it is enabled.
  void Loaded() override;
  /// Forgets a paint control that is being destroyed.
  void Notification(TComponent* AComponent, TOperation AOperation) override;
  static std::vector<TPropertyInfo> PropertyTable(bool AIsPublished);

 private:
  friend class TEstimateReceiver;
  using TLoadedRef = std::shared_ptr<TTrackedProject>;
  using TFilterOptionsRef = std::shared_ptr<const TParticleFilterOptions>;
  using TZones = TArray<TRef<IDesignZone>>;
  struct TDisplayChange;

  bool IsDesigning() const noexcept;
  bool MayAct() const noexcept;

  void BeginProcess();
  void AskToEnd();
  void WaitForEnd();
  void DisconnectBeaconManager();
  void StartTimer();
  void MakeCalculators();
  void DisconnectRetired();
  void Tick(TObject* ASender);
  void ScanFailed(TObject* ASender, const std::string& AMessage);

  bool HandOver(const std::string& AText);
  void Publish(TLoadedRef ALoaded);
  void FreeRetired();
  bool IsCurrent(const TLoadedRef& ALoaded, std::int32_t AMapIndex) const;
  TLoadedRef GetLoaded() const;
  void TakeFilterOptions();

  void PutPaintOn();
  void TakePaintOff();

  void TakeEstimateOf(TTrackedProject& AProject,
                      std::int32_t AMapIndex,
                      const TPointF& AEstimatedPoint,
                      const TPointF& APointToPath);
  void TakeEstimate(const TLoadedRef& ALoaded,
                    std::int32_t AMapIndex,
                    TPointF AEstimatedPoint,
                    TPointF APointToPath);
  void FollowRoute(const TLoadedRef& ALoaded, TDisplayChange& AChange);
  void Show(const TLoadedRef& ALoaded, const TDisplayChange& AChange);
  void CheckZones(const TLoadedRef& ALoaded, std::int32_t AMapIndex, TPointF APoint);
  bool CalcPosition(const TLoadedRef& ALoaded,
                    std::int32_t AMapIndex,
                    const TFencingBeacons& ABeacons);
  void ChangeMap(const TLoadedRef& ALoaded, std::int32_t AMapIndex);

  void SetCurrentBeaconList(TBeaconList AList);
  template <class TSignature, class TFrame>
  void TellFrame(TEventSlot<TSignature>& ASlot, const TRef<IBeacon>& ABeacon, const TFrame& AFrame);

  template <class TSignature, class TCall>
  bool Tell(TEventSlot<TSignature>& ASlot, const TCall& ACall) {
    return Deliver(FSwitch.GetGate(), ASlot, ACall);
  }
  /// Runs a body on the main thread, unless the project has been replaced or the component stopped.
  template <class TBody>
  void OnMainThread(const TLoadedRef& ALoaded, const TBody& ABody) {
    const auto Body = [&] {
      if (GetLoaded() == ALoaded) ABody();
    };
    TThread::Synchronize(FSwitch.GetGate(), std::cref(Body));
  }

  TEventSlot<void(TObject*, const TRef<IDesignZone>&)> FOnZoneEnter, FOnZoneExit;
  TEventSlot<void(TObject*, const TFencingBeacon&)> FOnBeaconEnter, FOnBeaconExit;
  TEventSlot<void(TObject*, const TFencingBeacon&, const TRef<IDesignZone>&, TBeaconProximity)>
      FOnBeaconProximity;
  TEventSlot<void(TObject*, const TFencingBeacon&, const TEddystoneURL&)> FOnBeaconEddyURL;
  TEventSlot<void(TObject*, const TFencingBeacon&, const TEddystoneTLM&)> FOnBeaconEddyTLM;
  TEventSlot<void(const TPointF&, const TPointF&)> FOnPositionEstimated;
  TEventSlot<void(TObject*, std::int32_t, std::int32_t, bool&)> FOnBeforeMapChange;
  TEventSlot<void(TObject*, const TBeaconFencingPOI&)> FOnArrivedToPOI;
  TPaintEvent FOnPaint;

  std::atomic<TControl*> FControl{nullptr};  // followed on the main thread only
  std::unique_ptr<TBeaconManager> FBeaconManager;
  std::atomic<bool> FEnabled{false};
  std::string FXMLMap;
  std::int32_t FZoneEnteringError = -1;
  std::unique_ptr<TParticleFilterOptions> FParticleFilterOptions;
  std::unique_ptr<TBeaconManagerOptions> FBeaconManagerOptions;
  std::unique_ptr<TFencingOptions> FFencingOptions;
  std::atomic<TFencingMapOptions> FMapOptions{};
  std::atomic<TZoneHighlightMetod> FZoneHighlightMetod{};
  std::unique_ptr<TBeaconFencingRuntimeMap> FRuntimeMap;
  TMonitor FChangeMapLock{"the lock of a map component's map changes"};
  TRef<IAdvertisementSource> FSource;
  std::vector<TBeaconsRegion> FRegisteredRegions;

  mutable std::mutex FStateLock;  // guards what follows; never held during a call
  TCalcPositionEvent FOnCalcPosition;
  TBeaconList FCurrentBeaconList;
  TFilterOptionsRef FFilterOptions;  // as they were when they last changed
  TLoadedRef FLoaded;                // replaced on the main thread; never nothing

  std::vector<TLoadedRef> FRetired;  // main thread; threads may still work on them
  TOwnThreads FOwnThreads;
  TRunSwitch FSwitch;
  std::unique_ptr<TBeaconFencingTimer> FFencingTimer;  // while it runs
};

/// The map component with its properties published, for forms and component files.
class TBeaconMapFencing : public TCustomBeaconMapFencing {
 public:
  FENCING_CLASS_INFO()
  using TCustomBeaconMapFencing::TCustomBeaconMapFencing;
};

}  // namespace System::Beacon::Fencing
