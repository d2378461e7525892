#include <string>
#include <utility>

#include "platform/errors.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/messages.h"
#include "scene/scene_link.h"

namespace System::Beacon::Fencing::Scene {
namespace {

/// What a node stands for; a new rectangle when that is nothing yet.
TRef<IShape> ShapeOf(IShapeProxy& AProxy) {
  TRef<IShape> Result = AProxy.GetShape();
  if (Result) return Result;
  Result = New<TRectangle>();
  AProxy.SetShape(Result);
  return Result;
}

/// Where a paint shows, as far as the canvas tells, with what may shine through at its edge.
std::optional<TRectF> PaintAreaOf(Canvas::ICanvas& ACanvas) {
  const auto* const Area = Supports<Canvas::IPaintArea>(&ACanvas);
  if (!Area) return std::nullopt;
  TRectF Result = Area->GetPaintArea();
  Result.Inflate(1.0F, 1.0F);
  return Result;
}

}  // namespace

const TClassInfo& TScene::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Classes.TScene",
      .Base = &TLayer::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TScene>()); },
  };
  return Info;
}

// ---------------------------------------------------------------- life

TScene::TScene() : FLink(New<TSceneLink>(this)), FViewport(New<TViewport>()) {
  InitName("Scene");
  SetSceneLink(FLink);
}

TScene::~TScene() {
  FLink->Scene = nullptr;
}

void TScene::BeforeDestruction() noexcept {
  TLayer::BeforeDestruction();
  ReleaseCamera();
  FLink->Scene = nullptr;
}

// ---------------------------------------------------------------- members

void TScene::AddedChild(INode* AChild, bool AFront) {
  TLayer::AddedChild(AChild, AFront);
  if (const auto* Shape = Supports<IShape>(AChild)) InvalidateChild(*Shape);
  if (auto* Proxy = Supports<IShapeProxy>(AChild)) InvalidateChild(*ShapeOf(*Proxy));
}

void TScene::RemovedChild(INode* AChild) {
  TLayer::RemovedChild(AChild);
  auto* const Child = dynamic_cast<TSceneNode*>(AChild);
  if (Child && !Child->GetParent()) Child->SetScene(nullptr);
}

void TScene::SetChildren(const TNodes& AChildren) {
  const TRef<TNode> Keep(this);
  TLayer::SetChildren(AChildren);
  if (FInvalidateRegion) FInvalidateRegion->Invalidate();
}

void TScene::SetCamera(const TRef<ICamera>& ACamera) {
  if (FCamera && ACamera && IsSame(FCamera.Get(), ACamera.Get())) return;
  const TRef<ICamera> Camera(ACamera.Get());  // the argument may go meanwhile
  const TRef<TNode> Keep(this);
  ReleaseCamera();
  FCamera = Camera;
  if (auto* Node = dynamic_cast<TSceneNode*>(FCamera.Get())) Node->SetScene(this);
}

void TScene::ReleaseCamera() {
  const TRef<ICamera> Old = std::exchange(FCamera, nullptr);
  auto* const Node = dynamic_cast<TSceneNode*>(Old.Get());
  if (Node && Node->GetScene() == this) Node->SetScene(nullptr);
}

void TScene::SetViewport(const TRef<IViewport>& AViewport) {
  FViewport = AViewport;
  Repaint();
}

void TScene::NotifyDetach(const INode* ANode) {
  if (IsSame(FMouseNode.Get(), ANode)) FMouseNode = nullptr;
  if (IsSame(FDraggingNode.Get(), ANode)) FDraggingNode = nullptr;
}

// ---------------------------------------------------------------- painting

void TScene::PaintScene(const TRef<Canvas::ILayer>& ALayer, const TRef<Canvas::ICanvas>& ACanvas) {
  if (!ACanvas) throw EGeneralError(std::string(Messages::SNoCanvas));
  const TRef<TNode> Keep(this);
  const TRef<Canvas::ICanvas> UsedCanvas(ACanvas.Get());  // the argument may go meanwhile
  struct TDrawing {
    TScene& Scene;
    ~TDrawing() {
      Scene.FDrawingScene = false;
      Scene.FPaintArea.reset();
    }
  } const Drawing{*this};
  FDrawingScene = true;
  FLastCanvas = UsedCanvas;
  UsedCanvas->BeginScene(ALayer);
  try {
    FViewProjectionViewportMatrix = WorldMatrix();
    FPaintArea = PaintAreaOf(*UsedCanvas);
    PaintChildren(*UsedCanvas, TMatrix::Identity());
  } catch (...) {
    UsedCanvas->EndScene();
    throw;
  }
  UsedCanvas->EndScene();
}

// ---------------------------------------------------------------- spaces

TMatrix TScene::ComputeViewProjectionViewportMatrix(const IViewport* AViewport) const {
  const IViewport* const Viewport = AViewport ? AViewport : FViewport.Get();
  if (!FCamera || !Viewport) return TMatrix::Identity();
  return FCamera->GetViewMatrix() * FCamera->GetProjectionMatrix() *
         TViewport::GetViewportMatrix(Viewport->GetScreenRect());
}

