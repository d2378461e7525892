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

TKindofBeacon ReadKind(const TFields& AFields) {
  using TNames = TEnumNames<TKindofBeacon>;
  for (std::size_t I = 0; I < TNames::Names.size(); ++I)
    if (SameName(TNames::Names[I], AFields.GetText("kind"))) return static_cast<TKindofBeacon>(I);
  AFields.RefuseField("kind", fmt::format("is none of {}", fmt::join(TNames::Names, ", ")));
}

void ReadUUID(const TFields& AFields, TListedBeacon::TRow& ARow) {
  const std::string Text(AFields.GetText("uuid"));
  if (!TryStringToGUID(Text.starts_with('{') ? Text : '{' + Text + '}', ARow.GUID))
    AFields.RefuseField("uuid", "is no UUID: 8-4-4-4-12 hexadecimal digits are expected");
  ARow.Major = static_cast<std::uint16_t>(AFields.GetInteger("major", 0, UINT16_MAX));
  ARow.Minor = static_cast<std::uint16_t>(AFields.GetInteger("minor", 0, UINT16_MAX));
}

void ReadUID(const TFields& AFields, TListedBeacon::TRow& ARow) {
  if (!ARow.UID.SetNamespace(AFields.GetText("namespace")))
    AFields.RefuseField("namespace", "does not have 20 hexadecimal digits");
  if (!ARow.UID.SetInstance(AFields.GetText("instance")))
    AFields.RefuseField("instance", "does not have 12 hexadecimal digits");
}

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

// ---------------------------------------------------------------- reading

void ReadBeaconFields(const TFields& AFields, TListedBeacon::TRow& ARow) {
  ARow.Name = AFields.GetText("name");
  if (!AFields.GetText("kind").empty()) ARow.Kind = ReadKind(AFields);
  const bool IsEddystone = ARow.Kind == TKindofBeacon::Eddystone;
  if (!AFields.GetText("power").empty())
    ARow.Power = AFields.GetInteger("power", -127, IsEddystone ? MaxEddystonePower : MaxPower);
  if (IsEddystone)
    ReadUID(AFields, ARow);
  else
    ReadUUID(AFields, ARow);
}

TBeaconRows::TBeaconRows(TCsvReader ACsv)
    : FCsv(std::move(ACsv)), FX(FCsv.ColumnOf({"x", "x_m"})), FY(FCsv.ColumnOf({"y", "y_m"})) {}

bool TBeaconRows::Next() {
  if (!FCsv.Next()) {
    if (FIsEmpty) FCsv.Refuse("there is no beacon in this file");
    return false;
  }
  FIsEmpty = false;
  FRow = {};
  FRow.Place = {ReadMetres(FX), ReadMetres(FY)};
  if (!FCsv.GetText("map").empty()) FRow.Map = FCsv.GetInteger("map", 0, MaxMap);
  ReadBeaconFields(FCsv, FRow);
  return true;
}

float TBeaconRows::ReadMetres(std::string_view AColumn) const {
  return static_cast<float>(FCsv.GetNumber(AColumn, -MaxMetres, MaxMetres));
}

TBeaconFile ReadBeaconFile(const std::string& AFileName) {
  TBeaconFile Result;
  TIdentityTable<bool> Seen;
  for (TBeaconRows Rows{TCsvReader(AFileName)}; Rows.Next();) {
    const TListedBeacon::TRow& Row = Rows.GetRow();
    if (Result.Beacons.empty()) Result.Map = Row.Map;
    if (Row.Map != Result.Map)
      ++Result.OtherMaps;
    else if (Seen.Insert(Row.GetIdentity(), true))
      Result.Beacons.push_back(New<TListedBeacon>(Row, Result.Beacons.size()));
    else if (++Result.Repeated == 1)
      Result.FirstRepeatedLine = Rows.GetCsv().GetLine();
  }
  return Result;
}

}  // namespace Wayfence
