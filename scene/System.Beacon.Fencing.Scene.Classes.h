// The nodes of a scene. Scene thread only.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "scene/System.Beacon.Fencing.Scene.h"
#include "scene/child_list.h"

namespace System::Beacon::Fencing::Scene {

namespace Detail {

template <class TEvent>
struct TCallOf;
template <class... TArguments>
struct TCallOf<TMethod<void(TArguments...)>> : TEventCall<TArguments...> {};

}  // namespace Detail

/// Implements, in a class with a list `FEvents`, how handlers of a kind are connected, and how the
/// kind is emitted. The object is kept alive while its handlers are called.
#define FENCING_NODE_EVENT(KIND)                                                        \
  void Connect##KIND(EventKinds::KIND::TEvent AnEvent) override {                       \
    FEvents.AddEvent(EventKinds::KIND::Mask, EventKinds::KIND::Id, std::move(AnEvent)); \
  }                                                                                     \
  void Disconnect##KIND(const EventKinds::KIND::TEvent& AnEvent) override {             \
    FEvents.RemoveEvent(EventKinds::KIND::Mask, EventKinds::KIND::Id, AnEvent);         \
  }                                                                                     \
  void Disconnect##KIND##Object(const TObject* AnObject) override {                     \
    FEvents.RemoveEvent(EventKinds::KIND::Id, AnObject);                                \
  }                                                                                     \
  template <class... TArguments>                                                        \
  void Emit##KIND(const TArguments&... AArguments) {                                    \
    if (!FEvents.IsEnabledMask(EventKinds::KIND::Mask)) return;                         \
    const TRef<IInterface> Keep(this);                                                  \
    Detail::TCallOf<EventKinds::KIND::TEvent>::Call(                                    \
        FEvents, EventKinds::KIND::Mask, EventKinds::KIND::Id, AArguments...);          \
  }

// ---------------------------------------------------------------- TEntity

/// Named after a new identifier until it is given a name.
class TEntity : public TInterfacedObject, public virtual IEntity {
 public:
  FENCING_CLASS_INFO()

  TEntity();

  const std::string& GetName() const override { return FName; }
  void SetName(const std::string& AName) override;
  std::string GetAlias() const override { return FName; }
  TGUID GetId() const override { return FId; }
  void SetId(const TGUID& AValue) { FId = AValue; }
  void ReassignId() override;
  void InvalidateId() override { FId = {}; }
  void SetProperty(std::string_view AName, const TValue& AValue) override;
  TValue GetProperty(std::string_view AName) const override;
  bool ContainsProperty(std::string_view AName) const override;
  /// False for "RefCount".
  bool AllowDesignProperty(std::string_view AName) const override;
  bool InvalidatePropertyValue(const std::string&) override { return false; }
  void Detach() override {}

 protected:
  /// For constructors: nobody hears of it.
  void InitName(const std::string& AName) { FName = AName; }
  /// Runs after the name has changed.
  virtual void ChangedName(const std::string&) {}

  TEventList FEvents;

 private:
  TGUID FId;
  std::string FName;
};

// ---------------------------------------------------------------- TNode

/// A node. It starts in the modes `Visible` and `Active`. Children are other `TNode`s, nodes of
/// foreign making are ignored. What handlers and overrides do to the tree while it changes is done
/// at once; the change then goes on only where it still can: a node that a handler has given
/// another parent stays there. When a handler raises, the tree is whole, and the child without a
/// parent or with its new one. Handlers of a node that dies must not raise.
class TNode : public TEntity, public virtual INode {
 public:
  FENCING_CLASS_INFO()

  /// Announces the node (`TSceneRegistry`).
  void AfterConstruction() override;
  /// Emits `Destroying`, then detaches the children from the last to the first.
  void BeforeDestruction() noexcept override;

  void Detach() override { SetParent(nullptr); }