TPointF TScene::ViewportSpaceToGlobalSpace(IViewport* AViewport, TPointF APoint) const {
  return APoint * ComputeViewProjectionViewportMatrix(AViewport).Inverse();
}

TPointF TScene::GlobalSpaceToViewportSpace(IViewport* AViewport, TPointF APoint) const {
  return APoint * ComputeViewProjectionViewportMatrix(AViewport);
}

TPointF TScene::ViewportVectorToWorld(IViewport*, TPointF AVector) const {
  return TMatrixHelper::MultiplyNormal(WorldMatrix().Inverse(), AVector);
}

TPointF TScene::WorldVectorToViewport(IViewport*, TPointF AVector) const {
  return TMatrixHelper::MultiplyNormal(WorldMatrix(), AVector);
}

// ---------------------------------------------------------------- the pointer

ISceneNode* TScene::GetSceneNodeUnderGlobalPoint(TPointF APoint) {
  TPointF Local;
  return GetNodeUnderGlobalPoint(APoint, Local, TMatrix::Identity());
}

ISceneNode* TScene::GetSceneNodeUnderGlobalPoint(TPointF APoint, TSceneNodes& ANodes) {
  TPointF Local;
  return GetNodeUnderGlobalPoint(APoint, Local, TMatrix::Identity(), ANodes);
}

ISceneNode* TScene::GetSceneNodeUnderViewportPoint(IViewport* AViewport, TPointF APoint) {
  return GetSceneNodeUnderGlobalPoint(ViewportSpaceToGlobalSpace(AViewport, APoint));
}

ISceneNode* TScene::GetSceneNodeUnderViewportPoint(IViewport* AViewport,
                                                   TPointF APoint,
                                                   TSceneNodes& ANodes) {
  return GetSceneNodeUnderGlobalPoint(ViewportSpaceToGlobalSpace(AViewport, APoint), ANodes);
}

void TScene::MouseDown(IViewport* AViewport, TPointF APoint) {
  const TRef<TNode> Keep(this);
  const TRef<IViewport> Viewport(AViewport ? AViewport : FViewport.Get());
  const TPointF Global = ViewportSpaceToGlobalSpace(Viewport.Get(), APoint);
  FMouseDelta = {};
  FMouseDownPoint = Global;
  TPointF Local;
  const TRef<ISceneNode> Node = GetNodeUnderGlobalPoint(Global, Local, TMatrix::Identity());
  if (!Node) return;
  FNodeMouseDownPoint = Local;
  Node->MouseDown(Viewport.Get(), Local);
  FDraggingNode = Node;
}

void TScene::MouseMove(IViewport* AViewport, TPointF APoint, bool ADragged) {
  const TRef<TNode> Keep(this);
  const TRef<IViewport> Viewport(AViewport ? AViewport : FViewport.Get());
  const TPointF Global = ViewportSpaceToGlobalSpace(Viewport.Get(), APoint);
  FLastMouseMovePoint = Global;
  FMouseDelta = ViewportVectorToWorld(Viewport.Get(), APoint - FLastMouseScreenPoint);
  EmitMouseMove(this, Global, ADragged);
  FLastMouseScreenPoint = APoint;
  if (const TRef<ISceneNode> Dragged = ADragged ? FDraggingNode : nullptr)
    return Dragged->MouseMove(Viewport.Get(), Dragged->GlobalToLocal(Global), ADragged);
  MoveOver(Global, Viewport.Get(), ADragged);
  FDraggingNode = nullptr;
}

/// Tells the nodes that the pointer leaves, enters and moves over.
void TScene::MoveOver(TPointF AGlobalPoint, IViewport* AViewport, bool ADragged) {
  TPointF Local;
  const TRef<ISceneNode> Node = GetNodeUnderGlobalPoint(AGlobalPoint, Local, TMatrix::Identity());
  if (!IsSame(Node.Get(), FMouseNode.Get())) {
    FNodeLastMouseMovePoint = Local;
    if (const TRef<ISceneNode> Left = FMouseNode) Left->MouseExit();
    if (Node) Node->MouseEnter();
    FMouseNode = Node;
  }
  if (!Node) return;
  Node->MouseMove(AViewport, Local, ADragged);
  FNodeLastMouseMovePoint = Local;
}

void TScene::MouseUp(IViewport* AViewport, TPointF APoint) {
  const TRef<TNode> Keep(this);
  const TRef<IViewport> Viewport(AViewport ? AViewport : FViewport.Get());
  const TPointF Global = ViewportSpaceToGlobalSpace(Viewport.Get(), APoint);
  FMouseDelta = {};
  TRef<ISceneNode> Node = FDraggingNode;
  TPointF Local;
  if (Node)
    Local = Node->GlobalToLocal(Global);
  else
    Node = GetNodeUnderGlobalPoint(Global, Local, TMatrix::Identity());
  if (Node) Node->MouseUp(Viewport.Get(), Local);
  FDraggingNode = nullptr;
}

}  // namespace System::Beacon::Fencing::Scene
