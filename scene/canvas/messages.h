// Every fixed text of the canvases, once.
#pragma once

#include <string_view>

namespace System::Beacon::Fencing::Canvas::Messages {

inline constexpr std::string_view SNotPainting =
    "A canvas draws only between BeginScene and EndScene";
inline constexpr std::string_view SAlreadyPainting =
    "BeginScene was called before EndScene had ended the last paint";
inline constexpr std::string_view SNoSurface = "The layer has no surface to paint on";
inline constexpr std::string_view SWrongSurface = "The layer can be bound to a drawing only";
inline constexpr std::string_view SWrongElement =
    "A canvas of the type {} cannot draw with an element of the type {}";

inline constexpr std::string_view SLayerSize =
    "A layer of {} x {} pixels is not possible; sides are from 1 to {} pixels";
inline constexpr std::string_view SNoGdip =
    "GDI+ cannot be used: {} is missing ({}); install the Debian package libgdiplus";
inline constexpr std::string_view SGdipStatus = "GDI+ failed: {} returned the status {}";

}  // namespace System::Beacon::Fencing::Canvas::Messages