  TNodes GetHierarchyPath() override;
  std::int32_t GetChildCount() const override {
    return static_cast<std::int32_t>(FChildren.size());
  }
  TRef<INode> GetChildAt(std::int32_t AIndex) const override { return FChildren[AIndex]; }
  TRef<INode> GetChild(std::string_view AName) const override;
  void AddChild(const TRef<INode>& AChild) override { AddChild(AChild, false); }
  void AddFrontChild(const TRef<INode>& AChild) override { AddChild(AChild, true); }
  void AddChild(const TRef<INode>& AChild, bool AFront);
  TNodes GetChildren() const override;
  void SetChildren(const TNodes& AChildren) override;
  bool RemoveChild(INode* AChild) override;
  bool RemoveDescendant(INode* ANode) override;
  void RemoveAllChilds() override;
  bool ContainsChild(std::string_view AName) const override { return GetChildIndex(AName) >= 0; }
  bool ContainsChild(const INode* ANode) const override { return GetChildIndex(ANode) >= 0; }
  std::int32_t GetChildIndex(std::string_view AName) const override;
  std::int32_t GetChildIndex(const INode* ANode) const override;
  bool SetChildIndex(INode* AChild, std::int32_t AIndex) override;
  void MoveChildToFront(std::int32_t AIndex) override;
  void MoveChildToFront(const TNames& ANames) override;
  void MoveChildToBack(std::int32_t AIndex) override;
  void MoveChildToBack(const TNames& ANames) override;
  void ReorderChildren(const TNames& ANames) override;
  void SwapChildren(std::int32_t I, std::int32_t J) override;
  void SetParent(INode* AParent) override;
  INode* GetParent() const override { return FParent; }
  INode* GetRootNode() override;
  void SetMode(TModeSet AMode) override;
  void EnableModes(std::span<const TMode> AModes) override;
  void DisableModes(std::span<const TMode> AModes) override;
  void EnableMode(TMode AMode) override { FMode.Enable(AMode); }
  void DisableMode(TMode AMode) override { FMode.Disable(AMode); }
  TModeSet GetMode() const override { return FMode; }

  /// Another number whenever nodes have come or gone at or below this one, or one of them has got
  /// another opacity: until then what was found out about them may be kept.
  std::uint32_t GetRevision() const noexcept { return FRevision; }

  /// True while `SetChildren` runs: the tree is being loaded, not edited.
  bool GetLoadingChildren() const noexcept { return FLoadingChildren; }
  void SetLoadingChildren(bool AValue) noexcept { FLoadingChildren = AValue; }

  FENCING_NODE_EVENT(PropertyChange)
  FENCING_NODE_EVENT(NameChange)
  FENCING_NODE_EVENT(Destroying)
  FENCING_NODE_EVENT(ParentChange)
  void DisconnectEventObject(const TObject* AnObject) override { FEvents.RemoveEvent(AnObject); }

 protected:
  // What happened, for descendants.
  virtual void AddedChild(INode*, bool /*AFront*/) {}
  virtual void RemovedChild(INode*) {}
  virtual void SettedParent(INode*) {}
  virtual void MovedChildToFront(INode*) {}
  virtual void MovedChildToBack(INode*) {}
  virtual void ChangedChildrenOrder(const TNodes&) {}
  virtual void SettedMode(TModeSet) {}
  void ChangedName(const std::string& AnOldName) override;
  /// To be told what `GetRevision` counts.
  void ChangedRevision() noexcept;

  /// The same as `GetChildAt`, not counted.
  TNode* GetChildObject(std::int32_t AIndex) const { return FChildren[AIndex].Get(); }

 private:
  /// Where a node stands in the list of a parent.
  struct TPlace {
    const TNode* Parent = nullptr;
    std::uint32_t Number = 0;
  };
  using TChildren = std::vector<TRef<TNode>>;

  // The list of children has changed; what is kept beside it follows. No handlers run in here.
  virtual void TookOut(TNode&) {}
  virtual void ChangedOrder() {}

  std::int32_t FindIndex(const TNode& AChild) const;
  void Insert(TNode& AChild, bool AFront);
  void TakeOut(std::int32_t AIndex);
  void FinishAdding(TNode& AChild, bool AFront);
  void Move(std::int32_t AFrom, std::int32_t ATo);
  void Renumber(std::int32_t AFirst, std::int32_t ALast);
  void SetOrder(TChildren AChildren);
  /// The children of the names in their order, then the others.
  void SplitByNames(const TNames& ANames, TChildren& ANamed, TChildren& AOthers) const;
  bool IsBelow(const TNode& AAncestor) const;
  TRef<INode> GetParentProperty() const { return TRef<INode>(FParent); }
  void SetParentProperty(const TRef<INode>& AParent) { SetParent(AParent.Get()); }
  TSet<TMode> GetModeProperty() const;

