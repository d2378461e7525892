// The runtime map that shows a project's scene on a control.
#pragma once

#include <memory>

#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.h"
#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing {

struct TLoadedProject;

/// Shows the scene of a project: the current floor with its picture, beacons, zones and paths, and
/// on top of them the two position markers. Which of these are seen is up to the map options: none,
/// until some are given. Until fencing options are given, markers look as theirs do by default.
///
/// Only what has changed is asked to be painted: a marker that moves, a zone that lights up. When
/// the control's size changes, the whole scene is fitted into it.
///
/// A record that was handed out keeps the scene it was made of; threads may read it while positions
/// move, floors change and zones light up, and until its last copy is released, on the main thread.
class TBeaconFencingMapPainter final : public TBeaconFencingRuntimeMap {
 public:
  TBeaconFencingMapPainter();
  ~TBeaconFencingMapPainter() override;
  TBeaconFencingMapPainter(const TBeaconFencingMapPainter&) = delete;
  TBeaconFencingMapPainter& operator=(const TBeaconFencingMapPainter&) = delete;

  TPointF GetPathPosition() const override;
  void SetPathPosition(const TPointF& AValue) override;
  TPointF GetRawPosition() const override;
  void SetRawPosition(const TPointF& AValue) override;
  std::string GetXmlData() const override { return FXmlData; }
  void SetXmlData(const std::string& AValue) override;
  TFencingMapOptions GetMapOptions() const override { return FMapOptions; }
  void SetMapOptions(TFencingMapOptions AValue) override;
  TFencingOptions* GetFencingOptions() const override { return FFencingOptions; }
  void SetFencingOptions(TFencingOptions* AValue) override;
  /// Nothing once the control has gone.
  TControl* GetControl() const override;
  void SetControl(TControl* AValue) override;
  /// Without a current map the scene is framed.
  void SetRotation(std::int32_t AAngle) override;
  /// Knows the maps once the project information was asked for.
  void SetMapIndex(std::int32_t AIndex) override;
  void ControlPaint(TObject* ASender, TDrawing* ACanvas, const TRectF& ARect) override;
  void ChangeBeaconColor(const TRef<IDesignBeacon>& ABeacon, TAlphaColor AColor) override;
  void HighLightZone(const TRef<IDesignZone>& AZone) override;
  void HighLightZones(std::span<const TRef<IDesignZone>> AZones) override;
  TFencingProject GetProjectInformation() override;

  /// What is shown, and what it is looked at with; nothing without a project.
  TRef<Scene::IScene> GetScene() const;
  TRef<Scene::ICamera> GetCamera() const;

 private:
  class TControlWatch;

  const TLoadedProject& GetLoaded() const;
  void RequireMapInformation() const;
  /// The map of that index in the record, or nothing.
  Scene::ISceneNode* GetMapNode(std::int32_t AIndex) const;
  void FitInto(const TRectF& ARect, TDrawing& ADrawing) const;
  void RepaintControl() const;

  std::unique_ptr<TLoadedProject> FLoaded;  // empty without a project
  TRectF FLastRect;                         // of the last paint
  std::unique_ptr<TControlWatch> FControl;
  std::string FXmlData;
  bool FProjectInformationLoaded = false;
  TFencingProject FProjectInformation;
  TFencingMapOptions FMapOptions;
  TFencingOptions* FFencingOptions = nullptr;
};

}  // namespace System::Beacon::Fencing
