// Operations over nodes, corners, matrices and cameras that need nothing but interfaces and values.
// Those over nodes and cameras on the scene thread only, all others on any.
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

/// Operations over the names in a scene.
class TSceneHelper {
 public:
  /// The names, in their order, whose node shares at least one mode with the modes. A name stands
  /// for the first node of the scene that has it.
  static TNames FilterObjectsWithMode(TModeSet AModes, IScene* AScene, const TNames& ANames);
};

// ---------------------------------------------------------------- corners, matrices, values

/// Operations over corners. Pure.
class TCornersHelper {
 public:
  static TCorners GetCorners(const TRectF& ARect);
  /// What bounds the corners.
  static TRectF GetRect(const TCorners& ACorners);
  static TCorners MultiplyCorners(const TMatrix& AMatrix, const TCorners& ACorners);
  static TCorners MultiplyRect(const TMatrix& AMatrix, const TRectF& ARect);
  /// Whether a point is in the parallelogram of corners 0, 1 and 3, its outline included; never in
  /// one without area.
  static bool Contains(const TCorners& ACorners, TPointF APoint);
  /// A rectangle of the frame that two axes span at an origin.
  static TCorners CreateCorners(const TRectF& ARect,
                                TPointF AnOrigin,
                                TPointF AnAxisX,
                                TPointF AnAxisY);
  /// The quadrilateral whose edges stand further out, the left one by `ADistances.Left` and so on;
  /// corners may run either way round. A corner whose edges are parallel or have no length stays.
  static TCorners Expand(const TCorners& ACorners, const TRectF& ADistances);
  /// Where the segment from `AFrom` to `ATo` meets the outline, at the place nearest to `AFrom`.
  /// False, and `APoint` as it was, when it does not. An edge along the segment is not met.
  static bool GetIntersection(TPointF AFrom,
                              TPointF ATo,
                              const TCorners& ACorners,
                              TPointF& APoint);
};

/// Operations over matrices. Pure.
class TMatrixHelper {
 public:
  /// A vector times the matrix: turned and scaled, not moved.
  static TPointF MultiplyNormal(const TMatrix& AMatrix, TPointF AVector);
  /// How long (1, 0) and (0, 1) become.
  static TPointF GetScaling(const TMatrix& AMatrix);
  /// Takes a matrix apart; the rotation, in radians, is that of the X axis.
  static void GetSRT(const TMatrix& AMatrix,
                     TPointF& ATranslation,
                     float& ARotation,
                     TPointF& AScaling);
};

/// Operations over numbers. Pure.
class TValueHelper {
 public:
  /// The nearest multiple of 1 / `AStep`, ties to even. The value itself for a step that is 0 or
  /// not finite, and where the result would not be finite.
  static float AlignValue(float AValue, float AStep);
  /// The same for each coordinate.
  static TPointF AlignValue(TPointF APoint, float AStep);
};

/// (0, 0, width, height).
TRectF ToLocalRect(const TRectF& ARect);

// ---------------------------------------------------------------- cameras

/// Aims cameras. No camera, no node: nothing happens.
class TCameraHelper {
 public:
  /// Moves a camera to the centre of a rectangle of global space, and sets its frustum so that the
  /// rectangle fills the screen, undistorted, in one direction; with a factor above 1 there is room
  /// around it. Without a scene the camera's own. Only moves the camera when the rectangle is
  /// empty, the factor is not above 0, or there is no scene or screen size.
  static void FocusRect(ICamera* ACamera, IScene* AScene, const TRectF& ARect, float AFactor);
  /// The same with the global rectangle of a node.
  static void FocusNode(ICamera* ACamera, IScene* AScene, const ISceneNode* ANode, float AFactor);
};

}  // namespace System::Beacon::Fencing::Scene
