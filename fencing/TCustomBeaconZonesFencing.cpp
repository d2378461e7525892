// The component's properties, start and stop. Its events are in zone_events.cpp.
#include <utility>

#include "fencing/System.Beacon.Fencing.h"
#include "fencing/messages.h"
#include "platform/errors.h"

namespace System::Beacon::Fencing {
namespace {

constexpr const char* NoManufacturer = "-1";

}  // namespace

// ---------------------------------------------------------------- class tables

std::vector<TPropertyInfo> TCustomBeaconZonesFencing::PropertyTable(bool AIsPublished) {
  using T = TCustomBeaconZonesFencing;
  const bool P = AIsPublished;
  return {
      Property<&T::GetEnabled, &T::SetEnabled>("Enabled", P),
      Property<&T::GetZones, &T::SetZones>("Zones", P),
      Property<&T::GetBeaconManagerOptions, &T::SetBeaconManagerOptions>("BeaconManagerOptions", P),
      Property<&T::GetBaseBeaconGUID, &T::SetBaseBeaconGUID>("BaseBeaconGUID", P),
      Property<&T::GetBaseManufacturerID, &T::SetBaseManufacturerID>("BaseManufacturerID", P),
      Property<&T::GetBaseEddyNamespace, &T::SetBaseEddyNamespace>("BaseEddyNamespace", P),
      EventProperty("OnBeaconEnter", P),
      EventProperty("OnBeaconExit", P),
      EventProperty("OnBeaconProximity", P),
      EventProperty("OnBeaconEddyURL", P),
      EventProperty("OnBeaconEddyTLM", P),
      EventProperty("OnZoneBeaconProximity", P),
      EventProperty("OnZoneBeaconEnter", P),
      EventProperty("OnZoneBeaconExit", P),
      EventProperty("OnZoneEnter", P),
      EventProperty("OnZoneExit", P)};
}

const TClassInfo& TCustomBeaconZonesFencing::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.TCustomBeaconZonesFencing",
      .Base = &TComponent::ClassInfo(),
      .CreateComponent = [](TComponent* AOwner) -> std::unique_ptr<TComponent> {
        return std::make_unique<TCustomBeaconZonesFencing>(AOwner);
      },
      .Properties = PropertyTable(false)};
  return Info;
}

const TClassInfo& TBeaconZonesFencing::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.TBeaconZonesFencing",
      .Base = &TCustomBeaconZonesFencing::ClassInfo(),
      .CreateComponent = [](TComponent* AOwner) -> std::unique_ptr<TComponent> {
        return std::make_unique<TBeaconZonesFencing>(AOwner);
      },
      .Properties = PropertyTable(true)};
  return Info;
}

// ---------------------------------------------------------------- life

TCustomBeaconZonesFencing::TCustomBeaconZonesFencing(TComponent* AOwner)
    : TComponent(AOwner),
      FBeaconManagerOptions(std::make_unique<TBeaconManagerOptions>()),
      FZones(std::make_unique<TBeaconZones>(this)),
      FManufacturerID(NoManufacturer),
      FBaseEddyNamespace(TEddystoneUID().GetNamespace()),
      FSwitch({.Begin = [this] { BeginScanning(); },
               .AskToEnd = [this] { AskToEnd(); },
               .WaitForEnd = [this] { WaitForEnd(); },
               .StartFailed = [this] { FEnabled.store(false); },
               .IsInsideThread = [this] { return FOwnThreads.IsActing(); }}) {
  TBluetoothLEManager::GetCurrentManager().GetIsSupported();
  FZones->SetBaseManufacturerID(NoManufacturer);
}

TCustomBeaconZonesFencing::~TCustomBeaconZonesFencing() {
  if (FSwitch.IsBusy())
    FatalError(
        "a zone component was destroyed inside one of its own event handlers; "
        "destroy it after the handler has returned");
  FEnabled.store(false);
  FSwitch.Shut();
}

void TCustomBeaconZonesFencing::Loaded() {
  TComponent::Loaded();
  if (GetComponentState().Contains(TComponentStateFlag::Designing)) return;
  if (GetEnabled())
    StartFencingScanning();
  else if (FBeaconManager && FBeaconManager->IsScanning())
    StopScanning();
}

bool TCustomBeaconZonesFencing::MayAct() const noexcept {
  const TComponentState State = GetComponentState();
  return !State.Contains(TComponentStateFlag::Designing) &&
         !State.Contains(TComponentStateFlag::Loading);
}

// ---------------------------------------------------------------- properties

void TCustomBeaconZonesFencing::SetEnabled(bool AValue) {
  if (FEnabled.exchange(AValue) == AValue || !MayAct()) return;
  if (AValue)
    StartFencingScanning();
  else
    StopScanning();
}

void TCustomBeaconZonesFencing::SetZones(TBeaconZones* AValue) {
  if (AValue != FZones.get()) FZones->Assign(AValue);
}

void TCustomBeaconZonesFencing::SetBeaconManagerOptions(TBeaconManagerOptions* AValue) {
  if (AValue != FBeaconManagerOptions.get()) FBeaconManagerOptions->Assign(AValue);
}

void TCustomBeaconZonesFencing::SetBaseBeaconGUID(const std::string& AValue) {
  if (AValue == GetBaseBeaconGUID()) return;
  FBaseGUID = StringToGUID(AValue);
  FZones->SetBaseGUID(AValue);
}

void TCustomBeaconZonesFencing::SetBaseManufacturerID(const std::string& AValue) {
  if (AValue == FManufacturerID) return;
  if (!IsManufacturerID(AValue)) RaiseComponentError(Messages::SManufacturerID);
  FManufacturerID = AValue;
  FZones->SetBaseManufacturerID(AValue);
}

