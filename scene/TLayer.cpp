#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace System::Beacon::Fencing::Scene {

const TClassInfo& TLayer::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Classes.TLayer",
      .Base = &TSceneNode::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TLayer>()); },
  };
  return Info;
}

TRectF TLayer::GetRect() const {
  TRectF Result;
  for (std::int32_t I = 0; I < GetSceneChildCount(); ++I)
    if (const auto* Shape = Supports<IShape>(GetSceneChildAt(I)))
      if (const TRectF Rect = Shape->GetGlobalRect(); !Rect.IsEmpty())
        Result = UnionRect(Result, Rect);
  return Result;
}

void TLayer::SetDisplacement(const TPointF& ADelta) {
  const TRef<TNode> Keep(this);
  const TPointF Delta = ADelta;
  for (std::int32_t I = 0; I < GetSceneChildCount(); ++I)
    if (const TRef<IShape> Shape = Supports<IShape>(GetSceneChildAt(I)))
      Shape->SetDisplacement(Shape->GetDisplacement() + Delta);
}

}  // namespace System::Beacon::Fencing::Scene
