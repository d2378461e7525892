// The component's properties and its life. The project is in map_project.cpp, what happens on other
// threads in map_positions.cpp and map_sightings.cpp.
#include "fencing/map_fencing.h"

#include <fmt/format.h>

#include <utility>

#include "fencing/messages.h"
#include "fencing/tracked_project.h"
#include "platform/errors.h"

namespace System::Beacon::Fencing {

// ---------------------------------------------------------------- class tables

std::vector<TPropertyInfo> TCustomBeaconMapFencing::PropertyTable(bool AIsPublished) {
  using T = TCustomBeaconMapFencing;
  const bool P = AIsPublished;
  std::vector<TPropertyInfo> Result = {
      Property<&T::GetEnabled, &T::SetEnabled>("Enabled", P),
      Property<&T::GetXMLMAp, &T::SetXMLMap>("XMLMap", P),
      EventProperty("PaintControl", P),  // as little a value as an event
      Property<&T::GetParticleFilterOptions, &T::SetParticleFilterOptions>("ParticleFilterOptions",
                                                                           P),
      Property<&T::GetBeaconManagerOptions, &T::SetBeaconManagerOptions>("BeaconManagerOptions", P),
      Property<&T::GetMapOptions, &T::SetMapOptions>("MapOptions", P),
      Property<&T::GetFencingOptions, &T::SetFencingOptions>("FencingOptions", P)};
  for (const char* const Event : {"OnBeaconEnter",
                                  "OnBeaconExit",
                                  "OnBeaconProximity",
                                  "OnBeaconEddyURL",
                                  "OnBeaconEddyTLM",
                                  "OnZoneEnter",
                                  "OnZoneExit",
                                  "OnCalcPosition",
                                  "OnPaint",
                                  "OnPositionEstimated",
                                  "OnBeforeMapChange",
                                  "OnArrivedToPOI"})
    Result.push_back(EventProperty(Event, P));
  if (P) return Result;
  Result.push_back(ReadOnlyProperty<&T::GetRawMap>("RawXMLMap", false));
  Result.push_back(ReadOnlyProperty<&T::GetMotionAverage>("MotionAverage", false));
  Result.push_back(ReadOnlyProperty<&T::GetLastRawPosition>("LastRawPosition", false));
  Result.push_back(ReadOnlyProperty<&T::GetLastPathPosition>("LastPathPosition", false));
  Result.push_back(
      Property<&T::GetZoneEnteringError, &T::SetZoneEnteringError>("ZoneEnteringError", false));
  return Result;
}

const TClassInfo& TCustomBeaconMapFencing::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.TCustomBeaconMapFencing",
      .Base = &TComponent::ClassInfo(),
      .CreateComponent = [](TComponent* AOwner) -> std::unique_ptr<TComponent> {
        return std::make_unique<TCustomBeaconMapFencing>(AOwner);
      },
      .Properties = PropertyTable(false)};
  return Info;
}

const TClassInfo& TBeaconMapFencing::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.TBeaconMapFencing",
      .Base = &TCustomBeaconMapFencing::ClassInfo(),
      .CreateComponent = [](TComponent* AOwner) -> std::unique_ptr<TComponent> {
        return std::make_unique<TBeaconMapFencing>(AOwner);
      },
      .Properties = PropertyTable(true)};
  return Info;
}

// ---------------------------------------------------------------- creation and destruction

namespace {

std::unique_ptr<TBeaconFencingRuntimeMap> MakeRuntimeMap() {
  if (!TBeaconFencingRuntimeMap::FRuntimeMapClass)
    RaiseComponentError(Messages::SNoRuntimeMapClass);
  return TBeaconFencingRuntimeMap::FRuntimeMapClass.Create();
}

}  // namespace

