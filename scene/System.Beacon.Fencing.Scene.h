// What a scene consists of, as interfaces; modes; and the registry that announces nodes. Scene
// thread only, all of it.
//
// There are three spaces: local (a node's own), global (the scene's), screen (pixels of a viewport,
// Y downwards). A point p is taken from one to the next as p × M.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/enum_set.h"
#include "platform/geometry.h"
#include "platform/guid.h"
#include "platform/ref.h"
#include "platform/reflection.h"
#include "scene/System.Beacon.Fencing.Scene.Events.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.h"

namespace System::Beacon::Fencing::Scene {

// ---------------------------------------------------------------- modes

/// `Visible`: the node and what is below it are painted. `Edit`: an aid of editors that is not
/// stored. `Active`: the node and what is below it are found under a point.
enum class TMode : std::uint8_t { Visible, Edit, Active };

/// A set of modes as a code of 32 bits: bit n for ordinal n. Other bits may be set, too.
class TModeSet {
 public:
  using TModeSetSet = TSet<TMode>;

  constexpr TModeSet() = default;
  constexpr TModeSet(std::initializer_list<TMode> AModes) { *this = CreateWithArray(AModes); }
  constexpr TModeSet(std::span<const TMode> AModes) { *this = CreateWithArray(AModes); }
  constexpr TModeSet(TModeSetSet AModes) : FMode(AModes.GetBits()) {}

  constexpr void Init() { FMode = 0; }
  static constexpr TModeSet CreateWithArray(std::span<const TMode> AModes) {
    TModeSet Result;
    for (const TMode Mode : AModes) Result.Enable(Mode);
    return Result;
  }
  static constexpr TModeSet CreateWithArray(std::initializer_list<TMode> AModes) {
    return CreateWithArray(std::span<const TMode>(AModes.begin(), AModes.size()));
  }
  /// Every bit but those of the modes.
  static constexpr TModeSet CreateWithNotArray(std::span<const TMode> AModes) {
    TModeSet Result = CreateWithArray(AModes);
    Result.FMode = ~Result.FMode;
    return Result;
  }
  static constexpr TModeSet CreateWithNotArray(std::initializer_list<TMode> AModes) {
    return CreateWithNotArray(std::span<const TMode>(AModes.begin(), AModes.size()));
  }

  constexpr bool Contains(TMode AMode) const { return (FMode & BitOf(AMode)) != 0; }
  /// Whether every mode of the other set is in this one.
  constexpr bool Contains(TModeSet AMode) const { return (FMode & AMode.FMode) == AMode.FMode; }
  constexpr bool ContainsSomeMode(TModeSet AMode) const { return (FMode & AMode.FMode) != 0; }
  constexpr std::uint32_t GetCode() const { return FMode; }
  constexpr void Enable(TMode AMode) { FMode |= BitOf(AMode); }
  constexpr void Enable(TModeSet AMode) { FMode |= AMode.FMode; }
  constexpr void Disable(TMode AMode) { FMode &= ~BitOf(AMode); }
  constexpr void Disable(TModeSet AMode) { FMode &= ~AMode.FMode; }

 private:
  static constexpr std::uint32_t BitOf(TMode AMode) {
    return std::uint32_t{1} << static_cast<unsigned>(AMode);
  }

