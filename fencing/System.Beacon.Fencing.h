// The two components: the map component (map_fencing.h), and the zone component with the
// collections that describe its zones (zone_collections.h).
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "fencing/map_fencing.h"
#include "fencing/own_threads.h"
#include "fencing/run_switch.h"
#include "fencing/zone_collections.h"
#include "platform/beacons/System.Beacon.h"
#include "platform/beacons/identity.h"
#include "platform/components.h"
#include "platform/threads.h"

namespace System::Beacon::Fencing {

// ---------------------------------------------------------------- events

/// Used by `OnZoneEnter` and `OnZoneExit`.
using TZoneEnterEvent =
    TMethod<void(TObject* ASender, const TRef<IBeacon>& ABeacon, TBeaconZoneItem* AZoneBeacons)>;
using TBeaconZoneEnterExitEvent = TMethod<void(TObject* ASender,
                                               const TRef<IBeacon>& ABeacon,
                                               TBeaconZoneItem* AZone,
                                               TBeaconItem* ABeaconItem)>;
using TBeaconZoneProximityEvent = TMethod<void(TObject* ASender,
                                               const TRef<IBeacon>& ABeacon,
                                               TBeaconZoneItem* AZone,
                                               TBeaconItem* ABeaconItem,
                                               TBeaconProximity AProximity)>;
using TBeaconZoneEddystoneURLEvent = TMethod<void(TObject* ASender,
                                                  const TRef<IBeacon>& ABeacon,
                                                  TBeaconZoneItem* AZone,
                                                  TBeaconItem* ABeaconItem,
                                                  TEddystoneURL& AEddystoneURL)>;
using TBeaconZoneEddystoneTLMEvent = TMethod<void(TObject* ASender,
                                                  const TRef<IBeacon>& ABeacon,
                                                  TBeaconZoneItem* AZone,
                                                  TBeaconItem* ABeaconItem,
                                                  TEddystoneTLM& AEddystoneTLM)>;

// ---------------------------------------------------------------- TCustomBeaconZonesFencing

/// Tells in which zone the device is, from beacons alone. The application fills `Zones`, sets the
/// handlers it wants and switches `Enabled` on.
///
/// Properties and operations: on the main thread. Every handler is called on the main thread while
/// the reporting thread waits, in the order of what happened; see threads.h for how an application
/// without a message loop serves them. Changes of zones and options take effect at the next start;
/// zones and items may be deleted at any time: events that would name them are dropped.
///
/// Disabling inside one of its own handlers stops the component at once; enabling it again there
/// takes effect when the handler has returned, and an error of that start is then raised by
/// `ServeHandOffs`. Destroying it inside one of its own handlers ends the process with a message.
class TCustomBeaconZonesFencing : public TComponent {
 public:
  FENCING_CLASS_INFO()

  explicit TCustomBeaconZonesFencing(TComponent* AOwner = nullptr);
  ~TCustomBeaconZonesFencing() override;

  /// Starts and stops scanning; while the component is loading or designed it only stores. A start
  /// that fails leaves the component stopped and `Enabled` false, and raises.
  bool GetEnabled() const noexcept { return FEnabled.load(std::memory_order_acquire); }
  void SetEnabled(bool AValue);
  /// The component's own zones. Setting another collection copies its contents.
  TBeaconZones* GetZones() const noexcept { return FZones.get(); }
  void SetZones(TBeaconZones* AValue);
  /// The component's own options. Setting another object copies its values.
  TBeaconManagerOptions* GetBeaconManagerOptions() const noexcept {
    return FBeaconManagerOptions.get();
  }
  void SetBeaconManagerOptions(TBeaconManagerOptions* AValue);
  /// Base values for the beacons of all zones, as texts.
  std::string GetBaseBeaconGUID() const { return GUIDToString(FBaseGUID); }
  void SetBaseBeaconGUID(const std::string& AValue);
  const std::string& GetBaseManufacturerID() const noexcept { return FManufacturerID; }
  void SetBaseManufacturerID(const std::string& AValue);
  const std::string& GetBaseEddyNamespace() const noexcept { return FBaseEddyNamespace; }
  void SetBaseEddyNamespace(const std::string& AValue);

