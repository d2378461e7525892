#include "apps/wayfence/import_project.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "apps/wayfence/import_paths.h"
#include "platform/errors.h"
#include "platform/xml_characters.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;
using TMapBeacon = Scene::Beacons::TBeacon;

namespace {

constexpr TAlphaColor Paper{0xFFF8F8F3};  // of floors without a picture
/// Of the zones of a floor, in turn.
constexpr std::array ZoneColors{TAlphaColor{0xFF7DA7D9},
                                TAlphaColor{0xFF7CC4B0},
                                TAlphaColor{0xFFE8B84B},
                                TAlphaColor{0xFFD99AB5},
                                TAlphaColor{0xFFD8CDB0}};

TPointF PointOf(TPlace APlace) {
  return {static_cast<float>(APlace.X), static_cast<float>(APlace.Y)};
}

std::vector<TPointF> PointsOf(const std::vector<TPlace>& APlaces) {
  std::vector<TPointF> Result;
  Result.reserve(APlaces.size());
  for (const TPlace& Place : APlaces) Result.push_back(PointOf(Place));
  return Result;
}

template <class TNodeClass>
void DescribeAll(TNodeClass& ANode, const TDescriptionList& AList) {
  if (AList.empty()) return;
  TDescriptionList List = StringToDescriptionList(ANode.GetDescriptionList());
  List.insert(List.end(), AList.begin(), AList.end());
  ANode.SetDescriptionList(DescriptionListToString(List));
}

/// Names are kept as XML.
void RequireName(const std::string& AName, const TImportedThing& AThing) {
  const std::size_t At = FindNoXMLCharacter(AName);
  if (At == std::string::npos) return;
  throw EFileError(
      fmt::format("{}: byte {} of the name '{}' is a control character or no UTF-8; take it out",
                  AThing.Source,
                  At + 1,
                  AName.substr(0, At)));
}

void RequireNames(const TImportedFloor& AFloor) {
  RequireName(AFloor.Thing.Name, AFloor.Thing);
  for (const TImportedZone& Zone : AFloor.Zones) RequireName(Zone.Thing.Name, Zone.Thing);
  for (const TImportedLine& Line : AFloor.Lines) RequireName(Line.Thing.Name, Line.Thing);
  for (const TImportedBeacon& Beacon : AFloor.Beacons) RequireName(Beacon.Thing.Name, Beacon.Thing);
  for (const TImportedPoint& Point : AFloor.Points) {
    RequireName(Point.Thing.Name, Point.Thing);
    RequireName(Point.Link, Point.Thing);
  }
}

/// The rectangle, when the corners are one whose sides run along the axes, to a centimetre.
bool IsRectangle(const std::vector<TPlace>& ACorners, TRectF& ARect) {
  constexpr double Tolerance = 0.01;  // metres
  if (ACorners.size() != 4) return false;
  const auto IsSame = [](double A, double B) { return std::abs(A - B) <= Tolerance; };
  const auto& [A, B, C, D] = std::tie(ACorners[0], ACorners[1], ACorners[2], ACorners[3]);
  const bool StartsAlongX =
      IsSame(A.Y, B.Y) && IsSame(B.X, C.X) && IsSame(C.Y, D.Y) && IsSame(D.X, A.X);
  const bool StartsAlongY =
      IsSame(A.X, B.X) && IsSame(B.Y, C.Y) && IsSame(C.X, D.X) && IsSame(D.Y, A.Y);
  const TPointF First = PointOf(A);
  const TPointF Third = PointOf(C);
  ARect = {std::min(First.X, Third.X),
           std::min(First.Y, Third.Y),
           std::max(First.X, Third.X),
           std::max(First.Y, Third.Y)};
  return (StartsAlongX || StartsAlongY) && ARect.GetWidth() > 0.0F && ARect.GetHeight() > 0.0F;
}

/// Furnishes the maps of a project, floor by floor.
class TImporter {
 public:
  TImporter(TProjectBuilder& AProject, TWarnings& AWarnings)
      : FProject(AProject), FWarnings(AWarnings) {}

  void AddFloor(const TImportedFloor& AFloor) {
    RequireNames(AFloor);
    FFloor = AFloor.Thing.Name;
    FNumbers = {};
    TMapBuilder Map = FProject.AddMap(
        AFloor.Thing.Name, static_cast<float>(AFloor.Width), static_cast<float>(AFloor.Height));
    Map.GetMap()->SetFillColor(Paper);
    if (!AFloor.Picture.empty()) Map.SetPicture(AFloor.Picture);
    DescribeAll(*Map.GetMap(), AFloor.Thing.Description);
    for (const TImportedZone& Zone : AFloor.Zones) AddZone(Map, Zone);
    for (const TPathGraph& Graph : JoinLines(AFloor, FWarnings)) AddPath(Map, Graph);
    for (const TImportedBeacon& Beacon : AFloor.Beacons) AddBeacon(Map, Beacon);
  }

