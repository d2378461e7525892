// Every fixed text of this folder's readers and writers, once. "{}" stands for what is filled in.
#pragma once

#include <string_view>

namespace System::Beacon::Fencing::Messages {

// Of objects that are written.
inline constexpr std::string_view SUnsupportedProperty = "Unsupported serializing property";
inline constexpr std::string_view SNotFinite = "{} cannot be written; a number has to be finite";
inline constexpr std::string_view SNoName = "the value {} of {} has no name";
inline constexpr std::string_view SNoText =
    "byte {} of the text begins no character that XML can hold; take it out";
inline constexpr std::string_view STooDeep =
    "what is written would be nested deeper than the {} elements that can be read";
inline constexpr std::string_view STooLong =
    "what is written would be longer than the {} bytes that can be read";

// Of objects that are read.
inline constexpr std::string_view SInvalidType = "Property type is invalid";
inline constexpr std::string_view SNoNumber = "'{}' is no number; write one such as 12.5 or 1E-5";
inline constexpr std::string_view SNoInteger =
    "'{}' is no whole number from -2147483648 to 2147483647";
inline constexpr std::string_view SNoColour =
    "'{}' is no colour; write red|green|blue|alpha, each from 0 to 255";
inline constexpr std::string_view SNoBoolean = "'{}' is no Boolean; write True or False";
inline constexpr std::string_view SNoValueOf = "'{}' is no {}; write one of {}";
inline constexpr std::string_view SNotSoManyParts = "'{}' is not {} values with '|' between them";
inline constexpr std::string_view SCountTooLarge =
    "count is {}, but the element holds {}; correct count or add what is missing";
inline constexpr std::string_view SNotInPlace = "<{}> should stand here";
inline constexpr std::string_view SNoValue = "a value should stand here, no element";
inline constexpr std::string_view SWrongClass = "a {} cannot stand here, since it is no {}";

// Of text files.
inline constexpr std::string_view SNoUTF8File = "{}: the file is UTF-16; save it as UTF-8";

// Of bundles.
inline constexpr std::string_view SBundleId =
    "'{}' is no id; ids are 1 to {} letters, digits, '-' or '_'";
inline constexpr std::string_view SBundlePath =
    "'{}' is no path; paths are 1 to {} bytes of UTF-8 without control characters";
inline constexpr std::string_view SBundleAttribute = "<{}> has no attribute {}";
inline constexpr std::string_view SBundleNoPair = "the last path has no line with its id";
inline constexpr std::string_view SBundleMany = "there are more than {} files";
inline constexpr std::string_view SBundleLarge =
    "{}: the bundle would hold more than {} bytes; raise its bound or pack less";
inline constexpr std::string_view SBundleFolder =
    "{}: the folder cannot be made: {}; name one that is new or empty";
inline constexpr std::string_view SBundleTextLarge =
    "the bundle's text would be longer than {} bytes; keep it in a directory or an archive";

}  // namespace System::Beacon::Fencing::Messages
