// Values as the text of an element, and back. The decimal separator is a point in every locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/reflection.h"

namespace System::Beacon::Fencing {

/// Whether values of a type have a text: numbers, texts, enumerations, points and the like; objects
/// and arrays have none.
bool HasText(const TTypeInfo& AType) noexcept;

/// Appends the text of a value, escaped for XML. Raises `EConvertError`.
void AppendValueText(std::string& AText, const TValue& AValue);

/// The value of a text of which XML's escapes are already undone. Raises `EConvertError`.
TValue ParseValueText(std::string_view AText, const TTypeInfo& AType);

/// A 32-bit integer: decimal, or '$' and hexadecimal digits. Raises `EConvertError`.
std::int32_t ParseInteger(std::string_view AText);

/// Appends a number with at most 15 significant digits: "0.5", "9.99999974737875E-5".
void AppendFloat(std::string& AText, float AValue);

/// Appends a text so that a reader of XML gets it back unchanged: markup, quotes, CR, and white
/// space at either end become references. Raises `EConvertError` for what XML cannot hold.
void AppendXMLText(std::string& AText, std::string_view AValue);

}  // namespace System::Beacon::Fencing