  TModeSet FMode{TMode::Visible, TMode::Active};
  bool FLoadingChildren = false;
  std::uint32_t FRevision = 0;
  TNode* FParent = nullptr;  // looks at it
  TChildList<TRef<TNode>> FChildren;
  // While a node moves from one parent to another it stands in both lists for a moment.
  TPlace FPlace;
  TPlace FFormerPlace;
};

// ---------------------------------------------------------------- TSceneNode

class TScene;
class TSceneLink;
class TChildIndex;
struct TNodeBounds;

/// Where a node itself is hit and draws, without what is below it. With it, searching and painting
/// leave out what lies elsewhere.
struct TExtent {
  const std::type_info* Class = nullptr;  ///< of nodes of exactly this class the rest is true
  bool IsEmpty = true;                    ///< it contains no point and draws nothing
  TRectF Rect;                            ///< local space; outside it the node contains no point,
  float Pixels = 0.0F;                    ///< and draws nothing further away from it than this

  template <class TNodeClass>
  static TExtent Nothing() {
    return {.Class = &typeid(TNodeClass), .Rect = {}};
  }
  template <class TNodeClass>
  static TExtent Of(const TRectF& ARect, float APixels) {
    return {&typeid(TNodeClass), false, ARect, APixels};
  }
};

/// A node that is painted and hit-tested. Its scene parent and its scene are looked at, not kept; a
/// scene that has died is no node's scene any more.
class TSceneNode : public TNode, public virtual ISceneNode {
 public:
  FENCING_CLASS_INFO()

  TSceneNode();
  ~TSceneNode() override;

  /// Tells the scene first.
  void Detach() override;
  void SetMode(TModeSet AMode) override;

  ISceneNode* GetSceneParent() const override { return FSceneParent; }
  std::int32_t GetSceneChildCount() const override {
    return static_cast<std::int32_t>(FSceneChildren.size());
  }
  ISceneNode* GetSceneChildAt(std::int32_t AIndex) const override { return FSceneChildren[AIndex]; }
  std::int32_t GetSceneChildIndex(const INode* ANode) const override;
  IScene* GetScene() const override;
  /// The node and what is below it belong to another scene from now on.
  virtual void SetScene(TScene* AScene);
  void SetClipChildren(bool AValue) override;
  bool GetClipChildren() const override { return FClipChildren; }
  void SetOpacity(float AValue) override;
  float GetOpacity() const override { return FOpacity; }

  void Paint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override;
  void Repaint() override;
  void RepaintRect(const TRectF& ARect) override;
  TRectF GetRepaintRect(bool AWithChildren, float AMargin) const override;
  /// Asks for an old place (screen space) and the new one to be drawn anew.
  virtual void AfterMovementRepaint(const TRectF& AOldRect);
  virtual TRef<Canvas::IInvalidateRegion> GetInvalidateRegion() const;
  /// To be told when `GetExtent` would give another answer, before anybody hears of the change.
  void ChangedExtent();

  virtual bool GetAllowRectModification() const { return true; }
  virtual TPointF GetDisplacement() const = 0;
  virtual void SetDisplacement(const TPointF& APoint) = 0;
  virtual TRectF GetRect() const = 0;
  virtual void SetRect(const TRectF& ARect) = 0;
  float GetWidth() const { return GetRect().GetWidth(); }
  void SetWidth(float AValue);
  float GetHeight() const { return GetRect().GetHeight(); }
  void SetHeight(float AValue);
  virtual ISceneNode* AsSceneNode() { return this; }

