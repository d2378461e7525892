#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "map/route_line.h"

namespace System::Beacon::Fencing::Scene::Beacons {

const TClassInfo& TMap::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TMap",
      .Base = &TRectangle::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TMap>()); },
      .Properties = {
          Published<&TMap::GetRepresentationDisplacement, &TMap::SetRepresentationDisplacement>(
              "RepresentationDisplacement"),
          Published<&TMap::GetDescriptionList, &TMap::SetDescriptionList>("DescriptionList"),
          Published<&TMap::GetMeasureUnits, &TMap::SetMeasureUnits>("MeasureUnits")}};
  return Info;
}

TMap::TMap() {
  SetRect({0.0F, 0.0F, 10.0F, 10.0F});
  SetFillColor(TAlphaColor{0xFFAA99BB});
}

void TMap::SetMeasureUnits(TMeasureUnits AValue) {
  if (AValue == FMeasureUnits) return;
  const TMeasureUnits Old = std::exchange(FMeasureUnits, AValue);
  Repaint();
  EmitPropertyChange(static_cast<INode*>(this),
                     std::string("MeasureUnits"),
                     TValue::From(Old),
                     TValue::From(AValue));
}

void TMap::HighLitCustomPath(std::span<const TPathNodeInfo> APoints,
                             std::span<const std::int32_t> APath) {
  FCustomPathHighLitPoints.clear();
  FCustomPathHighLitPaths.clear();
  bool IsInRun = false;
  for (const std::int32_t Vertex : APath) {
    const auto Index = static_cast<std::size_t>(Vertex);
    const bool IsHere = Index < APoints.size() && IsSame(APoints[Index].Map.Get(), this);
    if (IsHere) {
      if (!IsInRun) FCustomPathHighLitPaths.emplace_back();
      FCustomPathHighLitPaths.back().push_back(
          static_cast<std::int32_t>(FCustomPathHighLitPoints.size()));
      FCustomPathHighLitPoints.push_back(APoints[Index].GlobalPosition);
    }
    IsInRun = IsHere;
  }
  ChangedExtent();
  Repaint();
}

TExtent TMap::GetExtent() const {
  if (!FCustomPathHighLitPaths.empty()) return {};
  return TExtent::Of<TMap>(GetRect(), FBrush.GetStrokeReach());
}

void TMap::Draw(Canvas::ICanvas& ACanvas) {
  TRectangle::Draw(ACanvas);
  if (!FCustomPathHighLitPaths.empty()) DrawRoute(ACanvas);
}

void TMap::DrawRoute(Canvas::ICanvas& ACanvas) const {
  SetRouteStroke(ACanvas, TAlphaColor{0xFF22AA33}, GetOpacity());
  ACanvas.SetMatrix(GetSceneObject()->GetViewProjectionViewportMatrix());
  for (const std::vector<std::int32_t>& Run : FCustomPathHighLitPaths) {
    std::vector<TPointF> Points;
    for (const std::int32_t Index : Run)
      Points.push_back(FCustomPathHighLitPoints[static_cast<std::size_t>(Index)]);
    DrawRouteLine(ACanvas, Points);
  }
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
