#include <utility>

#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing::Scene {
namespace {

using TCreatedObject = TEventKind<8, 8, TCreatedObjectEvent>;
using TChangedName = TEventKind<16, 16, TNameChangeEvent>;

/// Never destroyed: nodes and listeners may live longer than other statics.
TEventList& Events() {
  static TEventList* const List = new TEventList;
  return *List;
}

}  // namespace

void TSceneRegistry::Connect(TCreatedObjectEvent AnEvent) {
  Events().AddEvent(TCreatedObject::Mask, TCreatedObject::Id, std::move(AnEvent));
}
void TSceneRegistry::Disconnect(const TCreatedObjectEvent& AnEvent) {
  Events().RemoveEvent(TCreatedObject::Mask, TCreatedObject::Id, AnEvent);
}
void TSceneRegistry::Connect(TNameChangeEvent AnEvent) {
  Events().AddEvent(TChangedName::Mask, TChangedName::Id, std::move(AnEvent));
}
void TSceneRegistry::Disconnect(const TNameChangeEvent& AnEvent) {
  Events().RemoveEvent(TChangedName::Mask, TChangedName::Id, AnEvent);
}
void TSceneRegistry::Disconnect(const TObject* AnObject) {
  Events().RemoveEvent(AnObject);
}

void TSceneRegistry::EmitCreatedObject(INode* ANewNode) {
  TEventCall<INode*>::Call(Events(), TCreatedObject::Mask, TCreatedObject::Id, ANewNode);
}
void TSceneRegistry::EmitChangedName(INode* ANode,
                                     const std::string& AnOldName,
                                     const std::string& ANewName) {
  TEventCall<INode*, const std::string&, const std::string&>::Call(
      Events(), TChangedName::Mask, TChangedName::Id, ANode, AnOldName, ANewName);
}

}  // namespace System::Beacon::Fencing::Scene