  TRectF GetGlobalRect() const override { return GetGlobalRectWithChildren(0); }
  TRectF GetGlobalRectWithChildren(std::int32_t ADepth) const override;
  TRectF GetScreenRect() const override { return GetScreenRect(GetRect()); }
  /// What bounds a rectangle of the node's own space on the screen.
  TRectF GetScreenRect(const TRectF& ARect) const;
  TCorners GetScreenCorners() const { return GetScreenCorners(GetRect()); }
  TCorners GetScreenCorners(const TRectF& ARect) const;
  TCorners GetLocalCorners() const override;
  TCorners GetGlobalCorners() const override;
  /// The corners of what is painted, local space.
  virtual TCorners GetLocalRepaintCorners() const { return GetLocalCorners(); }
  TMatrix GetGlobalMatrix() const override;
  TMatrix GetInverseGlobalMatrix() const override { return GetGlobalMatrix().Inverse(); }
  TMatrix GetLocalMatrix() const override { return TMatrix::Identity(); }
  TMatrix GetInverseLocalMatrix() const override { return GetLocalMatrix().Inverse(); }
  TPointF GlobalToLocal(TPointF APoint) const override;
  /// Never under a matrix that has no inverse.
  bool IsUnderGlobalPoint(TPointF APoint) const override;
  virtual bool ContainsLocalPoint(TPointF) const { return false; }
  TPointF GetClosestPointToGlobalPoint(TPointF APoint, bool AGlobal) const override;
  TPointF GetCenterInGlobalSpace() const;
  TPointF GetDisplacementToGetGlobalPosition(TPointF APoint) const;
  void SetCenterInGlobalSpace(TPointF APoint);

  ISceneNode* GetNodeUnderGlobalPoint(TPointF APoint) override;
  ISceneNode* GetNodeUnderGlobalPoint(TPointF APoint,
                                      TPointF& ALocalPoint,
                                      const TMatrix& AParentMatrix) override;
  ISceneNode* GetNodeUnderGlobalPoint(TPointF APoint,
                                      TPointF& ALocalPoint,
                                      const TMatrix& AParentMatrix,
                                      TSceneNodes& ANodes) override;

  void MouseEnter() override { EmitMouseEnter(this); }
  void MouseExit() override { EmitMouseExit(this); }
  void MouseMove(IViewport* AViewport, TPointF APoint, bool ADragged) override;
  void MouseDown(IViewport* AViewport, TPointF APoint) override;
  void MouseUp(IViewport* AViewport, TPointF APoint) override;

  FENCING_NODE_EVENT(WillMove)
  FENCING_NODE_EVENT(SceneChange)
  FENCING_NODE_EVENT(DidMove)
  FENCING_NODE_EVENT(MouseEnter)
  FENCING_NODE_EVENT(MouseExit)
  FENCING_NODE_EVENT(MouseMove)
  FENCING_NODE_EVENT(MouseDown)
  FENCING_NODE_EVENT(MouseUp)

 protected:
  /// Pixels around what is drawn anew: strokes reach beyond a shape's rectangle.
  static constexpr float RepaintMargin = 5.0F;

  /// Paints what is below the node; shapes draw themselves first. `AMatrix` is the global matrix
  /// of the parent.
  virtual void DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix);
  void PaintChildren(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix);
  void AddedChild(INode* AChild, bool AFront) override;
  void RemovedChild(INode* AChild) override;
  void SettedParent(INode* AParent) override;
  void MovedChildToFront(INode* AChild) override;
  void MovedChildToBack(INode* AChild) override;
  void ChangedChildrenOrder(const TNodes& AChildren) override;

  /// A class that does not override this, or that others derive from without overriding it again,
  /// is asked and painted always.
  virtual TExtent GetExtent() const { return {}; }
  TScene* GetSceneObject() const;
  /// Sends the place of a child, with what is below it, to the region, if there is one.
  void InvalidateChild(const ISceneNode& AChild);
  void SetSceneLink(TRef<TSceneLink> ALink);

 private:
  TRectF BoundUnder(const TMatrix& AParentMatrix, std::int32_t ADepth) const;
  ISceneNode* FindUnder(TPointF APoint,
                        TPointF& ALocalPoint,
                        const TMatrix& AParentMatrix,
                        TSceneNodes* ANodes);
  ISceneNode* FindChildUnder(TPointF APoint,
                             TPointF& ALocalPoint,
                             const TMatrix& AMatrix,
                             TSceneNodes* ANodes);
  void TookOut(TNode& AChild) override;
  void ChangedOrder() override;
  void RenumberSceneChildren(std::size_t AFirst);
  /// Of two scene children of one node.
  static bool IsBefore(const TSceneNode* A, const TSceneNode* B) {
    return static_cast<std::int32_t>(A->FSceneNumber - B->FSceneNumber) < 0;
  }

  friend class TChildIndex;
  bool IsWide() const;
  TChildIndex& GetIndexOfChildren();
  TNodeBounds GetBoundsUnder(const TMatrix& AParentMatrix) const;
  bool IncludeBounds(const TMatrix& AParentMatrix,
                     float AReach,
                     int& ABudget,
                     TNodeBounds& ABounds) const;
  ISceneNode* AskChild(TSceneNode& AChild,
                       TPointF APoint,
                       TPointF& ALocalPoint,
                       const TMatrix& AMatrix,
                       TSceneNodes* ANodes);
  bool FindChildByIndex(TPointF APoint,
                        TPointF& ALocalPoint,
                        const TMatrix& AMatrix,
                        TSceneNodes* ANodes,
                        ISceneNode*& AResult);

  bool FClipChildren = false;
  float FOpacity = 1.0F;
  TSceneNode* FSceneParent = nullptr;
  TChildList<TSceneNode*> FSceneChildren;
  TSceneNode* FListedIn = nullptr;           // whose scene children hold this node,
  std::uint32_t FSceneNumber = 0;            // and where
  std::int32_t FIndexItem = -1;              // its number in the index of that node
  std::unique_ptr<TChildIndex> FChildIndex;  // made for many children, by the first search
  TRef<TSceneLink> FScene;
};

