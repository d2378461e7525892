#include <algorithm>
#include <utility>

#include "platform/beacons/System.Beacon.h"
#include "platform/beacons/bluez_source.h"
#include "platform/beacons/tracker.h"

namespace System::Beacon {

constinit TAdvertisementSourceFactory TBeaconManager::FSourceFactory = [] {
  return NewBluezSource();
};

struct TBeaconManager::TSettings {
  int BeaconDeathTime = 20;        // s
  int ScanningTime = 500;          // ms
  int ScanningSleepingTime = 250;  // ms
  bool GatesRecordings = false;
  float SPC = 0.5F;
  TBeaconCalcMode CalcMode = TBeaconCalcMode::Stabilized;
  int DistanceLifetime = 5000;  // ms
  TKindofBeacons KindofBeacons;
  std::vector<TBeaconsRegion> Regions;

  TTrackerSettings ForTracker() const {
    return {
        BeaconDeathTime * TicksPerSecond, DistanceLifetime * TicksPerMillisecond, SPC, CalcMode};
  }
};

struct TBeaconManager::THandlers {
  TBeaconEnterExitEvent BeaconEnter, BeaconExit;
  TBeaconProximityEvent BeaconProximity;
  TEddystoneURLEvent EddystoneURL;
  TEddystoneTLMEvent EddystoneTLM;
  TSightingEvent Sighting;
  TScanErrorEvent ScanError;
  TCalcDistanceEvent CalcDistance;
};

class TBeaconManager::TReportingThread final : public TThread {
 public:
  explicit TReportingThread(TBeaconManager& AManager)
      : TThread("beacon service"), FManager(AManager) {}
  ~TReportingThread() override { TerminateAndWait(); }

 protected:
  void Execute() override { FManager.Report(*this); }

 private:
  TBeaconManager& FManager;
};

/// Passes the tracker's reports on to the handlers, as long as scanning goes on.
class TBeaconManager::TReporter final : public ITrackerListener {
 public:
  explicit TReporter(TBeaconManager& AManager) : FManager(AManager) {}

  void BeaconEntered(const TRef<IBeacon>& ABeacon, const TBeaconList& AList) override {
    Call(&THandlers::BeaconEnter, ABeacon, AList);
  }
  void BeaconExited(const TRef<IBeacon>& ABeacon, const TBeaconList& AList) override {
    Call(&THandlers::BeaconExit, ABeacon, AList);
  }
  void ProximityChanged(const TRef<IBeacon>& ABeacon, TBeaconProximity AProximity) override {
    Call(&THandlers::BeaconProximity, ABeacon, AProximity);
  }
  void EddystoneURLSeen(const TRef<IBeacon>& ABeacon, const TEddystoneURL& AURL) override {
    Call(&THandlers::EddystoneURL, ABeacon, AURL);
  }
  void EddystoneTLMSeen(const TRef<IBeacon>& ABeacon, const TEddystoneTLM& ATLM) override {
    Call(&THandlers::EddystoneTLM, ABeacon, ATLM);
  }
  bool WantsSightings() const override { return Wants.Sightings.load(std::memory_order_relaxed); }
  bool WantsDistances() const override { return Wants.Distances.load(std::memory_order_relaxed); }
  void Sighted(const TRef<IBeacon>& ABeacon) override { Call(&THandlers::Sighting, ABeacon); }
  void CalcDistance(const TRef<IBeacon>& ABeacon,
                    int ATxPower,
                    int ARssi,
                    double& ADistance) override {
    Call(&THandlers::CalcDistance, ABeacon, ATxPower, ARssi, ADistance);
  }

  /// False when there is no handler.
  bool ScanFailed(const std::string& AMessage) { return Call(&THandlers::ScanError, AMessage); }

  struct {
    std::atomic<bool> Sightings{false}, Distances{false};
  } Wants;

 private:
  template <class TSlot, class... TArguments>
  bool Call(TSlot THandlers::*ASlot, TArguments&&... AArguments) {
    TSlot Handler;
    {
      const std::lock_guard Guard(FManager.FLock);
      Handler = (*FManager.FHandlers).*ASlot;
    }
    if (Handler && !FManager.FThread->GetTerminated())
      Handler(&FManager, std::forward<TArguments>(AArguments)...);
    return static_cast<bool>(Handler);
  }

