// Every fixed text of the fencing components, once.
#pragma once

#include <string_view>

namespace System::Beacon::Fencing::Messages {

inline constexpr std::string_view SManufacturerID =
    "Manufacturer ID should be -1 or a four digits hex value";
inline constexpr std::string_view SEddyNamespace = "Invalid Eddystone namespace";
inline constexpr std::string_view SEddyInstance = "Invalid Eddystone instance";

inline constexpr std::string_view SBeaconDeathTime = "Beacon death time should be greater than 0";
inline constexpr std::string_view SScanningTime = "Scanning time should be greater than 0";
inline constexpr std::string_view SScanningSleepingTime =
    "Scanning sleeping time should be greater than 0";
inline constexpr std::string_view SParticlesNumber = "Particles number should be greater than 0";
inline constexpr std::string_view SUpdateInterval = "Update interval should be greater than 0";
inline constexpr std::string_view SSignalRelativeStdDev =
    "Signal Relative standard deviation should be Between 1 and 100";
inline constexpr std::string_view SBeaconsToUse =
    "Number of beacons to use should be greater than 0";
inline constexpr std::string_view SInvalidMapIndex = "{} is not a valid map index";

inline constexpr std::string_view SNoFencingMap = "There is no fencing map information";
inline constexpr std::string_view STooManyMaps =
    "the project has {} maps; at most {} can be worked on: split it";
inline constexpr std::string_view SNoCalculatorClass =
    "Cannot continue, position calculator class not found";
inline constexpr std::string_view SNoRuntimeMapClass =
    "Cannot continue, runtime map class not found";
inline constexpr std::string_view SZoneEnteringError = "The value should be between -1 and 100";

}  // namespace System::Beacon::Fencing::Messages
