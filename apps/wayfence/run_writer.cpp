#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "apps/wayfence/floor_picture.h"
#include "apps/wayfence/json_line.h"
#include "apps/wayfence/run_file.h"
#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "platform/base64.h"
#include "platform/errors.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

constexpr int PictureSide = 1600;  // pixels

template <class TEnum>
std::string NameOf(TEnum AValue) {
  return std::string(TEnumNames<TEnum>::Names.at(static_cast<std::size_t>(AValue)));
}

float Checked(float ACoordinate) {
  if (!(std::abs(ACoordinate) <= MaxRunCoordinate))
    throw EGeneralError(fmt::format(
        "something of the project lies at {}; a run file holds coordinates up to {:.0f} "
        "map units",
        ACoordinate,
        MaxRunCoordinate));
  return ACoordinate;
}

const std::string& Checked(const std::string& AName) {
  constexpr std::size_t Shown = 40;
  if (AName.size() > MaxRunNameSize)
    throw EGeneralError(
        fmt::format("the name '{}…' has {} bytes; a run file holds names of up to {}: shorten it",
                    AName.substr(0, Shown),
                    AName.size(),
                    MaxRunNameSize));
  return AName;
}

std::string RectToJson(const TRectF& ARect) {
  return fmt::format("[{}, {}, {}, {}]",
                     Checked(ARect.Left),
                     Checked(ARect.Top),
                     Checked(ARect.Right),
                     Checked(ARect.Bottom));
}

std::string PointToJson(TPointF APoint) {
  return fmt::format("[{:.3f}, {:.3f}]", Checked(APoint.X), Checked(APoint.Y));
}

/// The items of one kind, a JSON array.
class TItems {
 public:
  void Add(const std::string& AValue) {
    if (++FCount > MaxRunItems)
      throw EGeneralError(
          fmt::format("the project has more than {} things of one kind; a run file holds no more",
                      MaxRunItems));
    FText += (FText.empty() ? "" : ", ") + AValue;
  }
  std::string ToText() const { return "[" + FText + "]"; }

 private:
  std::string FText;
  std::size_t FCount = 0;
};

// ---------------------------------------------------------------- maps

/// The bytes of a picture as an address.
std::string AddressOf(const TPicture& APicture) {
  std::string Digits = EncodeBase64(EncodePng(APicture));
  std::erase_if(Digits, [](char AChar) { return AChar == '\r' || AChar == '\n'; });
  return "data:image/png;base64," + Digits;
}

/// The floor's own picture; what stands on it is drawn from what the header tells of it.
void AddPicture(TJsonLine& ALine, Scene::TScene& AScene, int AMap, const TRectF& ARect) {
  const float Longer = std::max(ARect.GetWidth(), ARect.GetHeight());
  const TFloorOptions Options{.Shown = {}, .Margin = Longer / 50.0F, .Background = TAlphaColor{0}};
  const int Width = FloorWidth(AScene, AMap, PictureSide, Options);
  const TFloorPicture Floor = DrawFloor(AScene, AMap, Width, Options);
  ALine.Text("picture", AddressOf(*Floor.Picture));
  ALine.Json("pictureRect", RectToJson(Floor.Rect));
}

bool HasPicture(const IDesignMap& AMap) {
  const auto* const Shape = dynamic_cast<const Scene::Beacons::TMap*>(&AMap);
  return Shape && Shape->GetBitmap() && !AMap.GetGlobalRect().IsEmpty();
}

std::string MapsToJson(Scene::TScene& AScene, const TFencingProject& AProject) {
  TItems Result;
  for (std::size_t I = 0; I < AProject.Maps.GetLength(); ++I) {
    const IDesignMap& Map = *AProject.Maps[I].Map;
    const TRectF Rect = Map.GetGlobalRect();
    TJsonLine Line;
    Line.Text("name", Checked(Map.GetName())).Json("rect", RectToJson(Rect));
    const auto* const Units = Supports<const IDesignMapUnits>(&Map);
    Line.Text("units", NameOf(Units ? Units->GetMeasureUnits() : TMeasureUnits::Meters));
    if (HasPicture(Map)) AddPicture(Line, AScene, static_cast<int>(I), Rect);
    Result.Add(Line.ToText());
  }
  return Result.ToText();
}

