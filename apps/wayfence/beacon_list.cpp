#include "apps/wayfence/beacon_list.h"

#include <fmt/format.h>

#include <utility>

#include "apps/wayfence/csv.h"
#include "platform/errors.h"
#include "platform/reflection.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;

namespace {

constexpr double MaxMetres = 1e5;
constexpr int MaxMap = 1'000'000;
// dBm at 1 m; a frame carries up to 126, which for Eddystone is the power at 0 m.
constexpr int MaxPower = 126;
constexpr int MaxEddystonePower = 85;

/// Turns the rows of a file into beacons.
class TBeaconFileReader {
 public:
  explicit TBeaconFileReader(const std::string& AFileName)
      : FCsv(AFileName), FX(FCsv.ColumnOf({"x", "x_m"})), FY(FCsv.ColumnOf({"y", "y_m"})) {}

  TBeaconFile Read() {
    while (FCsv.Next()) Add(ReadRow());
    if (FResult.Beacons.empty()) FCsv.Refuse("there is no beacon in this file");
    return std::move(FResult);
  }

 private:
  void Add(const TListedBeacon::TRow& ARow) {
    if (FResult.Beacons.empty()) FResult.Map = ARow.Map;
    if (ARow.Map != FResult.Map) {
      ++FResult.OtherMaps;
    } else if (FSeen.Insert(ARow.GetIdentity(), true)) {
      FResult.Beacons.push_back(New<TListedBeacon>(ARow, FResult.Beacons.size()));
    } else if (++FResult.Repeated == 1) {
      FResult.FirstRepeatedLine = FCsv.GetLine();
    }
  }

  TListedBeacon::TRow ReadRow() const {
    TListedBeacon::TRow Result;
    Result.Name = FCsv.GetText("name");
    Result.Place = {ReadMetres(FX), ReadMetres(FY)};
    if (!FCsv.GetText("map").empty()) Result.Map = FCsv.GetInteger("map", 0, MaxMap);
    if (!FCsv.GetText("kind").empty()) Result.Kind = ReadKind();
    const bool IsEddystone = Result.Kind == TKindofBeacon::Eddystone;
    if (!FCsv.GetText("power").empty())
      Result.Power = FCsv.GetInteger("power", -127, IsEddystone ? MaxEddystonePower : MaxPower);
    if (IsEddystone)
      ReadUID(Result);
    else
      ReadUUID(Result);
    return Result;
  }

  float ReadMetres(std::string_view AColumn) const {
    return static_cast<float>(FCsv.GetNumber(AColumn, -MaxMetres, MaxMetres));
  }

  TKindofBeacon ReadKind() const {
    using TNames = TEnumNames<TKindofBeacon>;
    for (std::size_t I = 0; I < TNames::Names.size(); ++I)
      if (SameName(TNames::Names[I], FCsv.GetText("kind"))) return static_cast<TKindofBeacon>(I);
    FCsv.RefuseField("kind", fmt::format("is none of {}", fmt::join(TNames::Names, ", ")));
  }

  void ReadUUID(TListedBeacon::TRow& ARow) const {
    const std::string Text(FCsv.GetText("uuid"));
    if (!TryStringToGUID(Text.starts_with('{') ? Text : '{' + Text + '}', ARow.GUID))
      FCsv.RefuseField("uuid", "is no UUID: 8-4-4-4-12 hexadecimal digits are expected");
    ARow.Major = static_cast<std::uint16_t>(FCsv.GetInteger("major", 0, UINT16_MAX));
    ARow.Minor = static_cast<std::uint16_t>(FCsv.GetInteger("minor", 0, UINT16_MAX));
  }

  void ReadUID(TListedBeacon::TRow& ARow) const {
    if (!ARow.UID.SetNamespace(FCsv.GetText("namespace")))
      FCsv.RefuseField("namespace", "does not have 20 hexadecimal digits");
    if (!ARow.UID.SetInstance(FCsv.GetText("instance")))
      FCsv.RefuseField("instance", "does not have 12 hexadecimal digits");
  }

  TCsvReader FCsv;
  const std::string_view FX, FY;
  TIdentityTable<bool> FSeen;
  TBeaconFile FResult;
};

}  // namespace

TBeaconIdentity TListedBeacon::TRow::GetIdentity() const {
  if (Kind == TKindofBeacon::Eddystone)
    return TBeaconIdentity::OfEddystone(UID.Namespace, UID.Instance);
  return TBeaconIdentity::OfUUID(GUID, Major, Minor);
}

TBeaconsRegion TListedBeacon::GetRegion() const {
  TBeaconsRegion Result;
  Result.KindofBeacon = FRow.Kind;
  if (FRow.Kind == TKindofBeacon::Eddystone)
    Result.EddysUIDRegion.Initialize(FRow.UID.Namespace, FRow.UID.Instance);
  else
    Result.iBAltBeaconRegion.Initialize(FRow.GUID, FRow.Major, FRow.Minor, FRow.Kind, -1);
  return Result;
}

TBeaconFile ReadBeaconFile(const std::string& AFileName) {
  return TBeaconFileReader(AFileName).Read();
}

}  // namespace Wayfence
