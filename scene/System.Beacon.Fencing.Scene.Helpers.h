// Operations over nodes that need nothing but their interfaces. Scene thread only.
#pragma once

#include <functional>
#include <string_view>

#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing::Scene {

using TVisitProc = std::function<void(INode* ANode)>;

/// Names are compared with letter case ignored. Walks go depth first, a node before its children.
class TNodeHelper {
 public:
  /// In order, those in mode `Edit` too.
  static TNames GetChildrenNames(const INode& ANode);
  static TNames GetNames(const TNodes& ANodes);
  /// The node and all that is below it.
  static TNodes GetSubnodes(INode* ANode);
  /// Calls an operation for the node and all that is below it; nothing when it is empty. The
  /// operation may change the children of the node that it is called for.
  static void Visit(INode* ANode, const TVisitProc& AProc);
  /// The first node with a name, by its name, its alias or either.
  static TRef<INode> FindNodeWithName(INode* ANode,
                                      std::string_view AName,
                                      bool AByName,
                                      bool AByAlias);
  /// The first node for each name, in the order of the names; unknown ones are skipped. One walk
  /// for all names.
  static TNodes FindNodesWithNames(INode* ANode, const TNames& ANames);
  /// Those of which it is `AValue` that they are in every one of the modes.
  static TNodes FilterNodesWithMode(const TNodes& ANodes, TModeSet AModes, bool AValue);
  /// Through each node's `SetMode`.
  static void EnableModes(const TNodes& ANodes, TModeSet AModes);
  static void DisableModes(const TNodes& ANodes, TModeSet AModes);
};

}  // namespace System::Beacon::Fencing::Scene