  std::uint32_t FMode = 0;
};

// ---------------------------------------------------------------- kinds of events

class INode;
class ISceneNode;
class IScene;
class IViewport;
class ICamera;
class IControlPointsShape;

/// A kind of event: its id among all kinds, its filter bit, its handler's type.
template <std::uint16_t AnId, TEventMask AMask, class THandler>
struct TEventKind {
  static constexpr std::uint16_t Id = AnId;
  static constexpr TEventMask Mask = AMask;
  using TEvent = THandler;
};

using TParentChangeEvent = TMethod<void(INode* ANode, INode* AnOldParent, INode* ANewParent)>;
using TDestroyingEvent = TMethod<void(INode* ANode)>;
using TPropertyChangeEvent = TMethod<void(INode* ANode,
                                          const std::string& APropertyName,
                                          const TValue& AnOldValue,
                                          const TValue& ANewValue)>;
/// `AResized`: there are more or fewer points than before.
using TControlPointsChangeEvent = TMethod<void(IControlPointsShape* AShape, bool AResized)>;
using TNameChangeEvent =
    TMethod<void(INode* ANode, const std::string& AnOldName, const std::string& ANewName)>;
using TDidMoveEvent = TMethod<void(ISceneNode* ANode)>;
using TWillMoveEvent = TMethod<void(ISceneNode* ANode)>;
using TSceneChangeEvent = TMethod<void(ISceneNode* ANode, IScene* AnOldScene, IScene* ANewScene)>;
using TMouseEnterEvent = TMethod<void(ISceneNode* ANode)>;
using TMouseExitEvent = TMethod<void(ISceneNode* ANode)>;
/// Points are in the node's own space; of a scene, in global space.
using TMouseMoveEvent = TMethod<void(ISceneNode* ANode, const TPointF& APoint, bool ADragged)>;
using TMouseDownEvent = TMethod<void(ISceneNode* ANode, const TPointF& APoint)>;
using TMouseUpEvent = TMethod<void(ISceneNode* ANode, const TPointF& APoint)>;
using TRectChangeEvent =
    TMethod<void(ISceneNode* ANode, const TRectF& AnOldRect, const TRectF& ANewRect)>;

inline constexpr std::uint16_t DidMoveEventId = 0;
inline constexpr std::uint16_t WillMoveEventId = 1;
inline constexpr std::uint16_t SceneChangeEventId = 2;
inline constexpr std::uint16_t ParentChangeEventId = 3;
inline constexpr std::uint16_t DestroyingEventId = 4;
inline constexpr std::uint16_t PropertyChangeEventId = 5;
inline constexpr std::uint16_t ControlPointsChangeEventId = 6;
inline constexpr std::uint16_t NameChangeEventId = 7;
inline constexpr std::uint16_t MouseEnterEventId = 8;
inline constexpr std::uint16_t MouseExitEventId = 9;
inline constexpr std::uint16_t MouseMoveEventId = 10;
inline constexpr std::uint16_t MouseDownEventId = 11;
inline constexpr std::uint16_t MouseUpEventId = 12;
inline constexpr std::uint16_t RectChangeEventId = 13;

namespace EventKinds {
using ParentChange = TEventKind<ParentChangeEventId, 0x10, TParentChangeEvent>;
using Destroying = TEventKind<DestroyingEventId, 0x8, TDestroyingEvent>;
using PropertyChange = TEventKind<PropertyChangeEventId, 0x100, TPropertyChangeEvent>;
using ControlPointsChange =
    TEventKind<ControlPointsChangeEventId, 0x10000, TControlPointsChangeEvent>;
using NameChange = TEventKind<NameChangeEventId, 0x200, TNameChangeEvent>;
using DidMove = TEventKind<DidMoveEventId, 0x20, TDidMoveEvent>;
using WillMove = TEventKind<WillMoveEventId, 0x40, TWillMoveEvent>;
using SceneChange = TEventKind<SceneChangeEventId, 0x80, TSceneChangeEvent>;
using MouseEnter = TEventKind<MouseEnterEventId, 0x400, TMouseEnterEvent>;
using MouseExit = TEventKind<MouseExitEventId, 0x800, TMouseExitEvent>;
using MouseMove = TEventKind<MouseMoveEventId, 0x1000, TMouseMoveEvent>;
using MouseDown = TEventKind<MouseDownEventId, 0x2000, TMouseDownEvent>;
using MouseUp = TEventKind<MouseUpEventId, 0x4000, TMouseUpEvent>;
using RectChange = TEventKind<RectChangeEventId, 0x8000, TRectChangeEvent>;
}  // namespace EventKinds

/// Declares, in an interface, how handlers of a kind are connected: added, removed (the first that
/// is equal), and removed by receiver. Nothing removes the handlers of a receiver that dies.
#define FENCING_CONNECTS(KIND)                                                \
  virtual void Connect##KIND(EventKinds::KIND::TEvent AnEvent) = 0;           \
  virtual void Disconnect##KIND(const EventKinds::KIND::TEvent& AnEvent) = 0; \
  virtual void Disconnect##KIND##Object(const TObject* AnObject) = 0;

// ---------------------------------------------------------------- IEntity

/// Something with a name and an identifier. Two interfaces are the same entity when `GetObject`
/// is the same.
class IEntity : public virtual IInterface {
 public:
  virtual const std::string& GetName() const = 0;
  /// A name that is equal to the letter changes nothing; any other is announced.
  virtual void SetName(const std::string& AName) = 0;
  /// The name that is shown.
  virtual std::string GetAlias() const = 0;
  virtual TGUID GetId() const = 0;
  /// A new random identifier.
  virtual void ReassignId() = 0;
  /// The identifier becomes all zero.
  virtual void InvalidateId() = 0;
  /// By name, letter case ignored: an unknown property is ignored, reads as the empty value, is
  /// not contained.
  virtual void SetProperty(std::string_view AName, const TValue& AValue) = 0;
  virtual TValue GetProperty(std::string_view AName) const = 0;
  virtual bool ContainsProperty(std::string_view AName) const = 0;
  /// Whether editors show a property.
  virtual bool AllowDesignProperty(std::string_view AName) const = 0;
  /// Asks the entity to read again what it has made of a value; whether it had.
  virtual bool InvalidatePropertyValue(const std::string& AValue) = 0;
  /// Leaves its parent.
  virtual void Detach() = 0;