TCustomBeaconMapFencing::TCustomBeaconMapFencing(TComponent* AOwner)
    : TComponent(AOwner),
      FParticleFilterOptions(std::make_unique<TParticleFilterOptions>()),
      FBeaconManagerOptions(std::make_unique<TBeaconManagerOptions>()),
      FFencingOptions(std::make_unique<TFencingOptions>()),
      FRuntimeMap(MakeRuntimeMap()),
      FLoaded(std::make_shared<TTrackedProject>(TFencingProject(), std::string())),
      FSwitch({.Begin = [this] { BeginProcess(); },
               .AskToEnd = [this] { AskToEnd(); },
               .WaitForEnd = [this] { WaitForEnd(); },
               .StartFailed = [this] { FEnabled.store(false); },
               .IsInsideThread = [this] { return FOwnThreads.IsActing(); }}) {
  using T = TCustomBeaconMapFencing;
  FParticleFilterOptions->SetOnChange(Bind<&T::ParticleFilterOptionsChanged>(this));
  FFencingOptions->SetOnChange(Bind<&T::FencingOptionsChanged>(this));
  TakeFilterOptions();
  FencingOptionsChanged(nullptr);
  FRuntimeMap->SetMapOptions(GetMapOptions());
}

TCustomBeaconMapFencing::~TCustomBeaconMapFencing() {
  if (FSwitch.IsBusy())
    FatalError(
        "a map component was destroyed inside one of its own event handlers; "
        "destroy it after the handler has returned");
  FEnabled.store(false);
  FSwitch.Shut();
  SetPaintControl(nullptr);
  FBeaconManager.reset();
  std::exchange(FLoaded->Calculators, {}).clear();
  FRuntimeMap.reset();
}

// ---------------------------------------------------------------- loading and design

bool TCustomBeaconMapFencing::IsDesigning() const noexcept {
  return GetComponentState().Contains(TComponentStateFlag::Designing);
}

bool TCustomBeaconMapFencing::MayAct() const noexcept {
  return !IsDesigning() && !GetComponentState().Contains(TComponentStateFlag::Loading);
}

void TCustomBeaconMapFencing::Loaded() {
  TComponent::Loaded();
  if (IsDesigning()) return;
  FRuntimeMap->SetFencingOptions(FFencingOptions.get());
  FRuntimeMap->SetMapOptions(GetMapOptions());
  PutPaintOn();
  try {
    if (!FXMLMap.empty()) HandOver(FXMLMap);
  } catch (...) {
    FEnabled.store(false);
    StopProcess();
    throw;
  }
  if (GetEnabled())
    StartProcess();
  else
    StopProcess();
}

void TCustomBeaconMapFencing::Notification(TComponent* AComponent, TOperation AOperation) {
  TComponent::Notification(AComponent, AOperation);
  if (AOperation != TOperation::Remove || !AComponent || AComponent != FControl.load()) return;
  FControl.store(nullptr);
  if (FRuntimeMap) FRuntimeMap->SetControl(nullptr);
}

// ---------------------------------------------------------------- properties

void TCustomBeaconMapFencing::SetEnabled(bool AValue) {
  if (!IsMainThread()) return TThread::Synchronize([&] { SetEnabled(AValue); });
  if (FEnabled.exchange(AValue) == AValue || !MayAct()) return;
  if (AValue)
    StartProcess();
  else
    StopProcess();
}

void TCustomBeaconMapFencing::SetParticleFilterOptions(TParticleFilterOptions* AValue) {
  if (AValue != FParticleFilterOptions.get()) FParticleFilterOptions->Assign(AValue);
}

void TCustomBeaconMapFencing::SetBeaconManagerOptions(TBeaconManagerOptions* AValue) {
  if (AValue != FBeaconManagerOptions.get()) FBeaconManagerOptions->Assign(AValue);
}

void TCustomBeaconMapFencing::SetMapOptions(TFencingMapOptions AValue) {
  if (FMapOptions.exchange(AValue) == AValue || !MayAct()) return;
  FRuntimeMap->SetMapOptions(AValue);
}

