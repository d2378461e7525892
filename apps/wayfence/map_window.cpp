#include "apps/wayfence/map_window.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

constexpr std::uint32_t RefreshInterval = 200;

}  // namespace

TMapWindow::TMapWindow(const std::string& ATitle, TCustomBeaconMapFencing& AMap, TPictureSize ASize)
    : FWindow(ATitle, ASize.Width, ASize.Height), FView(FWindow, AMap) {
  FView.SetOnEscape(Bind<&TMapWindow::Escape>(this));
  FTimer.SetInterval(RefreshInterval);
  FTimer.SetOnTimer(Bind<&TMapView::Refresh>(&FView));
  FTimer.SetEnabled(true);
}

void TMapWindow::Escape(TObject*) {
  FWindow.Close();
}

}  // namespace Wayfence