 protected:
  ~IEntity() = default;
};

// ---------------------------------------------------------------- INode

using TNodes = std::vector<TRef<INode>>;
using TNames = std::vector<std::string>;

/// A node of a tree. A parent keeps its children; a child only looks at its parent. "Front" is
/// index 0: what is there is painted first, underneath its siblings. Names are compared with letter
/// case ignored. Nothing raises: what is not there answers nothing, -1 or false, or is ignored.
class INode : public virtual IEntity {
 public:
  /// From the root down to this node.
  virtual TNodes GetHierarchyPath() = 0;
  virtual std::int32_t GetChildCount() const = 0;
  /// The index is not checked.
  virtual TRef<INode> GetChildAt(std::int32_t AIndex) const = 0;
  /// The first child of a name.
  virtual TRef<INode> GetChild(std::string_view AName) const = 0;
  /// Appends a child, which leaves its former parent. Ignored: nothing, this node and its
  /// ancestors, and what is a child already.
  virtual void AddChild(const TRef<INode>& AChild) = 0;
  /// The same at the front.
  virtual void AddFrontChild(const TRef<INode>& AChild) = 0;
  /// The children but those in mode `Edit`.
  virtual TNodes GetChildren() const = 0;
  /// Replaces all children.
  virtual void SetChildren(const TNodes& AChildren) = 0;
  virtual bool RemoveChild(INode* AChild) = 0;
  /// A child, or a child of one of them, and so on.
  virtual bool RemoveDescendant(INode* ANode) = 0;
  /// From the last to the first.
  virtual void RemoveAllChilds() = 0;
  virtual bool ContainsChild(std::string_view AName) const = 0;
  virtual bool ContainsChild(const INode* ANode) const = 0;
  virtual std::int32_t GetChildIndex(std::string_view AName) const = 0;
  virtual std::int32_t GetChildIndex(const INode* ANode) const = 0;
  /// Moves a child, others keeping their order; whether it has moved.
  virtual bool SetChildIndex(INode* AChild, std::int32_t AIndex) = 0;
  /// To index 0; by names: in their order, before all others. Unknown names are skipped.
  virtual void MoveChildToFront(std::int32_t AIndex) = 0;
  virtual void MoveChildToFront(const TNames& ANames) = 0;
  /// To the last index; by names: in their order, after all others.
  virtual void MoveChildToBack(std::int32_t AIndex) = 0;
  virtual void MoveChildToBack(const TNames& ANames) = 0;
  /// The children of these names in this order, then the others in theirs.
  virtual void ReorderChildren(const TNames& ANames) = 0;
  virtual void SwapChildren(std::int32_t I, std::int32_t J) = 0;
  /// Nothing: leaves the parent. This node and what is below it are refused.
  virtual void SetParent(INode* AParent) = 0;
  virtual INode* GetParent() const = 0;
  /// The topmost ancestor, or this node.
  virtual INode* GetRootNode() = 0;
  virtual void SetMode(TModeSet AMode) = 0;
  /// Through `SetMode`.
  virtual void EnableModes(std::span<const TMode> AModes) = 0;
  virtual void DisableModes(std::span<const TMode> AModes) = 0;
  /// Changes the mode and nothing else: nobody is told, nothing repainted.
  virtual void EnableMode(TMode AMode) = 0;
  virtual void DisableMode(TMode AMode) = 0;
  virtual TModeSet GetMode() const = 0;