void TCustomBeaconMapFencing::SetFencingOptions(TFencingOptions* AValue) {
  if (AValue != FFencingOptions.get()) FFencingOptions->Assign(AValue);
  if (MayAct()) FRuntimeMap->SetFencingOptions(FFencingOptions.get());
}

void TCustomBeaconMapFencing::SetZoneEnteringError(std::int32_t AValue) {
  if (AValue == FZoneEnteringError) return;
  if (AValue < -1 || AValue > 100) RaiseComponentError(Messages::SZoneEnteringError);
  FZoneEnteringError = AValue;
}

TBeaconList TCustomBeaconMapFencing::GetDetectedBeacons() const {
  const std::lock_guard Guard(FStateLock);
  return FCurrentBeaconList;
}

TCalcPositionEvent TCustomBeaconMapFencing::GetOnCalcPosition() const {
  const std::lock_guard Guard(FStateLock);
  return FOnCalcPosition;
}

void TCustomBeaconMapFencing::SetOnCalcPosition(TCalcPositionEvent AValue) {
  const std::lock_guard Guard(FStateLock);
  std::swap(FOnCalcPosition, AValue);
}

void TCustomBeaconMapFencing::FencingOptionsChanged(TObject*) {
  FZoneHighlightMetod.store(FFencingOptions->GetZoneHighlightMetod());
  FRuntimeMap->SetFencingOptions(FFencingOptions.get());
}

void TCustomBeaconMapFencing::ParticleFilterOptionsChanged(TObject*) {
  const TLoadedRef Loaded = GetLoaded();
  if (!Loaded->Calculators.empty()) FParticleFilterOptions->SetSPC(FBeaconManagerOptions->GetSPC());
  TakeFilterOptions();
  for (const TMapCalculator& Entry : Loaded->Calculators)
    Entry.Calculator->ApplyOptions(*FParticleFilterOptions);
}

/// Keeps a copy for the threads that read the options while the application changes them.
void TCustomBeaconMapFencing::TakeFilterOptions() {
  auto Copy = std::make_shared<TParticleFilterOptions>();
  Copy->Assign(FParticleFilterOptions.get());
  Copy->SetOwnsCalcDistance(FParticleFilterOptions->GetOwnsCalcDistance());
  Copy->SetMotionThreshold(FParticleFilterOptions->GetMotionThreshold());
  Copy->SetCalibrationAverage(FParticleFilterOptions->GetCalibrationAverage());
  Copy->SetAutomaticCalibration(FParticleFilterOptions->GetAutomaticCalibration());
  Copy->SetSPC(FParticleFilterOptions->GetSPC());
  const std::lock_guard Guard(FStateLock);
  FFilterOptions = std::move(Copy);
}

// ---------------------------------------------------------------- the paint control

void TCustomBeaconMapFencing::SetPaintControl(TControl* AValue) {
  TControl* const Old = FControl.load();
  if (AValue == Old) return;
  if (Old) {
    TakePaintOff();
    Old->RemoveFreeNotification(this);
  }
  FControl.store(AValue);
  if (AValue) AValue->FreeNotification(this);
  FRuntimeMap->SetControl(AValue);
  if (MayAct()) PutPaintOn();
}

void TCustomBeaconMapFencing::PutPaintOn() {
  TControl* const Control = GetPaintControl();
  if (!Control) return;
  Control->SetOnPaint(Bind<&TCustomBeaconMapFencing::ControlPaint>(this));
  Control->Repaint();
}

void TCustomBeaconMapFencing::TakePaintOff() {
  TControl& Control = *GetPaintControl();
  const TPaintEvent Own = Bind<&TCustomBeaconMapFencing::ControlPaint>(this);
  if (Control.GetOnPaint() == Own) Control.SetOnPaint({});
}

void TCustomBeaconMapFencing::ControlPaint(TObject* ASender,
                                           TDrawing* ACanvas,
                                           const TRectF& ARect) {
  FRuntimeMap->ControlPaint(ASender, ACanvas, ARect);
  const TPaintEvent Handler = FOnPaint;  // it may be replaced while it runs
  Handler(ASender, ACanvas, ARect);
}