  // Every beacon that a region reports, in a zone or not.
  const TBeaconEnterExitEvent& GetOnBeaconEnter() const noexcept { return FOnBeaconEnter.Get(); }
  void SetOnBeaconEnter(TBeaconEnterExitEvent A) { FOnBeaconEnter.Set(std::move(A)); }
  const TBeaconEnterExitEvent& GetOnBeaconExit() const noexcept { return FOnBeaconExit.Get(); }
  void SetOnBeaconExit(TBeaconEnterExitEvent A) { FOnBeaconExit.Set(std::move(A)); }
  const TBeaconProximityEvent& GetOnBeaconProximity() const noexcept {
    return FOnBeaconProximity.Get();
  }
  void SetOnBeaconProximity(TBeaconProximityEvent A) { FOnBeaconProximity.Set(std::move(A)); }
  // Frames of beacons that belong to a zone.
  const TBeaconZoneEddystoneURLEvent& GetOnBeaconEddyURL() const noexcept {
    return FOnBeaconEddyURL.Get();
  }
  void SetOnBeaconEddyURL(TBeaconZoneEddystoneURLEvent A) { FOnBeaconEddyURL.Set(std::move(A)); }
  const TBeaconZoneEddystoneTLMEvent& GetOnBeaconEddyTLM() const noexcept {
    return FOnBeaconEddyTLM.Get();
  }
  void SetOnBeaconEddyTLM(TBeaconZoneEddystoneTLMEvent A) { FOnBeaconEddyTLM.Set(std::move(A)); }
  // Beacons that belong to a zone.
  const TBeaconZoneProximityEvent& GetOnZoneBeaconProximity() const noexcept {
    return FOnZoneBeaconProximity.Get();
  }
  void SetOnZoneBeaconProximity(TBeaconZoneProximityEvent A) {
    FOnZoneBeaconProximity.Set(std::move(A));
  }
  const TBeaconZoneEnterExitEvent& GetOnZoneBeaconEnter() const noexcept {
    return FOnZoneBeaconEnter.Get();
  }
  void SetOnZoneBeaconEnter(TBeaconZoneEnterExitEvent A) { FOnZoneBeaconEnter.Set(std::move(A)); }
  const TBeaconZoneEnterExitEvent& GetOnZoneBeaconExit() const noexcept {
    return FOnZoneBeaconExit.Get();
  }
  void SetOnZoneBeaconExit(TBeaconZoneEnterExitEvent A) { FOnZoneBeaconExit.Set(std::move(A)); }
  // The device entered or left a zone; it is in at most one at a time.
  const TZoneEnterEvent& GetOnZoneEnter() const noexcept { return FOnZoneEnter.Get(); }
  void SetOnZoneEnter(TZoneEnterEvent A) { FOnZoneEnter.Set(std::move(A)); }
  const TZoneEnterEvent& GetOnZoneExit() const noexcept { return FOnZoneExit.Get(); }
  void SetOnZoneExit(TZoneEnterEvent A) { FOnZoneExit.Set(std::move(A)); }

  /// The zone the device is in; nothing when it is in none or the zone was deleted.
  TBeaconZoneItem* GetCurrentZone() const;
  /// The beacons that are seen, as the service last reported them.
  TBeaconList GetDetectedBeacons() const;
  /// The detected beacon of any zone with the smallest known distance, or nothing.
  TRef<IBeacon> GetNearestBeacon() const;

  /// Where advertisements come from, in place of the platform's radio. Taken at the next start.
  /// Not published.
  void SetSource(TRef<IAdvertisementSource> ASource);
  /// What the service has done since the last start.
  TScanStatistics GetScanStatistics() const;

  /// (Re)starts scanning with the zones and options as they are now.
  void StartFencingScanning();
  /// Stops scanning; once it has returned no handler is entered any more.
  void StopScanning();
  /// Makes the beacon manager, or replaces one of another scan mode unless it is scanning, and
  /// sets it up.
  void CheckBeaconManager();
  void DisconnectBeaconManagerEvents();
  void RegisterZones();
  void UnRegisterZones();
  std::vector<TBeaconsRegion> GetBeaconRegionsToMonitorize() const;

  // What the component installs on the beacon manager; called on the reporting thread.
  void BeaconEnterEvent(TObject* ASender,
                        const TRef<IBeacon>& ABeacon,
                        const TBeaconList& ACurrentBeaconList);
  void BeaconExitEvent(TObject* ASender,
                       const TRef<IBeacon>& ABeacon,
                       const TBeaconList& ACurrentBeaconList);
  void BeaconProximityChangeEvent(TObject* ASender,
                                  const TRef<IBeacon>& ABeacon,
                                  TBeaconProximity AProximity);
  void BeaconEddystoneURLEvent(TObject* ASender,
                               const TRef<IBeacon>& ABeacon,
                               const TEddystoneURL& AEddystoneURL);
  void BeaconEddystoneTLMEvent(TObject* ASender,
                               const TRef<IBeacon>& ABeacon,
                               const TEddystoneTLM& AEddystoneTLM);