  FENCING_CONNECTS(PropertyChange)
  FENCING_CONNECTS(NameChange)
  FENCING_CONNECTS(Destroying)
  FENCING_CONNECTS(ParentChange)
  /// Removes every handler of a receiver, of any kind.
  virtual void DisconnectEventObject(const TObject* AnObject) = 0;

 protected:
  ~INode() = default;
};

// ---------------------------------------------------------------- ISceneNode

/// The corners of a rectangle: (Left, Top), (Right, Top), (Right, Bottom), (Left, Bottom).
struct TCorners {
  std::array<TPointF, 4> Points{};
};

using TSceneNodes = std::vector<ISceneNode*>;

/// A node that is painted and found under points.
///
/// A node's global matrix is the global matrix of its scene parent times its own local matrix, in
/// this order: a point passes through the parent's matrix first. So a node that is turned or scaled
/// turns and scales the place of its parent, too; under a parent that has been moved it does not
/// stay where one would put it. Trees in which only leaves are turned or scaled, and stand under
/// parents that are not moved, are not concerned.
class ISceneNode : public virtual INode {
 public:
  virtual ISceneNode* GetSceneParent() const = 0;
  /// The children that are scene nodes, in their order.
  virtual std::int32_t GetSceneChildCount() const = 0;
  virtual ISceneNode* GetSceneChildAt(std::int32_t AIndex) const = 0;
  virtual std::int32_t GetSceneChildIndex(const INode* ANode) const = 0;
  virtual IScene* GetScene() const = 0;
  /// Whether children are found, and counted for repainting, only inside this node.
  virtual void SetClipChildren(bool AValue) = 0;
  virtual bool GetClipChildren() const = 0;
  /// Paints the node and what is below it, in mode `Visible`; `AMatrix` is the global matrix of
  /// the parent.
  virtual void Paint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) = 0;
  /// Asks for the node's place on the screen to be drawn anew.
  virtual void Repaint() = 0;
  /// The same for a part of the node, local space.
  virtual void RepaintRect(const TRectF& ARect) = 0;
  /// Where the node shows, with what is below it or without, and so many pixels around. Screen
  /// space in a scene, else global space.
  virtual TRectF GetRepaintRect(bool AWithChildren, float AMargin) const = 0;
  /// From 0 to 1.
  virtual void SetOpacity(float AValue) = 0;
  virtual float GetOpacity() const = 0;
  /// What bounds the node in global space, with children down to so many levels (below 0: all).
  virtual TRectF GetGlobalRect() const = 0;
  virtual TRectF GetGlobalRectWithChildren(std::int32_t ADepth) const = 0;
  virtual TRectF GetScreenRect() const = 0;
  virtual TCorners GetLocalCorners() const = 0;
  virtual TCorners GetGlobalCorners() const = 0;
  virtual TMatrix GetGlobalMatrix() const = 0;
  virtual TMatrix GetInverseGlobalMatrix() const = 0;
  virtual TMatrix GetLocalMatrix() const = 0;
  virtual TMatrix GetInverseLocalMatrix() const = 0;
  virtual TPointF GlobalToLocal(TPointF APoint) const = 0;
  virtual bool IsUnderGlobalPoint(TPointF APoint) const = 0;
  /// The topmost node in mode `Active` that contains a point, of this one and what is below it.
  virtual ISceneNode* GetNodeUnderGlobalPoint(TPointF APoint) = 0;
  /// The same under a parent with the given global matrix; `ALocalPoint` is the point in the node.
  virtual ISceneNode* GetNodeUnderGlobalPoint(TPointF APoint,
                                              TPointF& ALocalPoint,
                                              const TMatrix& AParentMatrix) = 0;
  /// The same, and appends every node that contains the point, children before their parents.
  virtual ISceneNode* GetNodeUnderGlobalPoint(TPointF APoint,
                                              TPointF& ALocalPoint,
                                              const TMatrix& AParentMatrix,
                                              TSceneNodes& ANodes) = 0;
  /// What the pointer does; points are in local space.
  virtual void MouseEnter() = 0;
  virtual void MouseExit() = 0;
  virtual void MouseMove(IViewport* AViewport, TPointF APoint, bool ADragged) = 0;
  virtual void MouseDown(IViewport* AViewport, TPointF APoint) = 0;
  virtual void MouseUp(IViewport* AViewport, TPointF APoint) = 0;

