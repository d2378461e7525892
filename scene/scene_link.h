// How nodes know the scene that they belong to.
#pragma once

#include "platform/object.h"
#include "platform/ref.h"

namespace System::Beacon::Fencing::Scene {

class TScene;

/// Common to a scene and its nodes; the scene clears it when it goes, so that no node is left with
/// a pointer to it.
class TSceneLink final : public TInterfacedObject {
 public:
  explicit TSceneLink(TScene* AScene) : Scene(AScene) {}
  TScene* Scene;
};

}  // namespace System::Beacon::Fencing::Scene
