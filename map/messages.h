// Every fixed text of the map model, once.
#pragma once

#include <string_view>

namespace System::Beacon::Fencing::Scene::Beacons::Messages {

inline constexpr std::string_view SManufacturerID =
    "Manufacturer ID should be -1 or a four digits hex value";
inline constexpr std::string_view SEddyNamespace = "Invalid Eddystone namespace";
inline constexpr std::string_view SEddyInstance = "Invalid Eddystone instance";
inline constexpr std::string_view SNotFinite =
    "'{}': a coordinate is not finite; give positions in metres";
inline constexpr std::string_view SMapSize =
    "map '{}': {} by {} metres is no size; both are above 0";
inline constexpr std::string_view SInvalidObject = "Invalid Object";

}  // namespace System::Beacon::Fencing::Scene::Beacons::Messages