// ---------------------------------------------------------------- TLocationNode

/// A node with a place of its own: a point is scaled, then turned about the node's origin, then
/// moved. Setters announce the move and ask for both places to be drawn anew; values that are not
/// finite are ignored.
class TLocationNode : public TSceneNode {
 public:
  FENCING_CLASS_INFO()

  TPointF GetDisplacement() const override { return FDisplacement; }
  /// An equal place is no move.
  void SetDisplacement(const TPointF& APoint) override;
  TPointF GetScaling() const { return FScaling; }
  virtual void SetScaling(const TPointF& AScaling);
  float GetRotation() const { return FRotation; }
  virtual void SetRotation(float ARadians);
  virtual bool ContainsDisplacement() const { return true; }
  TMatrix GetLocalMatrix() const override;

 private:
  template <class TChange>
  void Move(TChange&& AChange);

  TPointF FDisplacement;
  TPointF FScaling{1.0F, 1.0F};
  float FRotation = 0.0F;
};

// ---------------------------------------------------------------- TLocationShape

/// A location node that answers as a shape; what shapes with a place of their own and cameras have
/// in common.
class TLocationShape : public TLocationNode, public virtual IShape {
 public:
  FENCING_CLASS_INFO()

  bool ContainsDisplacement() const override { return true; }
  bool ContainsRect() const override { return true; }
  void SetDisplacement(const TPointF& APoint) override { TLocationNode::SetDisplacement(APoint); }
  TPointF GetDisplacement() const override { return TLocationNode::GetDisplacement(); }
  void SetScaling(const TPointF& AScaling) override { TLocationNode::SetScaling(AScaling); }
  TPointF GetScaling() const override { return TLocationNode::GetScaling(); }
  void SetRotation(float ARadians) override { TLocationNode::SetRotation(ARadians); }
  float GetRotation() const override { return TLocationNode::GetRotation(); }
  void SetRect(const TRectF& ARect) override = 0;
  TRectF GetRect() const override = 0;
  bool GetAllowRectModification() const override { return TSceneNode::GetAllowRectModification(); }
  TPointF GetDisplacementToGetGlobalPosition(TPointF APoint) const override {
    return TSceneNode::GetDisplacementToGetGlobalPosition(APoint);
  }
  void SetCenterInGlobalSpace(TPointF APoint) override {
    TSceneNode::SetCenterInGlobalSpace(APoint);
  }
  TPointF GetCenterInGlobalSpace() const override { return TSceneNode::GetCenterInGlobalSpace(); }
  FENCING_NODE_EVENT(RectChange)
};

// ---------------------------------------------------------------- TLayer

/// A node without a place or extent of its own: its rectangle bounds the shapes among its children.
class TLayer : public TSceneNode, public virtual IShape {
 public:
  FENCING_CLASS_INFO()