  FENCING_CONNECTS(WillMove)
  FENCING_CONNECTS(SceneChange)
  FENCING_CONNECTS(DidMove)
  FENCING_CONNECTS(MouseEnter)
  FENCING_CONNECTS(MouseExit)
  FENCING_CONNECTS(MouseMove)
  FENCING_CONNECTS(MouseDown)
  FENCING_CONNECTS(MouseUp)

  /// The point of the node that is closest to a point of global space; in global space or local.
  virtual TPointF GetClosestPointToGlobalPoint(TPointF APoint, bool AGlobal) const = 0;

 protected:
  ~ISceneNode() = default;
};

// ---------------------------------------------------------------- IShape

/// A scene node with a rectangle and a place. Setters ignore what is not finite.
class IShape : public virtual ISceneNode {
 public:
  virtual bool ContainsDisplacement() const = 0;
  virtual bool ContainsRect() const = 0;
  virtual void SetDisplacement(const TPointF& APoint) = 0;
  virtual TPointF GetDisplacement() const = 0;
  virtual void SetScaling(const TPointF& AScaling) = 0;
  virtual TPointF GetScaling() const = 0;
  virtual void SetRotation(float ARadians) = 0;
  virtual float GetRotation() const = 0;
  /// Local space.
  virtual void SetRect(const TRectF& ARect) = 0;
  virtual TRectF GetRect() const = 0;
  virtual bool GetAllowRectModification() const = 0;
  /// The displacement that would take the node's origin to a point of global space.
  virtual TPointF GetDisplacementToGetGlobalPosition(TPointF APoint) const = 0;
  virtual void SetCenterInGlobalSpace(TPointF APoint) = 0;
  virtual TPointF GetCenterInGlobalSpace() const = 0;
  virtual void SetEnableFill(bool AValue) = 0;
  virtual bool GetEnableFill() const = 0;

  FENCING_CONNECTS(RectChange)

 protected:
  ~IShape() = default;
};

// ---------------------------------------------------------------- shapes of points

/// A line between two points: 0 is the start, 1 the end.
class ISegment : public virtual ISceneNode {
 public:
  /// Local space. Other indexes read (0, 0) and write nothing.
  virtual TPointF GetControlPointAt(std::int32_t AIndex) const = 0;
  virtual void SetControlPointAt(std::int32_t AIndex, TPointF APoint) = 0;

 protected:
  ~ISegment() = default;
};

