// The live map with a pointer and keys.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "fencing/System.Beacon.Fencing.h"
#include "platform/controls/control.h"
#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.Painter.h"

namespace Wayfence {

/// Shows a map component on a control: the wheel zooms, dragging moves the map, keys change floors,
/// the view and what is shown. Another floor than the device's is only looked at, without the
/// markers of its position, until the device changes floors. A line of text tells where one is; H
/// shows what the keys do.
///
/// Takes the handlers of the control, and the paint control and handler of the component, which
/// shows its project with a `TBeaconFencingMapPainter`. Both must outlive the view. Main thread.
class TMapView final : public System::TObject {
 public:
  TMapView(System::TControl& AControl, System::Beacon::Fencing::TCustomBeaconMapFencing& AMap);
  ~TMapView() override;
  TMapView(const TMapView&) = delete;
  TMapView& operator=(const TMapView&) = delete;

  /// Called when Escape is pressed.
  void SetOnEscape(System::TNotifyEvent AValue) { FOnEscape = std::move(AValue); }
  /// Seconds since the beginning, for the line of text.
  void SetTime(double ASeconds) { FSeconds = ASeconds; }
  /// The line of text says that nothing more will come.
  void SetEnded() { FHasEnded = true; }
  /// Brings the line of text up to date.
  void Refresh();
  /// Floor, zones and time.
  std::string GetStatus() const;

 private:
  void KeyDown(System::TObject* ASender, const System::TKeyPress& AKey);
  bool ChangedFloor(const std::string& AKey);
  bool ChangedOptions(const std::string& AKey);
  bool ChangedView(const System::TKeyPress& AKey);
  void Wheel(System::TObject* ASender, const System::TPointF& APoint, float ASteps);
  void PointerDown(System::TObject* ASender, const System::TPointF& APoint);
  void PointerMove(System::TObject* ASender, const System::TPointF& APoint, bool ADragged);
  void Painted(System::TObject* ASender, System::TDrawing* ADrawing, const System::TRectF& ARect);

  void ShowFloor(std::int32_t AIndex);
  void LookAt(std::int32_t AIndex);
  void FollowDevice();
  /// The floor that is shown.
  std::int32_t GetFloor() const { return FLook ? FLook->Floor : FMap.GetMapIndex(); }
  void Turn(std::int32_t ADegrees);
  /// Shows so much less of the map; what is at the point stays there.
  void Zoom(const System::TPointF& APoint, float AFactor);
  /// Moves the map by pixels.
  void Pan(const System::TPointF& AFrom, const System::TPointF& ATo);
  bool HasProject() const { return static_cast<bool>(FPainter->GetScene()); }

  System::TControl& FControl;
  System::Beacon::Fencing::TCustomBeaconMapFencing& FMap;
  System::Beacon::Fencing::TBeaconFencingMapPainter* const FPainter;
  /// A look at a floor where the device is not.
  struct TLook {
    std::int32_t Floor = 0;
    std::int32_t DeviceFloor = 0;
    System::Beacon::Fencing::TFencingMapOptions Hidden;  // markers
  };

  System::TNotifyEvent FOnEscape;
  std::optional<TLook> FLook;
  bool FHasEnded = false;
  double FSeconds = 0.0;
  bool FIsHelpShown = false;
  System::TPointF FLastPoint;  // of the pointer
  std::string FStatus;         // as it is shown
};

}  // namespace Wayfence
