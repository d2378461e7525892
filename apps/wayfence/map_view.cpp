#include "apps/wayfence/map_view.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "apps/wayfence/map_overlay.h"
#include "platform/errors.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
using Scene::TCameraHelper;

namespace {

constexpr std::int32_t HalfTurn = 180;
constexpr std::int32_t DegreesOfAPress = 15;
constexpr float ZoomOfAStep = 1.25F;
constexpr float PartOfAPress = 0.1F;  // of the control's size
// How much of a map's size is seen at least and at most.
constexpr float LeastSeen = 0.01F;
constexpr float MostSeen = 10.0F;
/// Of the device's position.
constexpr std::array Markers{TFencingMapOption::ShowPosition,
                             TFencingMapOption::ShowPositionInPath};

TBeaconFencingMapPainter* PainterOf(const TCustomBeaconMapFencing& AMap) {
  auto* const Result = dynamic_cast<TBeaconFencingMapPainter*>(&AMap.GetRuntimeMap());
  if (!Result) throw EGeneralError("the map component does not show its map with the painter");
  return Result;
}

/// The names of the zones over the position that zones are looked up with.
std::string ZonesAt(const TCustomBeaconMapFencing& AMap, const TFencingMap& AFloor) {
  const bool IsOnPath =
      AMap.GetFencingOptions()->GetZoneHighlightMetod() == TZoneHighlightMetod::PathPosition;
  const TPointF At = IsOnPath ? AMap.GetLastPathPosition() : AMap.GetLastRawPosition();
  std::string Result;
  if (At == TPointF{}) return Result;
  for (const TRef<IDesignZone>& Zone : AFloor.GetZonesOverPoint(ToMap(At)))
    Result += (Result.empty() ? "" : ", ") + Zone->GetName();
  return Result;
}

std::string NameOf(const TFencingProject& AProject, std::int32_t AFloor) {
  const auto Index = static_cast<std::size_t>(AFloor);
  return Index < AProject.Maps.GetLength() ? AProject.Maps[Index].Map->GetName() : std::string();
}

std::string TimeText(double ASeconds) {
  const auto Seconds = static_cast<std::int64_t>(ASeconds);
  return fmt::format("{}:{:02}:{:02}", Seconds / 3600, Seconds / 60 % 60, Seconds % 60);
}

}  // namespace

TMapView::TMapView(TControl& AControl, TCustomBeaconMapFencing& AMap)
    : FControl(AControl), FMap(AMap), FPainter(PainterOf(AMap)) {
  FControl.SetOnKeyDown(Bind<&TMapView::KeyDown>(this));
  FControl.SetOnWheel(Bind<&TMapView::Wheel>(this));
  FControl.SetOnPointerDown(Bind<&TMapView::PointerDown>(this));
  FControl.SetOnPointerMove(Bind<&TMapView::PointerMove>(this));
  FMap.SetOnPaint(Bind<&TMapView::Painted>(this));
  FMap.SetPaintControl(&FControl);
  if (HasProject()) FMap.SetRotation(0);  // fits the floor in
  Refresh();
}

TMapView::~TMapView() {
  FMap.SetPaintControl(nullptr);
  FMap.SetOnPaint({});
  FControl.SetOnKeyDown({});
  FControl.SetOnWheel({});
  FControl.SetOnPointerDown({});
  FControl.SetOnPointerMove({});
}

// ---------------------------------------------------------------- texts

std::string TMapView::GetStatus() const {
  const TFencingProject Project = FMap.GetProjectInformation();
  const auto Index = static_cast<std::size_t>(std::max(0, FMap.GetMapIndex()));
  if (Index >= Project.Maps.GetLength()) return "no map";
  const TFencingMap& Floor = Project.Maps[Index];
  const std::string& Name = Floor.Map->GetName();
  const std::string Zones = ZonesAt(FMap, Floor);
  return fmt::format(
      "{}{}   {}   {}{}H: help",
      TimeText(FSeconds),
      FHasEnded ? ", the end" : "",
      FLook ? fmt::format("{} (the device: {})", NameOf(Project, FLook->Floor), Name) : Name,
      Zones,
      Zones.empty() ? "" : "   ");
}

void TMapView::Refresh() {
  if (FLook && FMap.GetMapIndex() != FLook->DeviceFloor) FollowDevice();
  std::string Status = GetStatus();
  if (Status == FStatus) return;
  FStatus = std::move(Status);
  FControl.RepaintRect(GetStatusRect(FControl.GetLocalRect()));
}

void TMapView::Painted(TObject*, TDrawing* ADrawing, const TRectF& ARect) {
  if (!ADrawing) return;
  DrawStatus(*ADrawing, ARect, FStatus);
  if (FIsHelpShown) DrawHelp(*ADrawing);
}

// ---------------------------------------------------------------- keys

void TMapView::KeyDown(TObject*, const TKeyPress& AKey) {
  if (AKey.Key == "Escape") return FOnEscape(this);
  if (AKey.Key == "H") {
    FIsHelpShown = !FIsHelpShown;
    return FControl.Repaint();
  }
  if (!HasProject() || AKey.Control || AKey.Alt) return;
  if (ChangedFloor(AKey.Key) || ChangedOptions(AKey.Key) || ChangedView(AKey)) Refresh();
}

bool TMapView::ChangedFloor(const std::string& AKey) {
  if (AKey == "PageUp")
    ShowFloor(GetFloor() + 1);
  else if (AKey == "PageDown")
    ShowFloor(GetFloor() - 1);
  else if (AKey.size() == 1 && AKey[0] >= '1' && AKey[0] <= '9')
    ShowFloor(AKey[0] - '1');
  else
    return false;
  return true;
}

