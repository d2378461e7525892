// Fixed texts of the runtime map.
#pragma once

#include <string_view>

namespace System::Beacon::Fencing::Messages {

// Of projects that are read; the first "{}" is where from.
inline constexpr std::string_view SProjectText = "project text";
inline constexpr std::string_view SNoScene =
    "{}: there is no scene: the entry 'project' is missing";
inline constexpr std::string_view SNotAScene =
    "{}: the entry 'project' is no scene: its root must be an object of class TScene";
inline constexpr std::string_view SNoDescription = "{}: its DescriptionList cannot be read: {}";

// Of the map that is shown.
inline constexpr std::string_view SNoMapInformation = "There is no map information loaded";
inline constexpr std::string_view SMapIndex = "{} is not a valid map index";
inline constexpr std::string_view SAngle = "Angle should be between -180 and 180 degrees";
inline constexpr std::string_view SNoControl = "Control property has not been set";
inline constexpr std::string_view SNilCanvas = "Cannot paint to a nil canvas";

}  // namespace System::Beacon::Fencing::Messages
