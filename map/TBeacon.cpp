#include <algorithm>
#include <charconv>
#include <cmath>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "map/messages.h"
#include "platform/components.h"
#include "platform/hex.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/corners.h"
#include "scene/name_case.h"

namespace System::Beacon::Fencing::Scene::Beacons {
namespace {

constexpr std::string_view AnyManufacturer = "-1";
constexpr float DiscRadius = 0.5F;
constexpr std::array<float, 3> DistanceRadii{0.1F, 0.5F, 1.5F};

bool IsManufacturerID(std::string_view AText) {
  constexpr std::size_t MaxDigits = 4;
  if (AText == AnyManufacturer) return true;
  return !AText.empty() && AText.size() <= MaxDigits &&
         std::all_of(AText.begin(), AText.end(), [](char C) { return HexDigit(C) >= 0; });
}

/// A square about the origin.
TRectF SquareOf(float ARadius) {
  return {-ARadius, -ARadius, ARadius, ARadius};
}

}  // namespace

const TClassInfo& TBeacon::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TBeacon",
      .Base = &TRectangle::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TBeacon>()); },
      .Properties = {
          Published<&TBeacon::GetGUID, &TBeacon::SetGUID>("GUID"),
          Published<&TBeacon::GetMajor, &TBeacon::SetMajor>("Major"),
          Published<&TBeacon::GetMinor, &TBeacon::SetMinor>("Minor"),
          Published<&TBeacon::GetManufacturerID, &TBeacon::SetManufacturerID>("ManufacturerID"),
          Published<&TBeacon::GetEddyNamespace, &TBeacon::SetEddyNamespace>("EddyNamespace"),
          Published<&TBeacon::GetEddyInstance, &TBeacon::SetEddyInstance>("EddyInstance"),
          Published<&TBeacon::GetKindofBeacon, &TBeacon::SetKindofBeacon>("KindofBeacon"),
          Published<&TBeacon::GetDescriptionList, &TBeacon::SetDescriptionList>("DescriptionList"),
          Published<&TBeacon::GetUseToPositioning, &TBeacon::SetUseToPositioning>(
              "UseToPositioning"),
          Public<&TBeacon::GetAlertRaius, &TBeacon::SetAlertRaius>("AlertRaius"),
          Public<&TBeacon::GetVisualizationMode, &TBeacon::SetVisualizationMode>(
              "VisualizationMode"),
          Public<&TBeacon::GetSignalDistance, &TBeacon::SetSignalDistance>("SignalDistance"),
          ReadOnlyProperty<&TBeacon::GetMID>("MID", false),
          ReadOnlyProperty<&TBeacon::GetDescription>("Description", false)}};
  return Info;
}

TBeacon::TBeacon() {
  SetRect(SquareOf(DiscRadius));
  SetOpacity(0.9F);
  SetFillColor(TAlphaColor{0xFFFFFFFF});
}

// ---------------------------------------------------------------- identity

void TBeacon::SetManufacturerID(const std::string& AValue) {
  if (!IsManufacturerID(AValue)) RaiseComponentError(Messages::SManufacturerID);
  FManufacturerID = AValue;
}

std::int32_t TBeacon::GetMID() const {
  std::int32_t Result = -1;
  if (FManufacturerID != AnyManufacturer)
    std::from_chars(
        FManufacturerID.data(), FManufacturerID.data() + FManufacturerID.size(), Result, 16);
  return Result;
}

void TBeacon::SetEddyNamespace(const std::string& AValue) {
  if (AValue != GetEddyNamespace() && !FEddyUUID.SetNamespace(AValue))
    RaiseComponentError(Messages::SEddyNamespace);
}

void TBeacon::SetEddyInstance(const std::string& AValue) {
  if (AValue != GetEddyInstance() && !FEddyUUID.SetInstance(AValue))
    RaiseComponentError(Messages::SEddyInstance);
}

bool TBeacon::AllowDesignProperty(std::string_view AName) const {
  for (const std::string_view Hidden : {"Width", "Height", "EnableFill", "Rotation"})
    if (SameName(AName, Hidden)) return false;
  if (WithoutCase(std::string(AName)).find("clip") != std::string::npos) return false;
  return TRectangle::AllowDesignProperty(AName);
}

// ---------------------------------------------------------------- look

void TBeacon::SetVisualizationMode(TBeaconVisualizationSet AValue) {
  FVisualizationMode = AValue;
  ChangedExtent();
  Repaint();
}

void TBeacon::SetSignalDistance(float ADistance) {
  if (!std::isfinite(ADistance)) return;
  Repaint();
  FSignalDistance = ADistance;
  ChangedExtent();
  Repaint();
}

float TBeacon::GetReach() const {
  float Result = 0.0F;
  if (FVisualizationMode.Contains(TBeaconVisualizationMode::ThreeDistances))
    Result = DistanceRadii.back();
  if (FVisualizationMode.Contains(TBeaconVisualizationMode::SignalDistance))
    Result = std::max(Result, std::abs(GetSignalDistance()));
  return Result;
}

TExtent TBeacon::GetExtent() const {
  const TRectF Drawn = SquareOf(std::max(DiscRadius, GetReach()));
  return TExtent::Of<TBeacon>(BoundBoth(GetRect(), Drawn), FBrush.GetStrokeReach());
}

TRectF TBeacon::GetRepaintRect(bool AWithChildren, float AMargin) const {
  const TRectF Inherited = TRectangle::GetRepaintRect(AWithChildren, AMargin);
  const float Reach = GetReach();
  if (Reach == 0.0F) return Inherited;
  return BoundBoth(Inherited, TSceneNode::GetScreenRect(SquareOf(Reach)));
}

void TBeacon::Draw(Canvas::ICanvas& ACanvas) {
  if (FVisualizationMode.Contains(TBeaconVisualizationMode::SolidCircle)) {
    if (GetBitmap())
      ACanvas.DrawRectangle(SquareOf(DiscRadius));
    else
      ACanvas.DrawEllipse(SquareOf(DiscRadius));
  }
  ACanvas.SetStrokePattern(Canvas::TStrokePattern::Solid);
  if (FVisualizationMode.Contains(TBeaconVisualizationMode::ThreeDistances)) {
    ACanvas.SetStrokeColor(TAlphaColor{0xFF000000}, GetOpacity());
    for (const float Radius : DistanceRadii) ACanvas.StrokeEllipse(SquareOf(Radius));
  }
  if (FVisualizationMode.Contains(TBeaconVisualizationMode::SignalDistance)) {
    ACanvas.SetStrokeColor(TAlphaColor{0xFFFF0000}, GetOpacity());
    ACanvas.StrokeEllipse(SquareOf(std::abs(GetSignalDistance())));
  }
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
