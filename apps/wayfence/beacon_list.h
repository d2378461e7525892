// The beacons of a building as a list: where each of them is, and how it is told from others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "apps/wayfence/csv.h"
#include "apps/wayfence/fields.h"
#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/beacons/frame.h"
#include "platform/beacons/identity.h"

namespace Wayfence {

/// A beacon of a list. Positions are in metres. Does not change, any thread.
class TListedBeacon final : public System::TInterfacedObject,
                            public virtual System::Beacon::Fencing::IDesignBeacon {
 public:
  struct TRow {
    std::string Name;
    System::TPointF Place;
    int Map = 0;
    System::Beacon::TKindofBeacon Kind = System::Beacon::TKindofBeacon::iBeacon;
    System::TGUID GUID;
    std::uint16_t Major = 0;
    std::uint16_t Minor = 0;
    System::Beacon::TEddystoneUID UID;
    int Power = System::Beacon::NoPower;  ///< dBm at 1 m, for frames without one; 127: not known

    System::Beacon::TBeaconIdentity GetIdentity() const;
  };

  TListedBeacon(TRow ARow, std::size_t AIndex) : FRow(std::move(ARow)), FIndex(AIndex) {}

  std::size_t GetIndex() const noexcept { return FIndex; }
  /// What tells it from the others of the list.
  System::Beacon::TBeaconIdentity GetIdentity() const { return FRow.GetIdentity(); }
  int GetPower() const noexcept { return FRow.Power; }
  /// A region that holds this beacon only.
  System::Beacon::TBeaconsRegion GetRegion() const;

  System::TGUID GetGUID() const override { return FRow.GUID; }
  std::int32_t GetMajor() const override { return FRow.Major; }
  std::int32_t GetMinor() const override { return FRow.Minor; }
  std::string GetManufacturerID() const override { return {}; }
  std::int32_t GetMID() const override { return -1; }
  System::Beacon::TKindofBeacon GetKindofBeacon() const override { return FRow.Kind; }
  std::string GetEddyNamespace() const override { return FRow.UID.GetNamespace(); }
  std::string GetEddyInstance() const override { return FRow.UID.GetInstance(); }
  std::string GetInformationItems() const override { return {}; }
  void SetSignalDistance(float) override {}
  float GetSignalDistance() const override { return 0.0F; }
  System::TPointF GetDisplacement() const override { return FRow.Place; }
  System::TPointF GetCenterInGlobalSpace() const override { return FRow.Place; }
  const std::string& GetName() const override { return FRow.Name; }
  System::TRectF GetGlobalRect() const override {
    return {FRow.Place.X, FRow.Place.Y, FRow.Place.X, FRow.Place.Y};
  }
  bool GetUseToPositioning() const override { return true; }
  void SetUseToPositioning(bool) override {}

 private:
  const TRow FRow;
  const std::size_t FIndex;
};

/// What a thing says of a beacon: `name`, `kind`, `power` (dBm at 1 m) and the identity: `uuid`,
/// `major`, `minor`, or for the kind Eddystone `namespace` and `instance`. Without a `kind` a
/// beacon is an iBeacon. Leaves place and map alone; refuses the thing that names no beacon.
void ReadBeaconFields(const TFields& AFields, TListedBeacon::TRow& ARow);

/// Reads comma-separated values row by row: the columns of `ReadBeaconFields` and `x`, `y` (metres)
/// and `map`, 0 where there is none. Raises `EFileError`.
class TBeaconRows {
 public:
  explicit TBeaconRows(TCsvReader ACsv);

  /// Goes to the next row; false at the end. A file without a single one is refused.
  bool Next();
  const TListedBeacon::TRow& GetRow() const { return FRow; }
  /// The row as it stands in the file.
  const TCsvReader& GetCsv() const { return FCsv; }

 private:
  float ReadMetres(std::string_view AColumn) const;

  TCsvReader FCsv;
  const std::string_view FX, FY;
  TListedBeacon::TRow FRow;
  bool FIsEmpty = true;
};

/// The beacons of one map, in file order; their indexes are those of the list.
struct TBeaconFile {
  int Map = 0;  ///< the map of the first row
  std::vector<System::TRef<TListedBeacon>> Beacons;
  std::size_t OtherMaps = 0;  ///< rows left out because they are on another map
  std::size_t Repeated = 0;   ///< rows left out because an earlier row has their identity
  int FirstRepeatedLine = 0;
};

/// Reads the whole of a file that `TBeaconRows` reads. Of rows with one identity the first counts.
/// Raises `EFileError`.
TBeaconFile ReadBeaconFile(const std::string& AFileName);

}  // namespace Wayfence