// ---------------------------------------------------------------- start and stop

void TCustomBeaconMapFencing::StartProcess() {
  FSwitch.Start();
}

void TCustomBeaconMapFencing::StopProcess() {
  FSwitch.Stop();
}

void TCustomBeaconMapFencing::BeginProcess() {
  if (FXMLMap.empty() && FRuntimeMap->GetProjectInformation().Maps.IsEmpty())
    RaiseComponentError(Messages::SNoFencingMap);
  TBluetoothLEManager::GetCurrentManager().GetIsSupported();
  HandOver(FXMLMap);
  FreeRetired();
  if (GetLoaded()->Project.Maps.IsEmpty()) RaiseComponentError(Messages::SNoFencingMap);
  MakeCalculators();
  ConfigureBeaconManager();
  if (FSource) FBeaconManager->SetSource(FSource);
  RegisterBeaconRegions();
  FBeaconManager->StartScan();
  StartTimer();
}

void TCustomBeaconMapFencing::StartTimer() {
  FFencingTimer = std::make_unique<TBeaconFencingTimer>();
  FFencingTimer->SetOnIntervalPassed(Bind<&TCustomBeaconMapFencing::Tick>(this));
  FFencingTimer->SetUpdateInterval(FParticleFilterOptions->GetUpdateInterval());
  FFencingTimer->Start();
}

void TCustomBeaconMapFencing::AskToEnd() {
  if (FFencingTimer) {
    FFencingTimer->SetOnIntervalPassed({});
    FFencingTimer->TerminateSoon();
  }
  DisconnectBeaconManager();
  if (FBeaconManager) FBeaconManager->StopScanLater();
  UnregisterBeaconRegions();
}

void TCustomBeaconMapFencing::WaitForEnd() {
  if (const auto Timer = std::move(FFencingTimer)) Timer->SetOnIntervalPassed({});
  DisconnectBeaconManager();
  if (FBeaconManager) FBeaconManager->StopScan();
  UnregisterBeaconRegions();
  const TLoadedRef Loaded = GetLoaded();
  Loaded->Disconnect();
  Loaded->ClearShownRoute();
  DisconnectRetired();
  FreeRetired();
}

/// Waits for estimates that run; a hand-off that is served meanwhile may retire another project.
void TCustomBeaconMapFencing::DisconnectRetired() {
  const std::vector<TLoadedRef> Retired = FRetired;
  for (const TLoadedRef& Old : Retired) Old->Disconnect();
}

void TCustomBeaconMapFencing::CreateParticlesFilter() {
  if (!FSwitch.IsBusy()) MakeCalculators();
}

void TCustomBeaconMapFencing::MakeCalculators() {
  constexpr std::size_t MostMaps = 4096;  // each has its particles
  const TPositionCalculatorClass& Class = TPositionCalculator::FPositionCalculatorClass;
  if (!Class) RaiseComponentError(Messages::SNoCalculatorClass);
  const TLoadedRef Loaded = GetLoaded();
  if (!Loaded->Calculators.empty()) return;
  const TFencingProject& Project = Loaded->Project;
  if (Project.Maps.GetLength() > MostMaps)
    RaiseComponentError(fmt::format(Messages::STooManyMaps, Project.Maps.GetLength(), MostMaps));
  FParticleFilterOptions->SetSPC(FBeaconManagerOptions->GetSPC());
  TakeFilterOptions();
  std::vector<TMapCalculator> Calculators(Project.Maps.GetLength());
  for (std::size_t I = 0; I < Calculators.size(); ++I) {
    const auto Index = static_cast<std::int32_t>(I);
    TMapCalculator& Entry = Calculators[I];
    Entry.Receiver = std::make_unique<TEstimateReceiver>(*this, *Loaded, Index);
    Entry.Segments = Project.GetPathSegmentsForMap(Index);
    Entry.Calculator =
        Class.Create(*FParticleFilterOptions, Project.Maps[I].Map->GetGlobalRect(), Entry.Segments);
    Entry.Calculator->SetOnEstimatingPosition(
        Bind<&TEstimateReceiver::Estimated>(Entry.Receiver.get()));
  }
  Loaded->Calculators = std::move(Calculators);
}