// ---------------------------------------------------------------- what stands on them

TJsonLine Placed(const std::string& AName, std::size_t AMap) {
  TJsonLine Result;
  Result.Text("name", Checked(AName)).Number("map", static_cast<std::int64_t>(AMap));
  return Result;
}

std::string BeaconToJson(const IDesignBeacon& ABeacon, std::size_t AMap) {
  TJsonLine Result = Placed(ABeacon.GetName(), AMap);
  const TPointF Place = ABeacon.GetCenterInGlobalSpace();
  Result.Decimal("x", Checked(Place.X))
      .Decimal("y", Checked(Place.Y))
      .Text("kind", NameOf(ABeacon.GetKindofBeacon()));
  if (ABeacon.GetKindofBeacon() == System::Beacon::TKindofBeacon::Eddystone)
    return Result.Text("namespace", ABeacon.GetEddyNamespace())
        .Text("instance", ABeacon.GetEddyInstance())
        .ToText();
  return Result.Text("uuid", GUIDToString(ABeacon.GetGUID()))
      .Number("major", ABeacon.GetMajor())
      .Number("minor", ABeacon.GetMinor())
      .ToText();
}

std::vector<TPointF> CornersOf(const TRectF& ARect) {
  return {{ARect.Left, ARect.Top},
          {ARect.Right, ARect.Top},
          {ARect.Right, ARect.Bottom},
          {ARect.Left, ARect.Bottom}};
}

std::vector<TPointF> CornersOf(const Scene::ISceneNode& ANode) {
  const Scene::TCorners Corners = ANode.GetLocalCorners();
  return {Corners.Points.begin(), Corners.Points.end()};
}

std::vector<TPointF> EllipseOf(const Scene::TEllipse& AShape) {
  constexpr int Corners = 48;
  const TRectF Rect = AShape.GetRect();
  TPointF Half{Rect.GetWidth() / 2.0F, Rect.GetHeight() / 2.0F};
  if (AShape.GetPerfectCircle()) Half.X = Half.Y = std::min(Half.X, Half.Y);
  std::vector<TPointF> Result;
  for (int I = 0; I < Corners; ++I) {
    const double Angle = 2.0 * std::numbers::pi * I / Corners;
    Result.push_back(Rect.GetCentre() + TPointF{Half.X * static_cast<float>(std::cos(Angle)),
                                                Half.Y * static_cast<float>(std::sin(Angle))});
  }
  return Result;
}

/// The outline of a zone, global space.
std::vector<TPointF> OutlineOf(const IDesignZone& AZone) {
  const auto* const Node = Supports<const Scene::ISceneNode>(&AZone);
  if (!Node) return CornersOf(AZone.GetGlobalRect());
  std::vector<TPointF> Result;
  if (const auto* const Ellipse = dynamic_cast<const Scene::TEllipse*>(Node))
    Result = EllipseOf(*Ellipse);
  else if (const auto* const Shape = Supports<const Scene::IControlPointsShape>(&AZone))
    Result = Shape->GetControlPoints();
  else
    Result = CornersOf(*Node);
  const TMatrix Matrix = Node->GetGlobalMatrix();
  for (TPointF& Point : Result) Point = Point * Matrix;
  return Result;
}

std::string ZoneToJson(const IDesignZone& AZone, std::size_t AMap) {
  std::vector<std::string> Outline;
  for (const TPointF& Point : OutlineOf(AZone)) Outline.push_back(PointToJson(Point));
  return Placed(AZone.GetName(), AMap)
      .Json("outline", fmt::format("[{}]", fmt::join(Outline, ", ")))
      .ToText();
}