bool TMapView::ChangedOptions(const std::string& AKey) {
  struct TToggle {
    const char* Key;
    TFencingMapOption Option;
  };
  for (const auto& [Key, Option] : {TToggle{"B", TFencingMapOption::ShowBeacons},
                                    TToggle{"S", TFencingMapOption::ShowBeaconSignal},
                                    TToggle{"Z", TFencingMapOption::ShowZones},
                                    TToggle{"P", TFencingMapOption::ShowPaths}}) {
    if (AKey != Key) continue;
    TFencingMapOptions Options = FMap.GetMapOptions();
    Options.Contains(Option) ? Options.Exclude(Option) : Options.Include(Option);
    FMap.SetMapOptions(Options);
    return true;
  }
  return false;
}

bool TMapView::ChangedView(const TKeyPress& AKey) {
  const TPointF Middle = FControl.GetLocalRect().GetCentre();
  const float X = Middle.X * 2 * PartOfAPress, Y = Middle.Y * 2 * PartOfAPress;
  const std::string& Key = AKey.Key;
  if (Key == "R")
    Turn(AKey.Shift ? -DegreesOfAPress : DegreesOfAPress);
  else if (Key == "F")
    Turn(0);
  else if (Key == "+" || Key == "=" || Key == "Keypad +")
    Zoom(Middle, ZoomOfAStep);
  else if (Key == "-" || Key == "Keypad -")
    Zoom(Middle, 1.0F / ZoomOfAStep);
  else if (Key == "Left")
    Pan(Middle, {Middle.X + X, Middle.Y});
  else if (Key == "Right")
    Pan(Middle, {Middle.X - X, Middle.Y});
  else if (Key == "Up")
    Pan(Middle, {Middle.X, Middle.Y + Y});
  else if (Key == "Down")
    Pan(Middle, {Middle.X, Middle.Y - Y});
  else
    return false;
  return true;
}

// ---------------------------------------------------------------- the pointer

void TMapView::Wheel(TObject*, const TPointF& APoint, float ASteps) {
  if (HasProject()) Zoom(APoint, std::pow(ZoomOfAStep, ASteps));
}

void TMapView::PointerDown(TObject*, const TPointF& APoint) {
  FLastPoint = APoint;
}

void TMapView::PointerMove(TObject*, const TPointF& APoint, bool ADragged) {
  if (!ADragged || !HasProject()) return;
  Pan(FLastPoint, APoint);
  FLastPoint = APoint;
}

// ---------------------------------------------------------------- the view

void TMapView::ShowFloor(std::int32_t AIndex) {
  const auto Count = static_cast<std::int32_t>(FMap.GetProjectInformation().Maps.GetLength());
  if (AIndex < 0 || AIndex >= Count) return;
  FollowDevice();
  if (AIndex != FMap.GetMapIndex()) LookAt(AIndex);
}

void TMapView::LookAt(std::int32_t AIndex) {
  TFencingMapOptions Options = FMap.GetMapOptions();
  FLook = {.Floor = AIndex, .DeviceFloor = FMap.GetMapIndex(), .Hidden = {}};
  for (const TFencingMapOption Marker : Markers) {
    if (!Options.Contains(Marker)) continue;
    Options.Exclude(Marker);
    FLook->Hidden.Include(Marker);
  }
  FMap.SetMapOptions(Options);
  FPainter->SetMapIndex(AIndex);
}

void TMapView::FollowDevice() {
  if (!FLook) return;
  TFencingMapOptions Options = FMap.GetMapOptions();
  for (const TFencingMapOption Marker : Markers)
    if (FLook->Hidden.Contains(Marker)) Options.Include(Marker);
  FLook.reset();
  FMap.SetMapOptions(Options);
  if (!FMap.GetProjectInformation().Maps.IsEmpty()) FPainter->SetMapIndex(FMap.GetMapIndex());
}

/// Turns the view, and fits the floor in.
void TMapView::Turn(std::int32_t ADegrees) {
  const float Radians = FPainter->GetCamera()->GetRotation();
  const auto Now = static_cast<std::int32_t>(std::lround(Radians * HalfTurn / std::numbers::pi));
  FMap.SetRotation((Now + ADegrees + 3 * HalfTurn) % (2 * HalfTurn) - HalfTurn);
}

void TMapView::Pan(const TPointF& AFrom, const TPointF& ATo) {
  const TRef<Scene::IScene> Scene = FPainter->GetScene();
  const TRef<Scene::ICamera> Camera = FPainter->GetCamera();
  const TPointF Way = Scene->ViewportSpaceToGlobalSpace(nullptr, AFrom) -
                      Scene->ViewportSpaceToGlobalSpace(nullptr, ATo);
  Camera->SetDisplacement(Camera->GetDisplacement() + Way);
}

void TMapView::Zoom(const TPointF& APoint, float AFactor) {
  const TRef<Scene::IScene> Scene = FPainter->GetScene();
  const TRef<Scene::ICamera> Camera = FPainter->GetCamera();
  const TRectF Whole = Scene->GetRect(), Seen = Camera->GetFrustum();
  const float Size = std::max(Whole.GetWidth(), Whole.GetHeight());
  const float SeenNow = std::max(Seen.GetWidth(), Seen.GetHeight()) / AFactor;
  if (!(SeenNow > Size * LeastSeen && SeenNow < Size * MostSeen)) return;
  const TPointF At = Scene->ViewportSpaceToGlobalSpace(nullptr, APoint);
  Camera->SetFrustum(
      {Seen.Left / AFactor, Seen.Top / AFactor, Seen.Right / AFactor, Seen.Bottom / AFactor});
  const TPointF Moved = Scene->ViewportSpaceToGlobalSpace(nullptr, APoint);
  Camera->SetDisplacement(Camera->GetDisplacement() + (At - Moved));
}

}  // namespace Wayfence
