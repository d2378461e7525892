#include "scene/System.Beacon.Fencing.Scene.Shapes.h"

namespace System::Beacon::Fencing::Scene {

const TClassInfo& TShapeBase::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Shapes.TShapeBase",
      .Base = &TLocationShape::ClassInfo(),
      .Properties = {
          Published<&TShapeBase::GetFillColor, &TShapeBase::SetFillColor>("FillColor"),
          Published<&TShapeBase::GetStrokeColor, &TShapeBase::SetStrokeColor>("StrokeColor"),
          Published<&TShapeBase::GetStrokeThickness, &TShapeBase::SetStrokeThickness>(
              "StrokeThickness"),
          Published<&TShapeBase::GetBitmapPath, &TShapeBase::SetBitmapPath>("BitmapPath"),
          Published<&TShapeBase::GetRect, &TShapeBase::SetRect>("Rect"),
          Published<&TShapeBase::GetEnableFill, &TShapeBase::SetEnableFill>("EnableFill")}};
  return Info;
}

bool TShapeBase::InvalidatePropertyValue(const std::string& AValue) {
  const TRef<TNode> Keep(this);
  const std::string Path = FBrush.GetBitmapPath();
  if (!SameName(AValue, Path)) return false;
  FBrush.SetBitmapPath("", *this);
  FBrush.SetBitmapPath(Path, *this);
  Repaint();
  return true;
}

void TShapeBase::SetScene(TScene* AScene) {
  const TRef<TNode> Keep(this);
  TLocationShape::SetScene(AScene);
  FBrush.SettedScene(GetSceneObject(), *this);
}

void TShapeBase::DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  const TMatrix Global = AMatrix * GetLocalMatrix();
  if (const TScene* const Scene = GetSceneObject()) {
    FBrush.SetupBrushes(ACanvas, *this);
    ACanvas.SetMatrix(Global * Scene->GetViewProjectionViewportMatrix());
    Draw(ACanvas);
  }
  PaintChildren(ACanvas, Global);
}

TRef<Canvas::IPolygon> TShapeBase::GetRectPolygon(Canvas::ICanvas& ACanvas) {
  return ACanvas.GetRectPolygon();
}

TRef<Canvas::IPolygon> TShapeBase::GetPolygonForCorners(Canvas::ICanvas& ACanvas,
                                                        const TCorners& ACorners) {
  TRef<Canvas::IPolygon> Result = GetRectPolygon(ACanvas);
  for (int I = 0; I < 5; ++I)
    Result->SetPointAt(I, ACorners.Points[static_cast<std::size_t>(I % 4)]);
  return Result;
}

}  // namespace System::Beacon::Fencing::Scene
