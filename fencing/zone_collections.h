// The collections that describe the zones of the zone component. Applications include
// System.Beacon.Fencing.h.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fencing/zone_guard.h"
#include "platform/beacons/System.Beacon.h"
#include "platform/beacons/identity.h"
#include "platform/components.h"

namespace System::Beacon::Fencing {

class TBeaconInZoneList;
class TBeaconZoneItem;
class TBeaconZones;

// ---------------------------------------------------------------- TBeaconItem

/// The identity of one beacon of a zone: an iBeacon or AltBeacon by UUID, major and minor, or an
/// Eddystone beacon by namespace and instance. Changed on the main thread; may be looked up by
/// another meanwhile. Refused values raise `EComponentError` and change nothing.
class TBeaconItem : public TCollectionItem {
 public:
  FENCING_CLASS_INFO()

  /// Takes the base values of its list; one that a setter refuses makes the creation fail.
  explicit TBeaconItem(TCollection* ACollection);
  ~TBeaconItem() override;

  std::string GetDisplayName() const override;
  void SetDisplayName(const std::string& AValue) override;
  /// The braced text form. A malformed text raises `EConvertError`.
  std::string GetUUID() const;
  void SetUUID(const std::string& AValue);
  std::uint16_t GetMajor() const noexcept { return FMajor; }
  void SetMajor(std::uint16_t AValue);
  std::uint16_t GetMinor() const noexcept { return FMinor; }
  void SetMinor(std::uint16_t AValue);
  /// "-1" for none, or one to four hexadecimal digits, kept as given. Never notifies.
  const std::string& GetManufacturerID() const noexcept { return FManufacturerID; }
  void SetManufacturerID(const std::string& AValue);
  /// The manufacturer id as a number; -1 for none and for the empty text.
  int GetMID() const;
  /// 20 and 12 hexadecimal digits, read in either case, printed in upper case.
  std::string GetEddyNamespace() const { return FEddyUID.GetNamespace(); }
  void SetEddyNamespace(const std::string& AValue);
  std::string GetEddyInstance() const { return FEddyUID.GetInstance(); }
  void SetEddyInstance(const std::string& AValue);
  /// Never notifies. Decides which region is monitored, not which sightings match.
  TKindofBeacon GetKindofBeacon() const noexcept { return FKindofBeacon; }
  void SetKindofBeacon(TKindofBeacon AValue) noexcept { FKindofBeacon = AValue; }

  const TGUID& GetGUID() const noexcept { return FUUID; }
  void SetGUID(const TGUID& AValue);  // never notifies
  const TEddystoneUID& GetEddyUID() const noexcept { return FEddyUID; }
  void SetEddyUID(const TEddystoneUID& AValue);  // never notifies
  /// Free for the application; not owned.
  TObject* GetContext() const noexcept { return FContext; }
  void SetContext(TObject* AValue) noexcept { FContext = AValue; }

 protected:
  /// Copies everything but display name and kind, then notifies for this item, the source.
  void AssignTo(TPersistent* ADest) override;

 private:
  friend class TBeaconInZoneList;
  friend class TBeaconZones;
  /// The two keys under which sightings of this beacon are looked up: an item is both.
  template <class TVisit>
  void ForEachKey(TVisit&& AVisit) const {
    AVisit(TBeaconIdentity::OfUUID(FUUID, FMajor, FMinor));
    AVisit(TBeaconIdentity::OfEddystone(FEddyUID.Namespace, FEddyUID.Instance));
  }

  std::string FName;
  std::uint16_t FMinor = 0;
  std::uint16_t FMajor = 0;
  TGUID FUUID;
  TEddystoneUID FEddyUID;
  TObject* FContext = nullptr;
  TKindofBeacon FKindofBeacon = TKindofBeacon::iBeaconAltBeacon;
  std::string FManufacturerID;
  TRef<TZoneGuard> FGuard;  // guards FMinor, FMajor, FUUID, FEddyUID
  TRef<TItemLink<TBeaconItem>> FLink;
};

// ---------------------------------------------------------------- TBeaconInZoneList

/// The beacons of one zone, and the base values that new ones take (empty: none).
class TBeaconInZoneList : public TOwnedCollection {
 public:
  FENCING_CLASS_INFO()

  explicit TBeaconInZoneList(TPersistent* AOwner,
                             TCollectionItemClass AItemClass = &MakeItem<TBeaconItem>);

  TBeaconItem* Add() { return static_cast<TBeaconItem*>(TOwnedCollection::Add()); }
  TBeaconItem* GetItems(int AIndex) const {
    return static_cast<TBeaconItem*>(TOwnedCollection::GetItem(AIndex));
  }
  void SetItems(int AIndex, TBeaconItem* AValue) { SetItem(AIndex, AValue); }

