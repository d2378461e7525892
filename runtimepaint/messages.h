// Fixed texts of the runtime map.
#pragma once

#include <string_view>

namespace System::Beacon::Fencing::Messages {

inline constexpr std::string_view SNoScene =
    "{}: there is no scene: the entry 'project' is missing";
inline constexpr std::string_view SNotAScene =
    "{}: the entry 'project' is no scene: its root must be an object of class TScene";

}  // namespace System::Beacon::Fencing::Messages