 private:
  /// A name for what has none: "Level 1 zone 3".
  std::string NameOf(const std::string& AName, const char* AWhat, int& ACount) const {
    ++ACount;
    return AName.empty() ? fmt::format("{} {} {}", FFloor, AWhat, ACount) : AName;
  }

  void AddZone(TMapBuilder& AMap, const TImportedZone& AZone) {
    const TAlphaColor Color =
        ZoneColors[static_cast<std::size_t>(FNumbers.Zones) % ZoneColors.size()];
    const std::string Name = NameOf(AZone.Thing.Name, "zone", FNumbers.Zones);
    if (TRectF Rect; IsRectangle(AZone.Corners, Rect)) {
      const auto Zone = AMap.AddZone(Name, Rect);
      Zone->SetFillColor(Color);
      DescribeAll(*Zone, AZone.Thing.Description);
      return;
    }
    const auto Zone = AMap.AddPathZone(Name, {});
    Zone->SetFillColor(Color);
    Zone->SetControlPoints(PointsOf(AZone.Corners));
    DescribeAll(*Zone, AZone.Thing.Description);
  }

  void AddPath(TMapBuilder& AMap, const TPathGraph& AGraph) {
    const auto Path = AMap.AddPath(NameOf(AGraph.Name, "path", FNumbers.Paths), {});
    Path->SetControlPoints(PointsOf(AGraph.Nodes));
    Path->SetConnections(AGraph.Edges);
    std::vector<std::vector<TPathGraph::TNote>> Notes(AGraph.Nodes.size());
    for (const TPathGraph::TNote& Note : AGraph.Notes)
      Notes[static_cast<std::size_t>(Note.Node)].push_back(Note);
    for (std::int32_t I = 0; I < Path->GetControlPointCount(); ++I)
      FurnishNode(*TMapBuilder::GetNode(*Path, I), Notes[static_cast<std::size_t>(I)]);
  }

  /// The last point that has a name names the node; all of them describe and link it.
  void FurnishNode(TMapPathNode& ANode, const std::vector<TPathGraph::TNote>& ANotes) {
    std::string Name = NameOf({}, "node", FNumbers.Nodes);
    const TImportedThing* NamedBy = nullptr;
    TDescriptionList Description;
    for (const auto& [Node, Thing, Point] : ANotes) {
      if (Point && !Thing->Name.empty()) NamedBy = Thing;
      Description.insert(Description.end(), Thing->Description.begin(), Thing->Description.end());
    }
    if (NamedBy) Name = NamedBy->Name;
    if (NamedBy) WarnOfSameName(*NamedBy);
    ANode.SetName(Name);
    DescribeAll(ANode, Description);
    for (const auto& [Node, Thing, Point] : ANotes)
      if (Point && !Point->Link.empty()) FProject.Connect(Name, Point->Link);
  }

  void WarnOfSameName(const TImportedThing& AThing) {
    const auto [Known, IsNew] = FNamedBy.emplace(AThing.Name, AThing.Source);
    if (!IsNew)
      FWarnings.push_back(
          fmt::format("{}: '{}': {} names a path node so, too; both count as one place: give one "
                      "of them another name",
                      AThing.Source,
                      AThing.Name,
                      Known->second));
  }

  void AddBeacon(TMapBuilder& AMap, const TImportedBeacon& ABeacon) {
    const TRef<TMapBeacon> Beacon = MakeBeacon(AMap, ABeacon);
    DescribeAll(*Beacon, ABeacon.Thing.Description);
    if (ABeacon.Row.Power != NoPower)
      Describe(*Beacon, "power", fmt::format("{}", ABeacon.Row.Power));
  }

  TRef<TMapBeacon> MakeBeacon(TMapBuilder& AMap, const TImportedBeacon& ABeacon) {
    const TListedBeacon::TRow& Row = ABeacon.Row;
    const std::string Name = NameOf(ABeacon.Thing.Name, "beacon", FNumbers.Beacons);
    const TPointF Place = PointOf(ABeacon.Place);
    if (Row.Kind == TKindofBeacon::Eddystone)
      return AMap.AddEddystone(Name, Place, Row.UID.GetNamespace(), Row.UID.GetInstance());
    auto Result = AMap.AddBeacon(Name, Place, GUIDToString(Row.GUID), Row.Major, Row.Minor);
    Result->SetKindofBeacon(Row.Kind);
    return Result;
  }

  TProjectBuilder& FProject;
  TWarnings& FWarnings;
  std::string FFloor;
  struct {
    int Zones = 0, Paths = 0, Nodes = 0, Beacons = 0;
  } FNumbers;                                             // of this floor
  std::unordered_map<std::string, std::string> FNamedBy;  // path nodes: where they got their names
};

}  // namespace

TProjectBuilder BuildProject(const std::string& AName,
                             const TImportedFloors& AFloors,
                             TWarnings& AWarnings) {
  TProjectBuilder Result(AName);
  TImporter Importer(Result, AWarnings);
  for (const TImportedFloor& Floor : AFloors) Importer.AddFloor(Floor);
  return Result;
}

}  // namespace Wayfence