// ---------------------------------------------------------------- the beacon service

void TCustomBeaconMapFencing::ConfigureBeaconManager() {
  const TBeaconManagerOptions& Options = *FBeaconManagerOptions;
  const bool HasAnotherMode = FBeaconManager && FBeaconManager->GetScanMode() != Options.GetMode();
  if (!FBeaconManager || (HasAnotherMode && !FBeaconManager->IsScanning()))
    FBeaconManager = TBeaconManager::GetBeaconManager(Options.GetMode());
  TBeaconManager& Manager = *FBeaconManager;

  using T = TCustomBeaconMapFencing;
  Manager.SetOnBeaconEnter(Bind<&T::BeaconEnterEvent>(this));
  Manager.SetOnBeaconExit(Bind<&T::BeaconExitEvent>(this));
  Manager.SetOnBeaconProximity(Bind<&T::BeaconProximityChangeEvent>(this));
  Manager.SetOnEddystoneURL(Bind<&T::BeaconEddystoneURLEvent>(this));
  Manager.SetOnEddystoneTLM(Bind<&T::BeaconEddystoneTLMEvent>(this));
  Manager.SetOnScanError(Bind<&T::ScanFailed>(this));
  Manager.SetOnCalcDistance(FParticleFilterOptions->GetOwnsCalcDistance()
                                ? Bind<&T::BeaconCalcDistancesEvent>(this)
                                : TCalcDistanceEvent());

  Manager.SetScanningTime(Options.GetScanningTime());
  Manager.SetScanningSleepingTime(Options.GetScanningSleepingTime());
  Manager.SetSPC(Options.GetSPC());
  Manager.SetCalcMode(Options.GetCalcMode());
  Manager.SetBeaconDeathTime(Options.GetBeaconDeathTime());
}

void TCustomBeaconMapFencing::DisconnectBeaconManager() {
  if (!FBeaconManager) return;
  FBeaconManager->SetOnBeaconEnter({});
  FBeaconManager->SetOnBeaconExit({});
  FBeaconManager->SetOnBeaconProximity({});
  FBeaconManager->SetOnEddystoneURL({});
  FBeaconManager->SetOnEddystoneTLM({});
  FBeaconManager->SetOnCalcDistance({});
  FBeaconManager->SetOnScanError({});
}

void TCustomBeaconMapFencing::ScanFailed(TObject* ASender, const std::string& AMessage) {
  const TOwnThreads::TCall Call(FOwnThreads, FSwitch);
  HandleApplicationException(ASender, EBeaconSourceError(AMessage));
}

void TCustomBeaconMapFencing::RegisterBeaconRegions() {
  UnregisterBeaconRegions();
  if (!FBeaconManager) return;
  const TArray<TBeaconsRegion> Regions = GetLoaded()->Project.RegionsToMonitorize;
  TKindofBeacons Kinds = FBeaconManager->GetKindofBeacons();
  for (const TBeaconsRegion& Region : Regions) Kinds.Include(Region.KindofBeacon);
  FBeaconManager->SetKindofBeacons(Kinds);
  for (const TBeaconsRegion& Region : Regions) {
    FBeaconManager->RegisterBeacons(Region);
    FRegisteredRegions.push_back(Region);
  }
}

void TCustomBeaconMapFencing::UnregisterBeaconRegions() {
  for (const TBeaconsRegion& Region : FRegisteredRegions) FBeaconManager->UnRegisterBeacons(Region);
  FRegisteredRegions.clear();
}

TScanStatistics TCustomBeaconMapFencing::GetScanStatistics() const {
  return FBeaconManager ? FBeaconManager->GetStatistics() : TScanStatistics{};
}

}  // namespace System::Beacon::Fencing
