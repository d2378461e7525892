// Every fixed text of the scene, once.
#pragma once

#include <string_view>

namespace System::Beacon::Fencing::Scene::Messages {

inline constexpr std::string_view SScreenAspectRatio = "Error Message";

}  // namespace System::Beacon::Fencing::Scene::Messages
