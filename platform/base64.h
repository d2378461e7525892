// Bytes as Base64 text (RFC 4648, section 4).
#pragma once

#include <string>
#include <string_view>

namespace System {

/// Lines of 76 digits with CR LF between them, none at the end; padded with '='.
std::string EncodeBase64(std::string_view ABytes);

/// The bytes behind a text; blanks and line breaks may stand anywhere. Raises `EConvertError` for
/// any other character, for padding that is missing or out of place, and where bits are left over
/// that are not 0: no two texts without blanks stand for the same bytes.
std::string DecodeBase64(std::string_view AText);

}  // namespace System
