// The live map in a window of its own.
#pragma once

#include <string>

#include "apps/wayfence/map_view.h"
#include "platform/controls/timer.h"
#include "platform/controls/window.h"

namespace Wayfence {

/// A window with a map view. Main thread, in the real runtime; whoever makes it runs the loop of
/// windows. Raises as `TWindow` where no window can be shown.
class TMapWindow final : public System::TObject {
 public:
  /// The component must outlive the window.
  TMapWindow(const std::string& ATitle,
             System::Beacon::Fencing::TCustomBeaconMapFencing& AMap,
             System::TPictureSize ASize = {1000, 700});

  TMapView& GetView() noexcept { return FView; }
  System::TWindow& GetWindow() noexcept { return FWindow; }

 private:
  void Escape(System::TObject* ASender);

  System::TWindow FWindow;
  TMapView FView;
  System::TTimer FTimer;  // keeps the line of text up to date
};

}  // namespace Wayfence
