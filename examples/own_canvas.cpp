// A canvas of one's own: it writes what a scene draws as an SVG picture. `TPathCanvas` turns every
// shape into a path, so that only paths, text and paints are left to do.
#include <cstdio>
#include <string>

#include "map/project_builder.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/canvas/path_canvas.h"

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Canvas;

constinit TRectPolygonPool RectPolygons;

class TSvgCanvas final : public TPathCanvas {
 public:
  TSvgCanvas() : TPathCanvas(RectPolygons) {}
  std::string GetText() const { return FText; }

  TCanvasType GetCanvasType() const override { return "svg"; }
  void BeginScene(const TRef<ILayer>&) override { FText.clear(); }
  void EndScene() override {}
  TRef<IPolygon> CreatePolygon() override { return New<TPointsPolygon>(GetCanvasType()); }
  void SetFillColor(TAlphaColor AColor, float AOpacity) override {
    FFill = Paint(AColor, AOpacity);
  }
  void SetStrokeColor(TAlphaColor AColor, float AOpacity) override {
    FStroke = Paint(AColor, AOpacity);
  }
  void SetFillBitmap(const TRef<IBitmap>&, float) override { FFill = "none"; }
  void SetStrokeBitmap(const TRef<IBitmap>&, float) override { FStroke = "none"; }
  void SetStrokeWidth(float AWidth, bool) override { FWidth = AWidth; }
  void SetStrokePattern(TStrokePattern) override {}
  void Clear(TAlphaColor) override { FText.clear(); }
  void DrawText(const std::string&, TPointF) override {}
  TPointF MeasureString(const std::string&) override { return {}; }
  TRectF GetPaintArea() const override { return {0, 0, 800, 600}; }

 protected:
  void Paint(const TPath& APath, TParts AParts) override {
    static constexpr const char* Letters[] = {"M", "L", "C", "Z"};
    static constexpr int PointCounts[] = {1, 1, 3, 0};
    FText += "<path d=\"";
    auto Point = APath.GetPoints().begin();
    for (const TPathStep Step : APath.GetSteps()) {
      FText += Letters[static_cast<std::size_t>(Step)];
      for (int I = 0; I < PointCounts[static_cast<std::size_t>(Step)]; ++I) {
        const TPointF Place = *Point++ * GetMatrix();
        FText += std::to_string(Place.X) + " " + std::to_string(Place.Y) + " ";
      }
    }
    FText += "\" fill=\"" + (AParts.Fill ? FFill : "none") + "\" stroke=\"" +
             (AParts.Stroke ? FStroke : "none") + "\" stroke-width=\"" + std::to_string(FWidth) +
             "\"/>\n";
  }
  TRef<IBitmap> NewBitmap() override { return nullptr; }

 private:
  static std::string Paint(TAlphaColor AColor, float AOpacity) {
    char Text[16];
    const auto Alpha = static_cast<unsigned>(static_cast<float>(AColor.GetAlpha()) * AOpacity);
    std::snprintf(Text, sizeof Text, "#%06X%02X", AColor.Value & 0xFFFFFFU, Alpha);
    return Text;
  }

  std::string FText, FFill = "white", FStroke = "black";
  float FWidth = 1;
};

int main() {
  Scene::Beacons::TProjectBuilder Project("Shop");
  Scene::Beacons::TMapBuilder Floor = Project.AddMap("Floor", 12, 8);
  Floor.AddZone("Entrance", {0, 0, 3, 8});
  Floor.AddCircularZone("Till", {10, 2}, 1.5F);
  Floor.AddPath("Aisle", {{"Way in", {1, 4}}, {"Crossing", {6, 4}}, {"Shelf", {11, 4}}});

  const auto Camera = New<Scene::TCamera>();
  Project.GetScene()->SetCamera(Camera);
  Project.GetScene()->GetViewport()->SetScreenSize(800, 600);
  Scene::TCameraHelper::FocusRect(
      Camera.Get(), Project.GetScene().Get(), Project.GetScene()->GetRect(), 1.01F);
  const auto Canvas = New<TSvgCanvas>();
  Project.GetScene()->PaintScene(nullptr, Canvas);
  std::printf("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"800\" height=\"600\">\n%s</svg>\n",
              Canvas->GetText().c_str());
}