void TCustomBeaconZonesFencing::SetBaseEddyNamespace(const std::string& AValue) {
  if (AValue == FBaseEddyNamespace) return;
  TEddystoneUID Scratch;
  if (!Scratch.SetNamespace(AValue)) RaiseComponentError(Messages::SEddyNamespace);
  FBaseEddyNamespace = AValue;
  FZones->SetBaseEddyNamespace(AValue);
}

TBeaconZoneItem* TCustomBeaconZonesFencing::GetCurrentZone() const {
  const TZoneLink Link = GetCurrentLink();
  return Link ? Link->Get() : nullptr;
}

TBeaconList TCustomBeaconZonesFencing::GetDetectedBeacons() const {
  const std::lock_guard Guard(FStateLock);
  return FCurrentBeaconList;
}

TRef<IBeacon> TCustomBeaconZonesFencing::GetNearestBeacon() const {
  return FindNearest().Beacon;
}

void TCustomBeaconZonesFencing::SetSource(TRef<IAdvertisementSource> ASource) {
  FSource = std::move(ASource);
}

TScanStatistics TCustomBeaconZonesFencing::GetScanStatistics() const {
  return FBeaconManager ? FBeaconManager->GetStatistics() : TScanStatistics{};
}

// ---------------------------------------------------------------- start and stop

void TCustomBeaconZonesFencing::StartFencingScanning() {
  FSwitch.Start();
}

void TCustomBeaconZonesFencing::StopScanning() {
  FSwitch.Stop();
}

void TCustomBeaconZonesFencing::BeginScanning() {
  CheckBeaconManager();
  if (FSource) FBeaconManager->SetSource(FSource);
  RegisterZones();
  FBeaconManager->StartScan();
}

void TCustomBeaconZonesFencing::AskToEnd() {
  DisconnectBeaconManagerEvents();
  if (FBeaconManager) FBeaconManager->StopScanLater();
  UnRegisterZones();
}

void TCustomBeaconZonesFencing::WaitForEnd() {
  DisconnectBeaconManagerEvents();
  if (FBeaconManager) FBeaconManager->StopScan();
  UnRegisterZones();
}

void TCustomBeaconZonesFencing::CheckBeaconManager() {
  const TBeaconManagerOptions& Options = *FBeaconManagerOptions;
  const bool HasAnotherMode = FBeaconManager && FBeaconManager->GetScanMode() != Options.GetMode();
  if (!FBeaconManager || (HasAnotherMode && !FBeaconManager->IsScanning()))
    FBeaconManager = TBeaconManager::GetBeaconManager(Options.GetMode());
  TBeaconManager& Manager = *FBeaconManager;

  using T = TCustomBeaconZonesFencing;
  Manager.SetOnBeaconEnter(Bind<&T::BeaconEnterEvent>(this));
  Manager.SetOnBeaconExit(Bind<&T::BeaconExitEvent>(this));
  Manager.SetOnBeaconProximity(Bind<&T::BeaconProximityChangeEvent>(this));
  Manager.SetOnEddystoneURL(Bind<&T::BeaconEddystoneURLEvent>(this));
  Manager.SetOnEddystoneTLM(Bind<&T::BeaconEddystoneTLMEvent>(this));
  Manager.SetOnSighting({});
  Manager.SetOnScanError(Bind<&T::ScanFailed>(this));

  Manager.SetBeaconDeathTime(Options.GetBeaconDeathTime());
  Manager.SetScanningTime(Options.GetScanningTime());
  Manager.SetScanningSleepingTime(Options.GetScanningSleepingTime());
  Manager.SetSPC(Options.GetSPC());
  Manager.SetCalcMode(Options.GetCalcMode());
  Manager.SetBeaconDeathTime(Options.GetBeaconDeathTime());
}

void TCustomBeaconZonesFencing::DisconnectBeaconManagerEvents() {
  if (!FBeaconManager) return;
  FBeaconManager->SetOnBeaconEnter({});
  FBeaconManager->SetOnBeaconExit({});
  FBeaconManager->SetOnBeaconProximity({});
  FBeaconManager->SetOnEddystoneURL({});
  FBeaconManager->SetOnEddystoneTLM({});
  FBeaconManager->SetOnSighting({});
  FBeaconManager->SetOnScanError({});
}

void TCustomBeaconZonesFencing::ScanFailed(TObject* ASender, const std::string& AMessage) {
  const TOwnThreads::TCall Call(FOwnThreads, FSwitch);
  HandleApplicationException(ASender, EBeaconSourceError(AMessage));
}

void TCustomBeaconZonesFencing::RegisterZones() {
  UnRegisterZones();
  if (!FBeaconManager) return;
  FLastRegisteredRegions = GetBeaconRegionsToMonitorize();
  for (const TBeaconsRegion& Region : FLastRegisteredRegions) {
    TKindofBeacons Kinds = FBeaconManager->GetKindofBeacons();
    Kinds.Include(Region.KindofBeacon);
    FBeaconManager->SetKindofBeacons(Kinds);
    FBeaconManager->RegisterBeacons(Region);
  }
}

void TCustomBeaconZonesFencing::UnRegisterZones() {
  for (const TBeaconsRegion& Region : FLastRegisteredRegions)
    FBeaconManager->UnRegisterBeacons(Region);
  FLastRegisteredRegions.clear();
}

std::vector<TBeaconsRegion> TCustomBeaconZonesFencing::GetBeaconRegionsToMonitorize() const {
  return RegionsOfZones(*FZones);
}

}  // namespace System::Beacon::Fencing
