#include <fmt/format.h>

#include <cmath>
#include <numbers>
#include <utility>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "platform/drawing.h"
#include "platform/errors.h"
#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.Painter.h"
#include "runtimepaint/loaded_project.h"
#include "runtimepaint/messages.h"
#include "runtimepaint/project_extraction.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

namespace System::Beacon::Fencing {
namespace {

using Scene::TCameraHelper;
using Scene::TMode;
namespace Map = Scene::Beacons;

constexpr std::int32_t MaxAngle = 180;

void ShowMap(Scene::ISceneNode* AMap, bool AIsShown) {
  constexpr std::array Modes{TMode::Visible, TMode::Active};
  auto* const Shown = Supports<Map::IMap>(AMap);
  if (Shown) AIsShown ? Shown->EnableModes(Modes) : Shown->DisableModes(Modes);
}

/// Lends a layer a drawing while it is painted into.
class TLayerLoan {
 public:
  TLayerLoan(TRef<Canvas::TWyxLayer> ALayer, TDrawing* ADrawing) : FLayer(std::move(ALayer)) {
    FLayer->UpdateCanvasObject(ADrawing);
  }
  ~TLayerLoan() { FLayer->UpdateCanvasObject(nullptr); }
  TLayerLoan(const TLayerLoan&) = delete;
  TLayerLoan& operator=(const TLayerLoan&) = delete;

 private:
  const TRef<Canvas::TWyxLayer> FLayer;
};

bool PaintsAll(const TDrawing& ADrawing) {
  const TRectF& Clip = ADrawing.GetClip();
  const auto [Width, Height] = ADrawing.GetSize();
  return Clip.Left <= 0 && Clip.Top <= 0 && Clip.Right >= static_cast<float>(Width) &&
         Clip.Bottom >= static_cast<float>(Height);
}

}  // namespace

// ---------------------------------------------------------------- life

/// Looks at a control until that goes.
class TBeaconFencingMapPainter::TControlWatch final : public TComponent {
 public:
  explicit TControlWatch(TControl* AControl) : TComponent(nullptr), FControl(AControl) {
    if (FControl) FControl->FreeNotification(this);
  }
  TControl* GetControl() const noexcept { return FControl; }

 protected:
  void Notification(TComponent* AComponent, TOperation AOperation) override {
    TComponent::Notification(AComponent, AOperation);
    if (AOperation == TOperation::Remove && AComponent == FControl) FControl = nullptr;
  }