  const std::string& GetBaseGUID() const noexcept { return FBaseGUID; }
  void SetBaseGUID(const std::string& AValue) { FBaseGUID = AValue; }
  const std::string& GetBaseEddyNamespace() const noexcept { return FBaseEddyNamespace; }
  void SetBaseEddyNamespace(const std::string& AValue) { FBaseEddyNamespace = AValue; }
  const std::string& GetBaseManufacturerID() const noexcept { return FBaseManufacturerID; }
  void SetBaseManufacturerID(const std::string& AValue) { FBaseManufacturerID = AValue; }
  const TNotifyEvent& GetOnChange() const noexcept { return FOnChange; }
  void SetOnChange(TNotifyEvent AValue) { FOnChange = std::move(AValue); }

  /// The first item in collection order that matches the sighting, or nothing. Its kind decides
  /// what is compared; the items' kinds and manufacturer ids do not matter. The cost does not grow
  /// with the number of items, except for the first look-up after a change.
  TBeaconItem* ContainsBeacon(const IBeacon* ABeacon);
  TBeaconItem* ContainsBeacon(const TRef<IBeacon>& ABeacon) {
    return ContainsBeacon(ABeacon.Get());
  }

 protected:
  void Update(TCollectionItem* AItem) override;
  void ChangeContents(const std::function<void()>& AChange) override;

 private:
  friend class TBeaconItem;
  friend class TBeaconZones;
  TBeaconItem* FindLocked(const TBeaconIdentity& AKey);
  void BuildLookUp();

  TNotifyEvent FOnChange;
  std::string FBaseGUID;
  std::string FBaseEddyNamespace;
  std::string FBaseManufacturerID;
  TRef<TZoneGuard> FGuard;  // guards the items and what follows
  TIdentityTable<TBeaconItem*> FLookUp;
  std::uint64_t FLookUpVersion = 0;
};

// ---------------------------------------------------------------- TBeaconZoneItem

/// The proximity at or inside which a beacon of a zone counts as being in the zone.
enum class TBeaconEditProximity : std::uint8_t { Immediate, Near, Away };

/// One zone: a name, its beacons, and how near one of them must be.
class TBeaconZoneItem : public TCollectionItem {
 public:
  FENCING_CLASS_INFO()
  using TBeaconEditProximity = Fencing::TBeaconEditProximity;

  explicit TBeaconZoneItem(TCollection* ACollection);
  ~TBeaconZoneItem() override;

  std::string GetDisplayName() const override;
  void SetDisplayName(const std::string& AValue) override;
  /// The zone's own list. Setting another copies its contents.
  TBeaconInZoneList* GetBeaconList() const noexcept { return FBeaconList.get(); }
  void SetBeaconList(TBeaconInZoneList* AValue);
  TBeaconEditProximity GetBeaconProximity() const noexcept { return FBeaconProximity; }
  void SetBeaconProximity(TBeaconEditProximity AValue);

  /// Base values for new beacons of the zone. Neither checked nor notified here.
  const std::string& GetBaseGUID() const noexcept { return FBaseGUID; }
  void SetBaseGUID(const std::string& AValue);
  const std::string& GetBaseEddyNamespace() const noexcept { return FBaseEddyNamespace; }
  void SetBaseEddyNamespace(const std::string& AValue);
  const std::string& GetBaseManufacturerID() const noexcept { return FBaseManufacturerID; }
  void SetBaseManufacturerID(const std::string& AValue);
  /// Free for the application; not owned.
  TObject* GetContext() const noexcept { return FContext; }
  void SetContext(TObject* AValue) noexcept { FContext = AValue; }

  /// The service's proximity that corresponds to `BeaconProximity`: ordinals 1, 2, 3. `Away`
  /// means the service's `Far`.
  TBeaconProximity GetSystemProximity() const noexcept;
  /// Passes a change of the beacon list on to the zone's collection.
  void ItemsChanged(TObject* ASender);
  void Assign(TPersistent* ASource) override;

 protected:
  void AssignTo(TPersistent* ADest) override;

 private:
  friend class TBeaconInZoneList;
  friend class TBeaconZones;

  std::string FName;
  TRef<TZoneGuard> FGuard;  // guards FBeaconProximity
  std::unique_ptr<TBeaconInZoneList> FBeaconList;
  std::string FBaseGUID;
  std::string FBaseEddyNamespace;
  std::string FBaseManufacturerID;
  TBeaconEditProximity FBeaconProximity = TBeaconEditProximity::Near;
  TObject* FContext = nullptr;
  TRef<TItemLink<TBeaconZoneItem>> FLink;
};

/// Where a sighting belongs, safe to keep while zones change: the links go empty when zone or item
/// is deleted.
struct TZoneMatch {
  TRef<TItemLink<TBeaconZoneItem>> Zone;
  TRef<TItemLink<TBeaconItem>> Item;
  TBeaconProximity Threshold = TBeaconProximity::Unknown;

