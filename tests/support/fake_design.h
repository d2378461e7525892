// Beacons, zones and maps of a project whose every answer a test decides.
#pragma once

#include <optional>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"

namespace System::Beacon::Fencing {

/// Its answers are plain members, set before threads share it; what the interface itself sets may
/// change meanwhile.
class TFakeDesignBeacon final : public TInterfacedObject, public virtual IDesignBeacon {
 public:
  TKindofBeacon Kind = TKindofBeacon::iBeacon;
  TGUID GUID;
  std::int32_t Major = 0;
  std::int32_t Minor = 0;
  std::int32_t ManufacturerID = -1;
  std::string EddyNamespace;
  std::string EddyInstance;
  TPointF Center;                       ///< map units
  std::optional<TPointF> Displacement;  ///< nothing: the centre
  std::string Name;
  std::string InformationItems;
  TAtomicValue<float> SignalDistance;
  TAtomicValue<bool> UseToPositioning{true};

  TGUID GetGUID() const override { return GUID; }
  std::int32_t GetMajor() const override { return Major; }
  std::int32_t GetMinor() const override { return Minor; }
  std::string GetManufacturerID() const override { return std::to_string(ManufacturerID); }
  std::int32_t GetMID() const override { return ManufacturerID; }
  TKindofBeacon GetKindofBeacon() const override { return Kind; }
  std::string GetEddyNamespace() const override { return EddyNamespace; }
  std::string GetEddyInstance() const override { return EddyInstance; }
  std::string GetInformationItems() const override { return InformationItems; }
  void SetSignalDistance(float ADistance) override { SignalDistance = ADistance; }
  float GetSignalDistance() const override { return SignalDistance; }
  TPointF GetDisplacement() const override { return Displacement.value_or(Center); }
  TPointF GetCenterInGlobalSpace() const override { return Center; }
  const std::string& GetName() const override { return Name; }
  TRectF GetGlobalRect() const override { return {Center.X, Center.Y, Center.X, Center.Y}; }
  bool GetUseToPositioning() const override { return UseToPositioning; }
  void SetUseToPositioning(bool AValue) override { UseToPositioning = AValue; }
};

/// A zone that is a rectangle (map units).
class TFakeDesignZone final : public TInterfacedObject, public virtual IDesignZone {
 public:
  TFakeDesignZone(std::string AName, const TRectF& ARect) : Name(std::move(AName)), Rect(ARect) {}

  std::string Name;
  TRectF Rect;
  std::string InformationItems;

  TPointF GetCenterInGlobalSpace() const override { return Rect.GetCentre(); }
  const std::string& GetName() const override { return Name; }
  bool IsUnderGlobalPoint(TPointF APoint) const override { return Rect.Contains(APoint); }
  TRectF GetGlobalRect() const override { return Rect; }
  std::string GetInformationItems() const override { return InformationItems; }
};

/// A map that remembers the route it shows.
class TFakeDesignMap final : public TInterfacedObject,
                             public virtual IDesignMap,
                             public virtual IDesignMapUnits {
 public:
  explicit TFakeDesignMap(TMeasureUnits AUnits = TMeasureUnits::Centimeters) : Units(AUnits) {}

  const TMeasureUnits Units;
  std::string Name;
  TRectF Rect;  ///< map units
  std::vector<std::int32_t> ShownPath;
  std::size_t ShownPoints = 0;  ///< how many points came with it
  int Showings = 0;

  const std::string& GetName() const override { return Name; }
  TRectF GetGlobalRect() const override { return Rect; }
  TMeasureUnits GetMeasureUnits() const override { return Units; }
  void HighLitCustomPath(std::span<const TPathNodeInfo> APoints,
                         std::span<const std::int32_t> APath) override {
    ShownPath.assign(APath.begin(), APath.end());
    ShownPoints = APoints.size();
    ++Showings;
  }
};

/// A design beacon of a UUID, major 0 and the given minor.
inline TRef<TFakeDesignBeacon> NewFakeDesignBeacon(const TGUID& AGUID,
                                                   std::int32_t AMinor,
                                                   TPointF ACenter = {}) {
  TRef<TFakeDesignBeacon> Result = New<TFakeDesignBeacon>();
  Result->GUID = AGUID;
  Result->Minor = AMinor;
  Result->Center = ACenter;
  return Result;
}

}  // namespace System::Beacon::Fencing