 private:
  TControl* FControl;
};

TBeaconFencingMapPainter::TBeaconFencingMapPainter() = default;

/// The scene may live on with a record.
TBeaconFencingMapPainter::~TBeaconFencingMapPainter() {
  if (FLoaded) FLoaded->SetControl(nullptr);
}

const TLoadedProject& TBeaconFencingMapPainter::GetLoaded() const {
  RequireMapInformation();
  return *FLoaded;
}

void TBeaconFencingMapPainter::RequireMapInformation() const {
  if (!FLoaded) throw EGeneralError(std::string(Messages::SNoMapInformation));
}

TRef<Scene::IScene> TBeaconFencingMapPainter::GetScene() const {
  return FLoaded ? FLoaded->Scene : nullptr;
}

TRef<Scene::ICamera> TBeaconFencingMapPainter::GetCamera() const {
  return FLoaded ? FLoaded->Camera : nullptr;
}

// ---------------------------------------------------------------- the project

void TBeaconFencingMapPainter::SetXmlData(const std::string& AValue) {
  if (AValue == FXmlData) return;
  std::string Text = AValue;
  std::unique_ptr<TLoadedProject> Loaded;
  TControl* const Control = GetControl();
  if (!Text.empty()) {
    const TFencingOptions Defaults;
    Loaded = std::make_unique<TLoadedProject>(
        LoadProject(Text, FFencingOptions ? *FFencingOptions : Defaults));
    Loaded->ApplyMapOptions(FMapOptions);
    if (Control) Loaded->FitInto(Control->GetLocalRect());
    Loaded->SetControl(Control);
  }
  if (FLoaded) FLoaded->SetControl(nullptr);
  FLoaded.swap(Loaded);
  FXmlData.swap(Text);
  if (!Control) FLastRect = {};  // the next control is another one
  FProjectInformationLoaded = false;
  const TFencingProject Old = std::exchange(FProjectInformation, {});
  RepaintControl();
}

TFencingProject TBeaconFencingMapPainter::GetProjectInformation() {
  if (FProjectInformationLoaded || !FLoaded) return FProjectInformation;
  const TRef<Scene::TScene> Scene = FLoaded->Scene;
  FProjectInformation = ExtractProject(*Scene);
  FProjectInformationLoaded = true;
  return FProjectInformation;
}

// ---------------------------------------------------------------- what is shown, and where

void TBeaconFencingMapPainter::SetMapOptions(TFencingMapOptions AValue) {
  if (AValue == FMapOptions) return;
  FMapOptions = AValue;
  if (FLoaded) FLoaded->ApplyMapOptions(FMapOptions);
  RepaintControl();
}

void TBeaconFencingMapPainter::SetFencingOptions(TFencingOptions* AValue) {
  FFencingOptions = AValue;
  if (!FLoaded || !FFencingOptions) return;
  FLoaded->ApplyFencingOptions(*FFencingOptions);
  RepaintControl();
}

TControl* TBeaconFencingMapPainter::GetControl() const {
  return FControl ? FControl->GetControl() : nullptr;
}

void TBeaconFencingMapPainter::SetControl(TControl* AValue) {
  if (AValue == GetControl()) return;
  FControl = std::make_unique<TControlWatch>(AValue);
  if (FLoaded) FLoaded->SetControl(AValue);
  RepaintControl();
}

void TBeaconFencingMapPainter::RepaintControl() const {
  if (TControl* const Control = GetControl()) Control->Repaint();
}

TPointF TBeaconFencingMapPainter::GetPathPosition() const {
  return GetLoaded().PathPosition->GetDisplacement();
}

void TBeaconFencingMapPainter::SetPathPosition(const TPointF& AValue) {
  GetLoaded().PathPosition->SetDisplacement(AValue);
}

TPointF TBeaconFencingMapPainter::GetRawPosition() const {
  return GetLoaded().Position->GetDisplacement();
}

void TBeaconFencingMapPainter::SetRawPosition(const TPointF& AValue) {
  GetLoaded().Position->SetDisplacement(AValue);
}

void TBeaconFencingMapPainter::ChangeBeaconColor(const TRef<IDesignBeacon>& ABeacon,
                                                 TAlphaColor AColor) {
  if (auto* const Beacon = Supports<Map::IBeacon>(ABeacon))
    Beacon->SetProperty("FillColor", TValue::From(AColor));
}

void TBeaconFencingMapPainter::HighLightZone(const TRef<IDesignZone>& AZone) {
  HighLightZones({&AZone, 1});
}

void TBeaconFencingMapPainter::HighLightZones(std::span<const TRef<IDesignZone>> AZones) {
  if (!FLoaded) return;
  const TRef<Scene::TScene> Keep = FLoaded->Scene;
  FLoaded->ZoneHighlight->Show(AZones);
}

// ---------------------------------------------------------------- the view

Scene::ISceneNode* TBeaconFencingMapPainter::GetMapNode(std::int32_t AIndex) const {
  const TArray<TFencingMap>& Maps = FProjectInformation.Maps;
  if (AIndex < 0 || static_cast<std::size_t>(AIndex) >= Maps.GetLength()) return nullptr;
  return Supports<Scene::ISceneNode>(Maps[static_cast<std::size_t>(AIndex)].Map);
}

void TBeaconFencingMapPainter::SetMapIndex(std::int32_t AIndex) {
  RequireMapInformation();
  const std::int32_t Current = FProjectInformation.CurrentMapIndex;
  if (AIndex == Current) return;
  Scene::ISceneNode* const Shown = GetMapNode(AIndex);
  if (!Shown) throw EGeneralError(fmt::format(Messages::SMapIndex, AIndex));
  ShowMap(GetMapNode(Current), false);
  FProjectInformation.SetCurrentMapIndex(AIndex);
  ShowMap(Shown, true);
  TCameraHelper::FocusRect(
      FLoaded->Camera.Get(), FLoaded->Scene.Get(), Shown->GetGlobalRect(), 1.0F);
}

void TBeaconFencingMapPainter::SetRotation(std::int32_t AAngle) {
  RequireMapInformation();
  if (AAngle < -MaxAngle || AAngle > MaxAngle) throw EGeneralError(std::string(Messages::SAngle));
  FLoaded->Camera->SetRotation(static_cast<float>(AAngle * std::numbers::pi / MaxAngle));
  const Scene::ISceneNode* const Current = GetMapNode(FProjectInformation.CurrentMapIndex);
  TCameraHelper::FocusRect(FLoaded->Camera.Get(),
                           FLoaded->Scene.Get(),
                           Current ? Current->GetGlobalRect() : FLoaded->Scene->GetRect(),
                           1.0F);
}

// ---------------------------------------------------------------- painting

void TBeaconFencingMapPainter::ControlPaint(TObject*, TDrawing* ACanvas, const TRectF& ARect) {
  if (!GetControl()) throw EGeneralError(std::string(Messages::SNoControl));
  if (!FLoaded) return;
  if (!ACanvas) throw EGeneralError(std::string(Messages::SNilCanvas));
  const TLayerLoan Loan(FLoaded->Layer, ACanvas);
  if (ARect != FLastRect) FitInto(ARect, *ACanvas);
  const TLoadedProject Painted = *FLoaded;  // what is painted may load another
  Painted.Scene->PaintScene(Painted.Layer, Painted.Canvas);
  FLastRect = ARect;
}

/// Asks for another paint only where this one does not show all of the change.
void TBeaconFencingMapPainter::FitInto(const TRectF& ARect, TDrawing& ADrawing) const {
  const bool IsAskingNeeded = !PaintsAll(ADrawing);
  if (!IsAskingNeeded) FLoaded->SetControl(nullptr);
  FLoaded->FitInto(ARect);
  if (!IsAskingNeeded) FLoaded->SetControl(GetControl());
}

}  // namespace System::Beacon::Fencing
