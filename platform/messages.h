// Every fixed text of the platform, once. "{}" stands for what is filled in.
#pragma once

#include <string_view>

namespace System::Messages {

inline constexpr std::string_view SInvalidGUID =
    "'{}' is not a valid GUID value; it looks like {{00112233-4455-6677-8899-AABBCCDDEEFF}}";
inline constexpr std::string_view SAssignError = "Cannot assign a {} to a {}";
inline constexpr std::string_view SListIndexError = "List index out of bounds ({}) in {}";
inline constexpr std::string_view SDuplicateName = "A component named {} already exists";

}  // namespace System::Messages
