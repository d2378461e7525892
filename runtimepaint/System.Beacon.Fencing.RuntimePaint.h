// What the map component shows a project with, and gets the project record from.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/color.h"
#include "platform/controls/control.h"
#include "platform/geometry.h"

namespace System::Beacon::Fencing {

class TBeaconFencingRuntimeMap;

/// Makes runtime maps of one class. Empty is a state that callers ask about.
class TBeaconFencingRuntimeMapClass {
 public:
  using TFactory = std::unique_ptr<TBeaconFencingRuntimeMap> (*)();

  constexpr TBeaconFencingRuntimeMapClass() = default;
  constexpr explicit TBeaconFencingRuntimeMapClass(TFactory AFactory) : FFactory(AFactory) {}

  constexpr explicit operator bool() const { return FFactory != nullptr; }
  /// A new runtime map; the class must not be empty.
  std::unique_ptr<TBeaconFencingRuntimeMap> Create() const { return FFactory(); }

 private:
  TFactory FFactory = nullptr;
};

/// The class reference of a runtime map that needs no arguments.
template <class T>
constexpr TBeaconFencingRuntimeMapClass RuntimeMapClassOf() {
  return TBeaconFencingRuntimeMapClass(
      []() -> std::unique_ptr<TBeaconFencingRuntimeMap> { return std::make_unique<T>(); });
}

/// The live map of one component: a project, how it is shown, and the record that is taken out of
/// it. Main thread only. Positions are in the space of all maps, map units.
///
/// What is refused raises `EGeneralError` and changes nothing: "There is no map information loaded"
/// for an operation that needs a project, and what is said where it is declared.
class TBeaconFencingRuntimeMap : public TObject {
 public:
  /// What a map component makes its runtime map of: `TBeaconFencingMapPainter`, until an
  /// application sets another class. Set before the component is made.
  static TBeaconFencingRuntimeMapClass FRuntimeMapClass;

  /// Where the position markers stand: the estimate fitted to the paths, and the filtered one.
  virtual TPointF GetPathPosition() const = 0;
  virtual void SetPathPosition(const TPointF& AValue) = 0;
  virtual TPointF GetRawPosition() const = 0;
  virtual void SetRawPosition(const TPointF& AValue) = 0;

  /// The text of the project. Another text replaces the scene and empties the project record; the
  /// empty one unloads everything. A text that is refused raises what the reader raises and leaves
  /// what was loaded before in place.
  virtual std::string GetXmlData() const = 0;
  virtual void SetXmlData(const std::string& AValue) = 0;

  virtual TFencingMapOptions GetMapOptions() const = 0;
  virtual void SetMapOptions(TFencingMapOptions AValue) = 0;
  /// Colours and sizes of the markers; the caller keeps the object, which must outlive this one.
  virtual TFencingOptions* GetFencingOptions() const = 0;
  virtual void SetFencingOptions(TFencingOptions* AValue) = 0;
  /// Where the map is shown; nothing takes it off. Not owned.
  virtual TControl* GetControl() const = 0;
  virtual void SetControl(TControl* AValue) = 0;

  /// Turns the view by whole degrees: "Angle should be between -180 and 180 degrees".
  virtual void SetRotation(std::int32_t AAngle) = 0;
  /// Shows another map and makes it the project's current one: "%d is not a valid map index".
  virtual void SetMapIndex(std::int32_t AIndex) = 0;

  /// The control's paint handler: "Control property has not been set", "Cannot paint to a nil
  /// canvas".
  virtual void ControlPaint(TObject* ASender, TDrawing* ACanvas, const TRectF& ARect) = 0;
  virtual void ChangeBeaconColor(const TRef<IDesignBeacon>& ABeacon, TAlphaColor AColor) = 0;
  /// Emphasises one zone, or the given ones, and no other.
  virtual void HighLightZone(const TRef<IDesignZone>& AZone) = 0;
  virtual void HighLightZones(std::span<const TRef<IDesignZone>> AZones) = 0;

  /// The record of the project, the same one (sharing its arrays) until the text changes; one
  /// without maps when there is no project.
  virtual TFencingProject GetProjectInformation() = 0;
};

}  // namespace System::Beacon::Fencing
