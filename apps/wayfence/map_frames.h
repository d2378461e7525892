// Pictures of the live map in a folder.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "apps/wayfence/commands.h"
#include "fencing/System.Beacon.Fencing.h"
#include "platform/controls/offscreen_control.h"

namespace Wayfence {

/// The pictures of an earlier run in a folder, which need not be there. Raises `EFileError` for
/// what is no folder.
std::vector<std::string> FramesIn(const std::string& ADirectory);

/// Draws the live map into numbered pictures, once in an interval. Main thread; goes before the
/// component.
class TFrames {
 public:
  /// Makes the folder, and removes the pictures of an earlier run, which would stand between those
  /// of this one.
  TFrames(System::Beacon::Fencing::TBeaconMapFencing& AComponent, const TMapArguments& AArguments);
  ~TFrames() { FComponent.SetPaintControl(nullptr); }
  TFrames(const TFrames&) = delete;
  TFrames& operator=(const TFrames&) = delete;

  void Draw(double ASeconds);

 private:
  System::Beacon::Fencing::TBeaconMapFencing& FComponent;
  const std::filesystem::path FDirectory;
  const double FInterval;
  System::TOffscreenControl FControl;
  double FNext = 0.0;
};

}  // namespace Wayfence
