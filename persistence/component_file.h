// A component's published properties in a JSON file.
//
//   { "BaseBeaconGUID": "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}",
//     "BeaconManagerOptions": { "ScanningTime": 500, "SPC": 0.5 },
//     "Zones": [ { "DisplayName": "Lobby", "BeaconProximity": "Near",
//                  "BeaconList": [ { "Major": 1, "Minor": 7 } ] } ],
//     "Enabled": true }
//
// Names of properties and of enumeration values compare ignoring letter case; a set is an array of
// names, a colour "#AARRGGBB"; // and /* */ comments are skipped. Plain values and option sets are
// applied before collections, and Enabled last, wherever they stand. Events are not stored, nor is
// a value that a new component (or a new item with the same base values) has anyway.
#pragma once

#include <string>
#include <string_view>

#include "platform/components.h"

namespace System::Beacon::Fencing {

/// Streams a text into a component, in its loading state; `Loaded` follows, which starts an enabled
/// component. Raises `EFileError` "FILE:LINE: PROPERTY: what is wrong" and leaves the component as
/// it was: everything is tried on another component of its class first. What the start raises
/// passes through. Main thread.
void ReadComponent(TComponent& AComponent, std::string_view AText, const std::string& AFileName);

/// The same from a file; raises `EFileError` when it cannot be read.
void LoadComponentFile(TComponent& AComponent, const std::string& AFileName);

/// The text that `ReadComponent` turns into an equal component. Bytes of a text that are no UTF-8
/// become U+FFFD.
std::string WriteComponent(TComponent& AComponent);

/// Writes the text to a file, which is replaced as a whole or left as it was. Raises `EFileError`.
void SaveComponentFile(TComponent& AComponent, const std::string& AFileName);

}  // namespace System::Beacon::Fencing