/// The walkable paths; links between floors are left out.
std::string EdgesToJson(const TFencingProject& AProject) {
  TItems Result;
  for (const auto& [From, To] : AProject.Graph.GetPathEdges()) {
    const TPathNodeInfo& Begin = AProject.GlobalPath[static_cast<std::size_t>(From)];
    const TPathNodeInfo& End = AProject.GlobalPath[static_cast<std::size_t>(To)];
    if (Begin.MapIndex < 0 || Begin.MapIndex != End.MapIndex) continue;
    Result.Add(fmt::format(R"({{"map": {}, "from": {}, "to": {}}})",
                           Begin.MapIndex,
                           PointToJson(Begin.GlobalPosition),
                           PointToJson(End.GlobalPosition)));
  }
  return Result.ToText();
}

std::string PoisToJson(const TFencingProject& AProject) {
  TItems Result;
  for (const TBeaconFencingPOI& Poi : AProject.PoiList.PoiList)
    if (Poi.MapIndex >= 0)
      Result.Add(Placed(Poi.Name, static_cast<std::size_t>(Poi.MapIndex))
                     .Decimal("x", Checked(Poi.Position.X))
                     .Decimal("y", Checked(Poi.Position.Y))
                     .Text("type", NameOf(Poi.PoiType))
                     .ToText());
  return Result.ToText();
}

}  // namespace

TRunWriter::TRunWriter(std::string AFileName,
                       Scene::TScene& AScene,
                       const TFencingProject& AProject,
                       const std::string& ASource) {
  const std::string Header = MakeHeader(AScene, AProject, ASource);
  FFile.emplace(std::move(AFileName));
  Line(Header);
}

std::string TRunWriter::MakeHeader(Scene::TScene& AScene,
                                   const TFencingProject& AProject,
                                   const std::string& ASource) {
  TItems Beacons, Zones;
  std::size_t Count = 0;
  for (std::size_t I = 0; I < AProject.Maps.GetLength(); ++I) {
    for (const TFencingBeacon& Beacon : AProject.Maps[I].BeaconList) {
      FBeacons.try_emplace(Beacon.DesignBeacon->GetObject(), TBeaconPlace{Count++, I});
      Beacons.Add(BeaconToJson(*Beacon.DesignBeacon, I));
    }
    for (const TRef<IDesignZone>& Zone : AProject.Maps[I].Zones) Zones.Add(ZoneToJson(*Zone, I));
  }
  TJsonLine Header;
  Header.Number("run", 1).Text("project", Checked(AProject.ProjectName)).Text("source", ASource);
  Header.Json("maps", MapsToJson(AScene, AProject)).Json("beacons", Beacons.ToText());
  Header.Json("zones", Zones.ToText()).Json("pois", PoisToJson(AProject));
  Header.Json("edges", EdgesToJson(AProject));
  std::string Result = Header.ToText();
  if (Result.size() > MaxRunHeaderSize)
    throw EGeneralError(fmt::format(
        "the floors and their pictures take more than {} bytes in a run file; use fewer",
        MaxRunHeaderSize));
  return Result;
}

void TRunWriter::Line(std::string_view AText) {
  FFile->Write(AText);
  FFile->Write("\n");
  FSize += AText.size() + 1;
}

void TRunWriter::Signal(double ASeconds,
                        const IDesignBeacon& ABeacon,
                        int ARssi,
                        double ADistance) {
  const auto Found = FBeacons.find(ABeacon.GetObject());
  if (Found == FBeacons.end() || ARssi < MinRunRssi || ARssi > MaxRunRssi) return;
  TJsonLine Result(ASeconds, "Signal");
  Result.Number("map", static_cast<std::int64_t>(Found->second.Map));
  Result.Number("beacon", static_cast<std::int64_t>(Found->second.Index)).Number("rssi", ARssi);
  if (ADistance >= 0.0) Result.Decimal("distance", ADistance);
  Line(Result.ToText());
}

void TRunWriter::Truth(double ASeconds, int AMap, TPointF APlace) {
  Line(TJsonLine(ASeconds, "Truth")
           .Number("map", AMap)
           .Decimal("x", APlace.X)
           .Decimal("y", APlace.Y)
           .ToText());
}

void TRunWriter::Close() {
  FFile->Close();
}

}  // namespace Wayfence