/// A shape that is defined by a list of points in local space. Changes with an index that is out of
/// range, and coordinates that are not finite, are ignored.
class IControlPointsShape : public virtual IShape {
 public:
  /// Appends a point; whether it was accepted.
  virtual bool AddControlPoint(TPointF APoint) = 0;
  /// Puts a point before the one at an index, or at the end; whether it was accepted. Not
  /// announced, nothing is drawn anew: that is left to the caller.
  virtual bool AddControlPointAtIndex(std::int32_t AIndex, TPointF APoint) = 0;
  virtual void SetControlPointAt(std::int32_t AIndex, TPointF APoint) = 0;
  virtual void SetControlPoints(std::span<const TPointF> APoints) = 0;
  virtual std::int32_t GetControlPointCount() const = 0;
  /// (0, 0) when there is no such point, here and for the last and the first one.
  virtual TPointF GetControlPointAt(std::int32_t AIndex) const = 0;
  virtual TPointF GetLastControlPoint() const = 0;
  virtual TPointF GetFirstControlPoint() const = 0;
  virtual std::vector<TPointF> GetControlPoints() const = 0;
  /// The first one of several that are equally near; -1 without points. Local space.
  virtual std::int32_t GetClosestControlPointIndex(TPointF APoint) const = 0;
  /// Whether there was such a point.
  virtual bool RemoveControlPoint(std::int32_t AIndex) = 0;
  virtual void RemoveControlPoints() = 0;

  FENCING_CONNECTS(ControlPointsChange)

 protected:
  ~IControlPointsShape() = default;
};

/// A shape with an outline through its control points.
class IPolygonShape : public virtual IControlPointsShape {
 public:
  virtual void SetCloseContour(bool AValue) = 0;
  virtual bool GetCloseContour() const = 0;
  /// Whether the outline crosses itself, as far as that is known: it is looked at when points are
  /// added or changed, not when they are removed. More than 1,000 points count as complex.
  virtual bool IsComplex() const = 0;

 protected:
  ~IPolygonShape() = default;
};

/// A node that stands at a control point of the shape above it.
class IPathNode : public virtual ISceneNode {
 public:
  /// -1 when it stands at none.
  virtual std::int32_t GetControlPointIndex() const = 0;
  virtual void SetControlPointIndex(std::int32_t AIndex) = 0;
  virtual TPointF GetDisplacement() const = 0;

 protected:
  ~IPathNode() = default;
};

/// Two indexes of control points that a line joins.
using TConnection = TIntegerPair;
using TConnections = std::vector<TConnection>;
/// Two names of path nodes that a line joins.
using TNodeConnections = std::vector<TStringPair>;
using TPathNodes = std::vector<TRef<IPathNode>>;

/// Control points, some of which are joined by lines. Connections that name points that are not
/// there are kept, but neither drawn nor found. "Ordered" tells (a, b) from (b, a).
class IConnectedControlPointsShape : public virtual IControlPointsShape {
 public:
  /// Appends connections; nothing is drawn anew.
  virtual void AddControlPointConnections(std::span<const TConnection> AConnections) = 0;
  /// The connections that have a point at either end, in their order.
  virtual TConnections GetControlPointConnections(std::int32_t AIndex) const = 0;
  /// The node that stands at a control point; nothing when there is none.
  virtual TRef<IPathNode> GetControlPointNode(std::int32_t AIndex) = 0;
  /// The first node of a name, letter case ignored.
  virtual TRef<IPathNode> GetControlPointNode(std::string_view AName) = 0;
  /// The control point that a node stands at; -1 when it is none of this shape's.
  virtual std::int32_t GetControlPointNodeIndex(const IPathNode* ANode) const = 0;
  virtual bool ContainsConnection(std::int32_t AFrom, std::int32_t ATo, bool AnOrdered) const = 0;
  /// Removes every such connection; whether there was one.
  virtual bool RemoveControlPointsConnection(std::int32_t AFrom,
                                             std::int32_t ATo,
                                             bool AnOrdered) = 0;
  /// Appends a connection, also when there is an equal one.
  virtual void ConnectControlPoints(std::int32_t AFrom, std::int32_t ATo) = 0;
  virtual std::int32_t GetConnectionCount() const = 0;
  /// By control point; nothing where there is no node.
  virtual TPathNodes GetControlPointNodes() = 0;
  virtual void SetConnections(std::span<const TConnection> AConnections) = 0;
  virtual TConnections GetConnections() const = 0;
  /// Connects points by the names of their nodes; unknown names are skipped.
  virtual void AddNodeConnections(std::span<const TStringPair> AConnections) = 0;
  virtual TNodeConnections GetNodeConnections() = 0;
  /// Forgets which node stands where, to find it out anew.
  virtual void AdjustNodes() = 0;

