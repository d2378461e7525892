#include <cmath>
#include <filesystem>
#include <utility>

#include "scene/System.Beacon.Fencing.Scene.Shapes.h"

namespace System::Beacon::Fencing::Scene {
namespace {

bool IsFile(const std::string& APath) {
  std::error_code Ignored;
  return std::filesystem::is_regular_file(APath, Ignored);
}

TRef<Canvas::IBitmap> BitmapFromBundle(const IScene& AScene, const std::string& APath) {
  const TRef<Canvas::IBundle> Bundle = AScene.GetBundle();
  return Bundle ? Bundle->GetImageForPath(APath) : nullptr;
}

}  // namespace

void TBrush::SetFillColor(TAlphaColor AColor, TSceneNode& ANode) {
  FFillColor = AColor;
  ANode.Repaint();
}

void TBrush::SetStrokeColor(TAlphaColor AColor, TSceneNode& ANode) {
  FStrokeColor = AColor;
  ANode.Repaint();
}

void TBrush::SetEnableFill(bool AValue, TSceneNode& ANode) {
  if (AValue == FEnableFill) return;
  FEnableFill = AValue;
  ANode.Repaint();
}

void TBrush::SetStrokeThickness(float AValue, TSceneNode& ANode) {
  if (!std::isfinite(AValue)) return;
  FStrokeThickness = AValue;
  ANode.ChangedExtent();
  ANode.Repaint();
}

void TBrush::SetBitmap(const TRef<Canvas::IBitmap>& ABitmap, TSceneNode& ANode) {
  FBitmap = ABitmap;
  ANode.Repaint();
}

void TBrush::SetBitmapPath(const std::string& APath, TSceneNode& ANode) {
  if (APath == FBitmapPath) return;
  const std::string NewPath(APath.begin(), APath.end());  // may be the node's own
  const std::string OldPath = std::exchange(FBitmapPath, NewPath);
  const IScene* const Scene = ANode.GetScene();
  SetBitmap(Scene && IsFile(NewPath) ? BitmapFromBundle(*Scene, NewPath) : nullptr, ANode);
  ANode.EmitPropertyChange(static_cast<INode*>(&ANode),
                           std::string("BitmapPath"),
                           TValue::From(OldPath),
                           TValue::From(NewPath));
}

void TBrush::SettedScene(const IScene* AScene, TSceneNode& ANode) {
  if (!AScene || FBitmapPath.empty() || FBitmap) return;
  SetBitmap(BitmapFromBundle(*AScene, FBitmapPath), ANode);
}

void TBrush::SetupBrushes(Canvas::ICanvas& ACanvas, const TSceneNode& ANode) const {
  const float Opacity = ANode.GetOpacity();
  ACanvas.SetStrokeColor(FStrokeColor, Opacity);
  ACanvas.SetStrokePattern(Canvas::TStrokePattern::Solid);
  ACanvas.SetStrokeWidth(FStrokeThickness, true);
  if (FBitmap)
    ACanvas.SetFillBitmap(FBitmap, Opacity);
  else
    ACanvas.SetFillColor(FFillColor, Opacity);
}

}  // namespace System::Beacon::Fencing::Scene
