// What may be wrong with the names of path nodes and with the links between them.
#include <fmt/format.h>

#include <set>
#include <string>
#include <unordered_map>

#include "apps/wayfence/project_faults.h"
#include "apps/wayfence/scene_walk.h"
#include "scene/name_case.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;
using Scene::INode;
using Scene::WithoutCase;

namespace {

void CheckNodeNames(INode* AScene, TFaults& AFaults) {
  std::unordered_map<std::string, TMapPathNode*> ByName, ByFolded;
  for (TMapPathNode* Node : NodesOf<TMapPathNode>(AScene)) {
    const auto [Same, IsNew] = ByName.emplace(Node->GetName(), Node);
    const auto [Like, IsFirst] = ByFolded.emplace(WithoutCase(Node->GetName()), Node);
    if (!IsNew)
      AFaults.AddError(TFaults::PlaceOf(*Node),
                       fmt::format("the node has the name of '{}'; both count as one place: give "
                                   "it another name",
                                   TFaults::PlaceOf(*Same->second)));
    else if (!IsFirst)
      AFaults.AddWarning(TFaults::PlaceOf(*Node),
                         fmt::format("its name and that of '{}' differ by letter case only; links "
                                     "lead to the first of them: give it another name",
                                     TFaults::PlaceOf(*Like->second)));
  }
}

/// What a link can mean by a name.
struct TNamesake {
  INode* First = nullptr;            ///< what is found, depth first
  TMapPathNode* PathNode = nullptr;  ///< what was likely meant
};

/// Checks links against the nodes of their scene.
class TLinkCheck {
 public:
  TLinkCheck(INode* AScene, TFaults& AFaults) : FFaults(AFaults) {
    for (INode* Node : NodesOf<INode>(AScene)) {
      TNamesake& Known = FByName[WithoutCase(Node->GetName())];
      if (!Known.First) Known.First = Node;
      if (!Known.PathNode) Known.PathNode = dynamic_cast<TMapPathNode*>(Node);
    }
  }

  /// Each name is told once.
  void Check(TConnectingNodes& ALinks) {
    std::set<std::string> Told;
    for (const auto& [From, To] : ALinks.GetConnections())
      for (const std::string& Name : {From, To})
        if (Told.insert(WithoutCase(Name)).second)
          CheckEnd(TFaults::PlaceOf(ALinks), fmt::format("the link '{}' to '{}'", From, To), Name);
  }

 private:
  void CheckEnd(const std::string& APlace, const std::string& ALink, const std::string& AName) {
    const auto Found = FByName.find(WithoutCase(AName));
    if (Found == FByName.end())
      return FFaults.AddError(
          APlace, fmt::format("{} names '{}', which no node has; correct the name", ALink, AName));
    const auto [First, PathNode] = Found->second;
    if (First == PathNode) return;
    const std::string Class(First->GetObject()->GetClassInfo().GetShortName());
    const std::string Leads =
        fmt::format("{} leads to the {} '{}'", ALink, Class, TFaults::PlaceOf(*First));
    if (PathNode)
      FFaults.AddError(APlace,
                       fmt::format("{}, which hides the path node '{}' of the same name; give one "
                                   "of them another name",
                                   Leads,
                                   TFaults::PlaceOf(*PathNode)));
    else if (!Supports<Scene::IShape>(First))
      FFaults.AddError(APlace,
                       Leads + ", which is no place, so there is no link; name a path node");
    else
      FFaults.AddWarning(APlace,
                         Leads +
                             ", which is no path node, so routes have a point without a name "
                             "there; name a path node");
  }

  std::unordered_map<std::string, TNamesake> FByName;
  TFaults& FFaults;
};

}  // namespace

void CheckLinks(const TProjectFile& AProject, TFaults& AFaults) {
  INode* const Scene = AProject.Scene.Get();
  CheckNodeNames(Scene, AFaults);
  TLinkCheck Check(Scene, AFaults);
  for (TConnectingNodes* Links : NodesOf<TConnectingNodes>(Scene)) Check.Check(*Links);
}

}  // namespace Wayfence