  TBeaconManager& FManager;
};

std::unique_ptr<TBeaconManager> TBeaconManager::GetBeaconManager(TBeaconScanMode AScanMode) {
  auto Result = std::make_unique<TBeaconManager>(AScanMode);
  if (FSourceFactory) Result->SetSource(FSourceFactory());
  return Result;
}

TBeaconManager::TBeaconManager(TBeaconScanMode AScanMode)
    : FScanMode(AScanMode),
      FSettings(std::make_unique<TSettings>()),
      FHandlers(std::make_unique<THandlers>()),
      FReporter(std::make_unique<TReporter>(*this)),
      FTracker(std::make_unique<TBeaconTracker>(*FReporter)) {}

TBeaconManager::~TBeaconManager() {
  StopScan();
}

void TBeaconManager::SetSource(TRef<IAdvertisementSource> ASource) {
  StopScan();
  FSource = std::move(ASource);
}

// ---------------------------------------------------------------- scanning

void TBeaconManager::StartScan() {
  if (IsScanning()) return;
  StopScan();
  if (!FSource)
    throw EBeaconSourceError("there is nothing to scan: give the beacon manager a source");
  FSource->Open();
  FHasFailed.store(false);
  FStopped.ResetEvent();
  FScanStart = Ticks();
  FStatisticsAtStart = FTracker->GetStatistics();
  FThread = std::make_shared<TReportingThread>(*this);
  try {
    FThread->Start();
  } catch (...) {
    StopScan();
    throw;
  }
}

void TBeaconManager::StopScan() {
  if (!FThread) return;
  StopScanLater();
  if (FThread->IsCurrent()) return;
  const std::shared_ptr<TReportingThread> Thread = FThread;
  Thread->WaitFor();
  if (FThread != Thread) return;  // stopped by a hand-off that was served meanwhile
  FThread.reset();
  FSource->Close();
  FTracker->Clear();
}

void TBeaconManager::StopScanLater() noexcept {
  if (!FThread) return;
  FThread->Terminate();
  FStopped.SetEvent();
  FSource->Interrupt();
}

bool TBeaconManager::IsScanning() const noexcept {
  return FThread && !FHasFailed.load() && !FThread->GetTerminated() && !FThread->GetFinished();
}

void TBeaconManager::Report(TThread& AThread) {
  try {
    ReportSource(AThread);
  } catch (...) {
    FHasFailed.store(true);
    TellFailure(AThread);
    LoseBeacons(AThread);
  }
}

void TBeaconManager::ReportSource(TThread& AThread) {
  std::uint64_t SeenVersion = ~std::uint64_t{0};
  TSettings Settings;
  TAdvertisement Advertisement;
  while (!AThread.GetTerminated()) {
    const TSourceResult Result = FSource->Next(Advertisement, FTracker->GetNextDeadline());
    UpdateSettings(SeenVersion, Settings);
    const TTicks Now = Ticks();
    FTracker->Expire(Now);
    if (Result == TSourceResult::Finished) return;
    if (Result == TSourceResult::Advertisement && IsOpenWindow(Now, Settings))
      FTracker->Process(Advertisement, Now);
  }
}

void TBeaconManager::TellFailure(TThread& AThread) {
  if (AThread.GetTerminated()) return;
  WithCurrentException([&](const std::exception& AError) {
    if (!FReporter->ScanFailed(AError.what())) HandleApplicationException(&AThread, AError);
  });
}

/// Whoever works with the beacons' last distances is told that they are gone.
void TBeaconManager::LoseBeacons(TThread& AThread) {
  try {
    while (!AThread.GetTerminated() && FTracker->GetPresentCount() > 0) {
      FStopped.WaitUntil(FTracker->GetNextDeadline());
      FTracker->Expire(Ticks());
    }
  } catch (...) {
    TellFailure(AThread);
  }
}

void TBeaconManager::UpdateSettings(std::uint64_t& ASeenVersion, TSettings& ASettings) {
  const std::uint64_t Version = FSettingsVersion.load(std::memory_order_acquire);
  if (Version == ASeenVersion) return;
  ASeenVersion = Version;
  {
    const std::lock_guard Guard(FLock);
    ASettings = *FSettings;
  }
  FTracker->Configure(ASettings.ForTracker());
  FTracker->SetRegions(ASettings.Regions, ASettings.KindofBeacons);
}

bool TBeaconManager::IsOpenWindow(TTicks ATicks, const TSettings& ASettings) const {
  if (!FSource->IsLive() && !ASettings.GatesRecordings) return true;
  const TTicks Open = ASettings.ScanningTime * TicksPerMillisecond;
  const TTicks Closed = ASettings.ScanningSleepingTime * TicksPerMillisecond;
  return Open + Closed <= 0 || (ATicks - FScanStart) % (Open + Closed) < Open;
}

TScanStatistics TBeaconManager::GetStatistics() const {
  const TScanStatistics Total = FTracker->GetStatistics();
  return {Total.Advertisements - FStatisticsAtStart.Advertisements,
          Total.Frames - FStatisticsAtStart.Frames,
          Total.Sightings - FStatisticsAtStart.Sightings,
          Total.Malformed - FStatisticsAtStart.Malformed};
}

// ---------------------------------------------------------------- settings

template <class T>
T TBeaconManager::ReadSetting(T TSettings::*AField) const {
  const std::lock_guard Guard(FLock);
  return (*FSettings).*AField;
}

template <class T>
void TBeaconManager::WriteSetting(T TSettings::*AField, T AValue) {
  const std::lock_guard Guard(FLock);
  (*FSettings).*AField = AValue;
  FSettingsVersion.fetch_add(1, std::memory_order_release);
}

int TBeaconManager::GetBeaconDeathTime() const {
  return ReadSetting(&TSettings::BeaconDeathTime);
}
void TBeaconManager::SetBeaconDeathTime(int AValue) {
  WriteSetting(&TSettings::BeaconDeathTime, AValue);
}
int TBeaconManager::GetScanningTime() const {
  return ReadSetting(&TSettings::ScanningTime);
}
void TBeaconManager::SetScanningTime(int AValue) {
  WriteSetting(&TSettings::ScanningTime, AValue);
}
int TBeaconManager::GetScanningSleepingTime() const {
  return ReadSetting(&TSettings::ScanningSleepingTime);
}
void TBeaconManager::SetScanningSleepingTime(int AValue) {
  WriteSetting(&TSettings::ScanningSleepingTime, AValue);
}
bool TBeaconManager::GetGatesRecordings() const {
  return ReadSetting(&TSettings::GatesRecordings);
}
void TBeaconManager::SetGatesRecordings(bool AValue) {
  WriteSetting(&TSettings::GatesRecordings, AValue);
}
float TBeaconManager::GetSPC() const {
  return ReadSetting(&TSettings::SPC);
}
void TBeaconManager::SetSPC(float AValue) {
  WriteSetting(&TSettings::SPC, AValue);
}
TBeaconCalcMode TBeaconManager::GetCalcMode() const {
  return ReadSetting(&TSettings::CalcMode);
}
void TBeaconManager::SetCalcMode(TBeaconCalcMode AValue) {
  WriteSetting(&TSettings::CalcMode, AValue);
}
int TBeaconManager::GetDistanceLifetime() const {
  return ReadSetting(&TSettings::DistanceLifetime);
}
void TBeaconManager::SetDistanceLifetime(int AValue) {
  WriteSetting(&TSettings::DistanceLifetime, AValue);
}
TKindofBeacons TBeaconManager::GetKindofBeacons() const {
  return ReadSetting(&TSettings::KindofBeacons);
}
void TBeaconManager::SetKindofBeacons(TKindofBeacons AValue) {
  WriteSetting(&TSettings::KindofBeacons, AValue);
}

void TBeaconManager::RegisterBeacons(const TBeaconsRegion& ARegion) {
  const std::lock_guard Guard(FLock);
  FSettings->Regions.push_back(ARegion);
  FSettingsVersion.fetch_add(1, std::memory_order_release);
}

void TBeaconManager::UnRegisterBeacons(const TBeaconsRegion& ARegion) {
  const std::lock_guard Guard(FLock);
  auto& Regions = FSettings->Regions;
  const auto Found = std::find(Regions.begin(), Regions.end(), ARegion);
  if (Found == Regions.end()) return;
  Regions.erase(Found);
  FSettingsVersion.fetch_add(1, std::memory_order_release);
}

// ---------------------------------------------------------------- handlers

template <class T>
void TBeaconManager::WriteHandler(T THandlers::*AField, T AValue) {
  const std::lock_guard Guard(FLock);
  std::swap((*FHandlers).*AField, AValue);
  FReporter->Wants.Sightings.store(static_cast<bool>(FHandlers->Sighting));
  FReporter->Wants.Distances.store(static_cast<bool>(FHandlers->CalcDistance));
}

void TBeaconManager::SetOnBeaconEnter(TBeaconEnterExitEvent AValue) {
  WriteHandler(&THandlers::BeaconEnter, std::move(AValue));
}
void TBeaconManager::SetOnBeaconExit(TBeaconEnterExitEvent AValue) {
  WriteHandler(&THandlers::BeaconExit, std::move(AValue));
}
void TBeaconManager::SetOnBeaconProximity(TBeaconProximityEvent AValue) {
  WriteHandler(&THandlers::BeaconProximity, std::move(AValue));
}
void TBeaconManager::SetOnEddystoneURL(TEddystoneURLEvent AValue) {
  WriteHandler(&THandlers::EddystoneURL, std::move(AValue));
}
void TBeaconManager::SetOnEddystoneTLM(TEddystoneTLMEvent AValue) {
  WriteHandler(&THandlers::EddystoneTLM, std::move(AValue));
}
void TBeaconManager::SetOnSighting(TSightingEvent AValue) {
  WriteHandler(&THandlers::Sighting, std::move(AValue));
}
void TBeaconManager::SetOnScanError(TScanErrorEvent AValue) {
  WriteHandler(&THandlers::ScanError, std::move(AValue));
}
void TBeaconManager::SetOnCalcDistance(TCalcDistanceEvent AValue) {
  WriteHandler(&THandlers::CalcDistance, std::move(AValue));
}

}  // namespace System::Beacon
