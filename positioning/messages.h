// Every fixed text of positioning, once. "{}" stands for what is filled in.
#pragma once

#include <string_view>

namespace System::Beacon::Fencing::Messages {

inline constexpr std::string_view SParticles =
    "{} particles are too many: a position calculator takes up to {}";
inline constexpr std::string_view SVariance = "Variance must be > 0.0 (but was {:f})";

}  // namespace System::Beacon::Fencing::Messages