  bool ContainsDisplacement() const override { return false; }
  bool ContainsRect() const override { return false; }
  TPointF GetDisplacement() const override { return {}; }
  /// Moves every shape among the children by so much.
  void SetDisplacement(const TPointF& ADelta) override;
  void SetScaling(const TPointF&) override {}
  TPointF GetScaling() const override { return {1.0F, 1.0F}; }
  void SetRotation(float) override {}
  float GetRotation() const override { return 0.0F; }
  void SetRect(const TRectF&) override {}
  TRectF GetRect() const override;
  TRectF GetGlobalRect() const override { return GetRect(); }
  TExtent GetExtent() const override { return TExtent::Nothing<TLayer>(); }
  bool GetAllowRectModification() const override { return TSceneNode::GetAllowRectModification(); }
  TPointF GetDisplacementToGetGlobalPosition(TPointF APoint) const override {
    return TSceneNode::GetDisplacementToGetGlobalPosition(APoint);
  }
  void SetCenterInGlobalSpace(TPointF APoint) override {
    TSceneNode::SetCenterInGlobalSpace(APoint);
  }
  TPointF GetCenterInGlobalSpace() const override { return TSceneNode::GetCenterInGlobalSpace(); }
  void SetEnableFill(bool) override {}
  bool GetEnableFill() const override { return false; }
  FENCING_NODE_EVENT(RectChange)
};

// ---------------------------------------------------------------- TViewport

class TViewport : public TEntity, public virtual IViewport {
 public:
  FENCING_CLASS_INFO()

  void SetViewport(const TRectF&) override {}
  TRectF GetViewport() const override { return FViewport; }
  void SetViewportAspectRatio(float AValue) override;
  float GetViewportAspectRatio() const override;
  void SetScreenAspectRatio(float AValue) override;
  float GetScreenAspectRatio() const override;
  void SetScreenSize(float AWidth, float AHeight) override;
  TPointF GetScreenSize() const override { return FScreenSize; }
  TRectF GetScreenRect() const override { return {0.0F, 0.0F, FScreenSize.X, FScreenSize.Y}; }
  /// From -1 to 1, Y upwards, to a rectangle of the screen.
  static TMatrix GetViewportMatrix(const TRectF& ARect);

 private:
  TRectF FViewport;
  TPointF FScreenSize;
};

// ---------------------------------------------------------------- TCamera

/// A camera: its place, rotation and scaling are the view. No child of its scene; every change
/// has the whole scene drawn anew.
class TCamera : public TLocationShape, public virtual ICamera {
 public:
  FENCING_CLASS_INFO()

  float GetFrustumAspectRatio() const override;
  void SetFrustumAspectRatio(float AValue) override;
  void SetFrustum(const TRectF& ARect) override;
  TRectF GetFrustum() const override { return FFrustum; }
  TMatrix GetViewMatrix() const override { return GetInverseGlobalMatrix(); }
  TMatrix GetProjectionMatrix() const override;

  void Repaint() override;
  void AfterMovementRepaint(const TRectF& AOldRect) override;
  TRectF GetRepaintRect(bool, float) const override { return {}; }
  TRectF GetScreenRect() const override { return {}; }

  /// The frustum; setting it here repaints nothing.
  void SetRect(const TRectF& ARect) override;
  TRectF GetRect() const override { return FFrustum; }
  void SetEnableFill(bool) override {}
  bool GetEnableFill() const override { return false; }

 private:
  TRectF FFrustum;
};

// ---------------------------------------------------------------- TScene

/// The root: keeps camera, viewport, invalidation region and what the pointer is doing. It is its
/// own scene.
class TScene : public TLayer, public virtual IScene {
 public:
  FENCING_CLASS_INFO()

  TScene();
  ~TScene() override;