 protected:
  ~IConnectedControlPointsShape() = default;
};

/// A node that stands for a shape. A scene that such a node is added to gives it a rectangle when
/// it has no shape yet.
class IShapeProxy : public virtual ISceneNode {
 public:
  virtual TRef<IShape> GetShape() const = 0;
  virtual void SetShape(const TRef<IShape>& AShape) = 0;

 protected:
  ~IShapeProxy() = default;
};

// ---------------------------------------------------------------- IViewport, ICamera

/// The drawing surface: its size in pixels.
class IViewport : public virtual IEntity {
 public:
  /// Does nothing.
  virtual void SetViewport(const TRectF& ARect) = 0;
  virtual TRectF GetViewport() const = 0;
  /// Width by height. Setters ignore what is not above 0.
  virtual void SetViewportAspectRatio(float AValue) = 0;
  virtual float GetViewportAspectRatio() const = 0;
  /// Not supported: raises `EGeneralError`.
  virtual void SetScreenAspectRatio(float AValue) = 0;
  virtual float GetScreenAspectRatio() const = 0;
  virtual void SetScreenSize(float AWidth, float AHeight) = 0;
  virtual TPointF GetScreenSize() const = 0;
  virtual TRectF GetScreenRect() const = 0;

 protected:
  ~IViewport() = default;
};

/// What a scene is looked at with: the frustum, a rectangle in the camera's own space, fills the
/// viewport.
class ICamera : public virtual IShape {
 public:
  /// Width by height; setting it changes the height. What is not above 0 is ignored.
  virtual float GetFrustumAspectRatio() const = 0;
  virtual void SetFrustumAspectRatio(float AValue) = 0;
  virtual void SetFrustum(const TRectF& ARect) = 0;
  virtual TRectF GetFrustum() const = 0;
  /// From global space to the camera's.
  virtual TMatrix GetViewMatrix() const = 0;
  /// From the camera's space to -1 to 1; the identity for a frustum that is next to nothing.
  virtual TMatrix GetProjectionMatrix() const = 0;

 protected:
  ~ICamera() = default;
};

// ---------------------------------------------------------------- IScene

