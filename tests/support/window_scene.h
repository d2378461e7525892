// A small scene for controls: shapes that can be dragged, seen through a camera.
#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "scene/System.Beacon.Fencing.Scene.Shapes.h"

namespace System::Beacon::Fencing::Scene {

/// A rectangle, an ellipse and a line, 100 units wide; writes down what the pointer does to them.
struct TWindowScene {
  explicit TWindowScene(std::string* ALog = nullptr) : Log(ALog) {
    const auto Camera = New<TCamera>();
    Camera->SetFrustum({0, 0, 100, 100});
    Scene->SetCamera(Camera);
    Add(New<TRectangle>(), "box", {0xFF3366CC})->SetRect({10, 10, 30, 25});
    Add(New<TEllipse>(), "ball", {0x80CC3366})->SetRect({40, 20, 70, 50});
    Add(New<TSegment>(), "line", {})->SetRect({5, 55, 90, 35});
  }

  template <class TShapeClass>
  TRef<TShapeClass> Add(const TRef<TShapeClass>& AShape, const char* AName, TAlphaColor AColor) {
    AShape->SetName(AName);
    AShape->SetFillColor(AColor);
    AShape->SetStrokeThickness(3);
    AShape->ConnectMouseDown([this](ISceneNode* ANode, const TPointF&) { Write("down", ANode); });
    AShape->ConnectMouseUp([this](ISceneNode* ANode, const TPointF&) { Write("up", ANode); });
    AShape->ConnectMouseEnter([this](ISceneNode* ANode) { Write("enter", ANode); });
    AShape->ConnectMouseExit([this](ISceneNode* ANode) { Write("exit", ANode); });
    AShape->ConnectMouseMove([this](ISceneNode* ANode, const TPointF&, bool ADragged) {
      if (!ADragged) return;
      auto& Shape = *Supports<IShape>(ANode);
      Shape.SetDisplacement(Shape.GetDisplacement() + Scene->GetMouseDelta());
    });
    Shapes.push_back(TRef<TShapeBase>(AShape.Get()));
    Scene->AddChild(AShape);
    return AShape;
  }
  void Write(const char* AWhat, const INode* ANode) const {
    if (Log) *Log += std::string(AWhat) + " " + ANode->GetName() + "; ";
  }

  std::string* Log;
  TRef<TScene> Scene = New<TScene>();
  std::vector<TRef<TShapeBase>> Shapes;
};

}  // namespace System::Beacon::Fencing::Scene