 protected:
  /// Starts scanning when the component was streamed in enabled; stops it when it was streamed in
  /// disabled while it was scanning.
  void Loaded() override;
  static std::vector<TPropertyInfo> PropertyTable(bool AIsPublished);

 private:
  using TZoneLink = TRef<TItemLink<TBeaconZoneItem>>;
  struct TNearest {
    TRef<IBeacon> Beacon;
    TZoneMatch Match;
  };

  bool MayAct() const noexcept;
  void BeginScanning();
  void AskToEnd();
  void WaitForEnd();

  template <class TSignature, class TCall>
  bool Tell(TEventSlot<TSignature>& ASlot, const TCall& ACall) {
    return Deliver(FSwitch.GetGate(), ASlot, ACall);
  }
  template <class TSignature, class... TArguments>
  bool DeliverItem(TEventSlot<TSignature>& ASlot,
                   const TRef<IBeacon>& ABeacon,
                   const TZoneMatch& AMatch,
                   TArguments&... AArguments);
  bool DeliverZone(TEventSlot<void(TObject*, const TRef<IBeacon>&, TBeaconZoneItem*)>& ASlot,
                   const TRef<IBeacon>& ABeacon,
                   const TZoneLink& AZone);

  TNearest FindNearest() const;
  void ComeInside(const TRef<IBeacon>& ABeacon, const TZoneMatch& AMatch, const TNearest& ANearest);
  void GoOutside(const TRef<IBeacon>& ABeacon, const TZoneMatch& AMatch, const TNearest& ANearest);
  bool IsHeldByAnother(const TRef<IBeacon>& ABeacon, const TZoneMatch& AMatch) const;
  bool LeaveCurrentZone(const TRef<IBeacon>& ABeacon);
  void EnterZone(const TRef<IBeacon>& ABeacon, const TZoneLink& AZone);
  TZoneLink GetCurrentLink() const;
  void SetCurrentLink(TZoneLink ALink);
  void SetCurrentBeaconList(const TBeaconList& AList);
  void ScanFailed(TObject* ASender, const std::string& AMessage);

  TEventSlot<void(TObject*, const TRef<IBeacon>&, TBeaconZoneItem*)> FOnZoneEnter;
  std::unique_ptr<TBeaconManager> FBeaconManager;
  TEventSlot<void(TObject*, const TRef<IBeacon>&, const TBeaconList&)> FOnBeaconEnter;
  TEventSlot<void(TObject*, const TRef<IBeacon>&, TBeaconProximity)> FOnBeaconProximity;
  TEventSlot<void(TObject*, const TRef<IBeacon>&, const TBeaconList&)> FOnBeaconExit;
  std::atomic<bool> FEnabled{false};
  std::unique_ptr<TBeaconManagerOptions> FBeaconManagerOptions;
  TEventSlot<void(TObject*, const TRef<IBeacon>&, TBeaconZoneItem*)> FOnZoneExit;
  std::unique_ptr<TBeaconZones> FZones;
  TGUID FBaseGUID;
  std::string FManufacturerID;
  std::string FBaseEddyNamespace;
  std::vector<TBeaconsRegion> FLastRegisteredRegions;
  TEventSlot<void(TObject*, const TRef<IBeacon>&, TBeaconZoneItem*, TBeaconItem*)>
      FOnZoneBeaconEnter, FOnZoneBeaconExit;
  TEventSlot<void(TObject*, const TRef<IBeacon>&, TBeaconZoneItem*, TBeaconItem*, TBeaconProximity)>
      FOnZoneBeaconProximity;
  TEventSlot<void(TObject*, const TRef<IBeacon>&, TBeaconZoneItem*, TBeaconItem*, TEddystoneURL&)>
      FOnBeaconEddyURL;
  TEventSlot<void(TObject*, const TRef<IBeacon>&, TBeaconZoneItem*, TBeaconItem*, TEddystoneTLM&)>
      FOnBeaconEddyTLM;

  TRef<IAdvertisementSource> FSource;
  TOwnThreads FOwnThreads;
  TRunSwitch FSwitch;

  mutable std::mutex FStateLock;  // guards FCurrentZone, FCurrentBeaconList
  TZoneLink FCurrentZone;
  TBeaconList FCurrentBeaconList;
};

/// The zone component with its properties published, for forms and component files.
class TBeaconZonesFencing : public TCustomBeaconZonesFencing {
 public:
  FENCING_CLASS_INFO()
  using TCustomBeaconZonesFencing::TCustomBeaconZonesFencing;
};

}  // namespace System::Beacon::Fencing