/// The root of what is painted. Viewport arguments: nothing stands for the scene's own. Without a
/// camera, viewport and global space are the same.
class IScene : public virtual INode {
 public:
  virtual TRef<IViewport> GetViewport() const = 0;
  virtual void SetViewport(const TRef<IViewport>& AViewport) = 0;
  /// What the pointer does; points are in pixels of the viewport.
  virtual void MouseMove(IViewport* AViewport, TPointF APoint, bool ADragged) = 0;
  virtual void MouseDown(IViewport* AViewport, TPointF APoint) = 0;
  virtual void MouseUp(IViewport* AViewport, TPointF APoint) = 0;
  /// Emitted for every move.
  FENCING_CONNECTS(MouseMove)
  virtual ISceneNode* GetSceneNodeUnderViewportPoint(IViewport* AViewport, TPointF APoint) = 0;
  virtual ISceneNode* GetSceneNodeUnderViewportPoint(IViewport* AViewport,
                                                     TPointF APoint,
                                                     TSceneNodes& ANodes) = 0;
  virtual ISceneNode* GetSceneNodeUnderGlobalPoint(TPointF APoint) = 0;
  virtual ISceneNode* GetSceneNodeUnderGlobalPoint(TPointF APoint, TSceneNodes& ANodes) = 0;
  virtual TPointF ViewportSpaceToGlobalSpace(IViewport* AViewport, TPointF APoint) const = 0;
  virtual TPointF GlobalSpaceToViewportSpace(IViewport* AViewport, TPointF APoint) const = 0;
  /// Vectors are not moved, only turned and scaled; always by the scene's own viewport.
  virtual TPointF ViewportVectorToWorld(IViewport* AViewport, TPointF AVector) const = 0;
  virtual TPointF WorldVectorToViewport(IViewport* AViewport, TPointF AVector) const = 0;
  /// Global space.
  virtual TPointF GetMouseDownPoint() const = 0;
  virtual TPointF GetLastMouseMovePoint() const = 0;
  /// In the space of the node that was pressed, or that the pointer is over.
  virtual TPointF GetNodeMouseDownPoint() const = 0;
  virtual TPointF GetNodeLastMouseMovePoint() const = 0;
  /// The last movement of the pointer, global space.
  virtual TPointF GetMouseDelta() const = 0;
  /// Where damaged areas go; nothing: nowhere.
  virtual void SetInvalidator(const TRef<Canvas::IInvalidateRegion>& ARegion) = 0;
  virtual TRef<Canvas::IInvalidateRegion> GetInvalidateRegion() const = 0;
  virtual void Repaint() = 0;
  /// Paints the whole scene into a layer. What painting raises goes on after the canvas was told
  /// that the scene has ended.
  virtual void PaintScene(const TRef<Canvas::ILayer>& ALayer,
                          const TRef<Canvas::ICanvas>& ACanvas) = 0;
  /// What bounds the shapes among the children, global space.
  virtual TRectF GetRect() const = 0;
  virtual void SetCamera(const TRef<ICamera>& ACamera) = 0;
  virtual TRef<ICamera> GetCamera() const = 0;
  virtual void SetBundle(const TRef<Canvas::IBundle>& ABundle) = 0;
  virtual TRef<Canvas::IBundle> GetBundle() const = 0;

 protected:
  ~IScene() = default;
};

// ---------------------------------------------------------------- ITimer

/// What calls a handler again and again on the scene thread while it is enabled.
class ITimer : public virtual IInterface {
 public:
  virtual void SetOnTimer(TMethod<void()> AHandler) = 0;
  virtual void SetEnabled(bool AValue) = 0;
  virtual bool GetEnabled() const = 0;
  virtual void SetInterval(std::uint32_t AMilliseconds) = 0;
  virtual std::uint32_t GetInterval() const = 0;

 protected:
  ~ITimer() = default;
};

// ---------------------------------------------------------------- TSceneRegistry

using TCreatedObjectEvent = TMethod<void(INode* ANewNode)>;

/// Announces every new node, once it is wholly constructed, and every change of a node's name.
class TSceneRegistry {
 public:
  static void Connect(TCreatedObjectEvent AnEvent);
  static void Disconnect(const TCreatedObjectEvent& AnEvent);
  static void Connect(TNameChangeEvent AnEvent);
  static void Disconnect(const TNameChangeEvent& AnEvent);
  static void Disconnect(const TObject* AnObject);
  static void EmitCreatedObject(INode* ANewNode);
  static void EmitChangedName(INode* ANode,
                              const std::string& AnOldName,
                              const std::string& ANewName);
};

}  // namespace System::Beacon::Fencing::Scene

namespace System {

template <>
struct TEnumNames<Beacon::Fencing::Scene::TMode> {
  static constexpr std::string_view Type = "TMode";
  static constexpr std::array<std::string_view, 3> Names{"Visible", "Edit", "Active"};
};
template <>
struct TInterfaceName<Beacon::Fencing::Scene::INode> {
  static constexpr std::string_view Value = "INode";
};

}  // namespace System