  explicit operator bool() const noexcept { return static_cast<bool>(Zone); }
};

// ---------------------------------------------------------------- TBeaconZones

/// All zones of a component. Items are changed on the main thread; look-ups are safe on any.
class TBeaconZones : public TOwnedCollection {
 public:
  FENCING_CLASS_INFO()

  explicit TBeaconZones(TPersistent* AOwner,
                        TCollectionItemClass AItemClass = &MakeItem<TBeaconZoneItem>);

  TBeaconZoneItem* Add() { return static_cast<TBeaconZoneItem*>(TOwnedCollection::Add()); }
  TBeaconZoneItem* GetItems(int AIndex) const {
    return static_cast<TBeaconZoneItem*>(TOwnedCollection::GetItem(AIndex));
  }
  void SetItems(int AIndex, TBeaconZoneItem* AValue) { SetItem(AIndex, AValue); }

  /// Base values. A new one replaces the old one in every item that carries the old one; an item
  /// that refuses it stops the walk, with the items before it changed. The GUID is in text form and
  /// is parsed last: a malformed text raises `EConvertError`.
  std::string GetBaseGUID() const;
  void SetBaseGUID(const std::string& AValue);
  const std::string& GetBaseEddyNamespace() const noexcept { return FBaseEddyNamespace; }
  void SetBaseEddyNamespace(const std::string& AValue);
  const std::string& GetBaseManufacturerID() const noexcept { return FBaseManufacturerID; }
  void SetBaseManufacturerID(const std::string& AValue);
  const TNotifyEvent& GetOnChange() const noexcept { return FOnChange; }
  void SetOnChange(TNotifyEvent AValue) { FOnChange = std::move(AValue); }

  /// The first zone, in collection order, whose list contains the sighting, and its first matching
  /// item; nothing when there is none (`ABeaconItem` is then left alone). The cost does not
  /// grow with the number of zones or items, except for the first look-up after a change.
  TBeaconZoneItem* GetZoneForBeacon(const IBeacon* ABeacon);
  TBeaconZoneItem* GetZoneForBeacon(const IBeacon* ABeacon, TBeaconItem*& ABeaconItem);
  TBeaconZoneItem* GetZoneForBeacon(const TRef<IBeacon>& ABeacon) {
    return GetZoneForBeacon(ABeacon.Get());
  }
  TBeaconZoneItem* GetZoneForBeacon(const TRef<IBeacon>& ABeacon, TBeaconItem*& ABeaconItem) {
    return GetZoneForBeacon(ABeacon.Get(), ABeaconItem);
  }

  /// The same for a thread that does not own the zones. Any thread.
  TZoneMatch FindMatch(const IBeacon* ABeacon);
  /// Whether the zone is still there and its list contains the sighting. Any thread.
  bool ZoneHolds(const TItemLink<TBeaconZoneItem>& AZone, const IBeacon& ABeacon);

 protected:
  void Update(TCollectionItem* AItem) override;
  void ChangeContents(const std::function<void()>& AChange) override;

 private:
  friend class TBeaconZoneItem;
  struct TPlace {
    TBeaconZoneItem* Zone = nullptr;
    TBeaconItem* Item = nullptr;
  };
  using TTextSetter = void (TBeaconItem::*)(const std::string&);
  const TPlace* FindLocked(const TBeaconIdentity& AKey);
  void BuildLookUp();
  template <class TReadText>
  void SpreadBase(const std::string& AOld,
                  const std::string& ANew,
                  TReadText AReadText,
                  TTextSetter ASetText);

  TGUID FBaseGUID;
  std::string FBaseManufacturerID;
  std::string FBaseEddyNamespace;
  TNotifyEvent FOnChange;
  TRef<TZoneGuard> FGuard;  // guards the zones and what follows
  TIdentityTable<TPlace> FLookUp;
  std::uint64_t FLookUpVersion = 0;
};

/// Whether a text may be a manufacturer id: "-1", or one to four hexadecimal digits.
bool IsManufacturerID(std::string_view AText) noexcept;

/// The fewest regions that cover all items of all zones, in order of their first item: items that
/// share a UUID are merged into a region of that UUID (and major, when all share it), items that
/// share a namespace into a region of that namespace. Merged items of different kinds give kind 3,
/// of different manufacturer ids -1.
std::vector<TBeaconsRegion> RegionsOfZones(const TBeaconZones& AZones);

}  // namespace System::Beacon::Fencing

namespace System {

template <>
struct TEnumNames<Beacon::Fencing::TBeaconEditProximity> {
  static constexpr std::string_view Type = "TBeaconEditProximity";
  static constexpr std::array<std::string_view, 3> Names{"Immediate", "Near", "Away"};
};

}  // namespace System