  TRef<IViewport> GetViewport() const override { return FViewport; }
  void SetViewport(const TRef<IViewport>& AViewport) override;
  void MouseMove(IViewport* AViewport, TPointF APoint, bool ADragged) override;
  void MouseDown(IViewport* AViewport, TPointF APoint) override;
  void MouseUp(IViewport* AViewport, TPointF APoint) override;
  FENCING_NODE_EVENT(MouseMove)
  ISceneNode* GetSceneNodeUnderViewportPoint(IViewport* AViewport, TPointF APoint) override;
  ISceneNode* GetSceneNodeUnderViewportPoint(IViewport* AViewport,
                                             TPointF APoint,
                                             TSceneNodes& ANodes) override;
  ISceneNode* GetSceneNodeUnderGlobalPoint(TPointF APoint) override;
  ISceneNode* GetSceneNodeUnderGlobalPoint(TPointF APoint, TSceneNodes& ANodes) override;
  TPointF ViewportSpaceToGlobalSpace(IViewport* AViewport, TPointF APoint) const override;
  TPointF GlobalSpaceToViewportSpace(IViewport* AViewport, TPointF APoint) const override;
  TPointF ViewportVectorToWorld(IViewport* AViewport, TPointF AVector) const override;
  TPointF WorldVectorToViewport(IViewport* AViewport, TPointF AVector) const override;
  /// From global space to the pixels of a viewport; the identity without a camera.
  TMatrix ComputeViewProjectionViewportMatrix(const IViewport* AViewport) const;
  /// The same as it was when the last `PaintScene` began.
  const TMatrix& GetViewProjectionViewportMatrix() const { return FViewProjectionViewportMatrix; }
  TPointF GetMouseDownPoint() const override { return FMouseDownPoint; }
  TPointF GetLastMouseMovePoint() const override { return FLastMouseMovePoint; }
  TPointF GetNodeMouseDownPoint() const override { return FNodeMouseDownPoint; }
  TPointF GetNodeLastMouseMovePoint() const override { return FNodeLastMouseMovePoint; }
  TPointF GetMouseDelta() const override { return FMouseDelta; }
  void SetInvalidator(const TRef<Canvas::IInvalidateRegion>& ARegion) override {
    FInvalidateRegion = ARegion;
  }
  TRef<Canvas::IInvalidateRegion> GetInvalidateRegion() const override { return FInvalidateRegion; }
  void Repaint() override { TLayer::Repaint(); }
  void PaintScene(const TRef<Canvas::ILayer>& ALayer,
                  const TRef<Canvas::ICanvas>& ACanvas) override;
  bool GetDrawingScene() const { return FDrawingScene; }
  TRectF GetRect() const override { return TLayer::GetRect(); }
  bool GetAllowRectModification() const override { return false; }
  void SetDisplacement(const TPointF&) override {}
  void SetCamera(const TRef<ICamera>& ACamera) override;
  TRef<ICamera> GetCamera() const override { return FCamera; }
  void SetBundle(const TRef<Canvas::IBundle>& ABundle) override { FBundle = ABundle; }
  TRef<Canvas::IBundle> GetBundle() const override { return FBundle; }
  void SetChildren(const TNodes& AChildren) override;
  /// Forgets a node that leaves, as far as the pointer is concerned.
  void NotifyDetach(const INode* ANode);
  void BeforeDestruction() noexcept override;

 protected:
  void AddedChild(INode* AChild, bool AFront) override;
  void RemovedChild(INode* AChild) override;

 private:
  friend class TSceneNode;
  TMatrix WorldMatrix() const { return ComputeViewProjectionViewportMatrix(FViewport.Get()); }
  void ReleaseCamera();
  void MoveOver(TPointF AGlobalPoint, IViewport* AViewport, bool ADragged);

  const TRef<TSceneLink> FLink;
  TRef<Canvas::ICanvas> FLastCanvas;
  TRef<ICamera> FCamera;
  TRef<IViewport> FViewport;
  TRef<ISceneNode> FMouseNode;     // under the pointer after the last move
  TRef<ISceneNode> FDraggingNode;  // pressed, until a move without drag or a release
  TMatrix FViewProjectionViewportMatrix = TMatrix::Identity();
  TPointF FMouseDelta;
  TPointF FMouseDownPoint;
  TPointF FLastMouseMovePoint{std::numeric_limits<float>::quiet_NaN(), 0.0F};
  TPointF FLastMouseScreenPoint;
  TPointF FNodeMouseDownPoint;
  TPointF FNodeLastMouseMovePoint;
  TRef<Canvas::IInvalidateRegion> FInvalidateRegion;
  TRef<Canvas::IBundle> FBundle;
  std::optional<TRectF> FPaintArea;  // where a paint shows, pixels
  bool FDrawingScene = false;
};

}  // namespace System::Beacon::Fencing::Scene
