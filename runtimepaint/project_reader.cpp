#include "runtimepaint/project_reader.h"

#include <fmt/format.h>

#include <array>

#include "map/project_builder.h"
#include "persistence/System.Beacon.Fencing.Serializer.h"
#include "platform/errors.h"
#include "runtimepaint/messages.h"

namespace System::Beacon::Fencing {
namespace {

/// Gives the first scene that is made while this object lives its bundle.
class TSceneWatch final : public TObject {
 public:
  explicit TSceneWatch(TRef<Canvas::IBundle> ABundle) : FBundle(std::move(ABundle)) {
    Scene::TSceneRegistry::Connect(Bind<&TSceneWatch::Created>(this));
  }
  ~TSceneWatch() override { Scene::TSceneRegistry::Disconnect(this); }

 private:
  void Created(Scene::INode* ANode) {
    auto* const NewScene = Supports<Scene::IScene>(ANode);
    if (!NewScene || FIsPrepared) return;
    FIsPrepared = true;
    NewScene->SetBundle(FBundle);
  }

  TRef<Canvas::IBundle> FBundle;
  bool FIsPrepared = false;
};

}  // namespace

TRef<Scene::TScene> ReadSceneOf(const TRef<Canvas::IBundle>& ABundle,
                                const std::string& AFileName) {
  const std::string Entry(Scene::Beacons::SceneEntry);
  const std::string Text = ABundle->GetStringForKey(Entry);
  if (Text.empty()) throw EGeneralError(fmt::format(Messages::SNoScene, AFileName));
  const TSceneWatch Watch(ABundle);
  const std::array<TCreator, 1> Creators{&Scene::Beacons::GetDefaultClassLoader};
  TRef<TInterfacedObject> Object;
  TRef<IInterface> Ignored;
  UnserializeFromXMLString(
      Object, Ignored, Text, Creators, fmt::format("{}: {}", AFileName, Entry));
  TRef<Scene::TScene> Result(dynamic_cast<Scene::TScene*>(Object.Get()));
  if (!Result) throw EGeneralError(fmt::format(Messages::SNotAScene, AFileName));
  Result->SetBundle(ABundle);  // a listener may have made a scene before this one was announced
  return Result;
}

}  // namespace System::Beacon::Fencing
