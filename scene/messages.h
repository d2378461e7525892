// Every fixed text of the scene, once. "{}" stands for what is filled in.
#pragma once

#include <string_view>

namespace System::Beacon::Fencing::Scene::Messages {

inline constexpr std::string_view SScreenAspectRatio = "Error Message";
inline constexpr std::string_view SPolygonCommand =
    "Command {} of a polygon is {}; use 0 to move to a point or 1 to draw a line to it";
inline constexpr std::string_view SNoCanvas = "A scene cannot be painted to a nil canvas";
inline constexpr std::string_view SAnimationTimer =
    "Please assign a timer to animation system (TAnimationsEngine.SetTimer(your timer)).";

}  // namespace System::Beacon::Fencing::Scene::Messages
