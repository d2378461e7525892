// Every fixed text of the platform, once. "{}" stands for what is filled in.
#pragma once

#include <string_view>

namespace System::Messages {

inline constexpr std::string_view SUnknownException = "an exception of an unknown class was raised";
inline constexpr std::string_view SInvalidGUID =
    "'{}' is not a valid GUID value; it looks like {{00112233-4455-6677-8899-AABBCCDDEEFF}}";
inline constexpr std::string_view SAssignError = "Cannot assign a {} to a {}";
inline constexpr std::string_view SListIndexError = "List index out of bounds ({}) in {}";
inline constexpr std::string_view SDuplicateName = "A component named {} already exists";

inline constexpr std::string_view SBase64Digit =
    "the Base64 text has '{}' at character {}, where it cannot stand";
inline constexpr std::string_view SBase64Short =
    "the Base64 text is cut short: digits and padding come in groups of four";

inline constexpr std::string_view SNoPlainFile =
    "a file of its own should stand here, no link or device";
inline constexpr std::string_view SZipUnreadable = "the archive cannot be read: {}";
inline constexpr std::string_view SZipUnwritable = "the archive cannot be written: {}";
inline constexpr std::string_view SZipLarge =
    "the archive is larger than {} bytes, packed or unpacked";
inline constexpr std::string_view SZipEmpty = "the file is empty; an archive should stand here";
inline constexpr std::string_view SZip64 =
    "archives in the Zip64 format are not read; pack fewer files in the plain format";
inline constexpr std::string_view SZipName =
    "the entry's name is absolute, leads upwards or is no plain text; rename it";
inline constexpr std::string_view SZipNoEntry = "there is no such entry in the archive";
inline constexpr std::string_view SZipSize =
    "the entry does not have the {} bytes that the archive tells";

inline constexpr std::string_view SXMLTooLong = "the text is longer than {} bytes";
inline constexpr std::string_view SXMLTooMany = "more than {} elements, texts and attributes";
inline constexpr std::string_view SXMLTooDeep = "elements are nested deeper than {}";
inline constexpr std::string_view SXMLOtherUnicode =
    "the text is UTF-16 or UTF-32; save it as UTF-8";
inline constexpr std::string_view SXMLNoUTF8 = "the text is not UTF-8 from here on";
inline constexpr std::string_view SXMLCharacter = "the character U+{:04X} cannot stand in XML";
inline constexpr std::string_view SXMLNoRoot = "there is no root element";
inline constexpr std::string_view SXMLSecondRoot = "<{}> is a second root element";
inline constexpr std::string_view SXMLTextOutside = "text outside of the root element";
inline constexpr std::string_view SXMLNotClosed = "<{}> is not closed";
inline constexpr std::string_view SXMLWrongEnd = "</{}> stands where <{}> of line {} has to end";
inline constexpr std::string_view SXMLNothingToEnd = "</{}> ends nothing";
inline constexpr std::string_view SXMLNoEnd = "the {} does not end";
inline constexpr std::string_view SXMLNoName = "a name should stand here";
inline constexpr std::string_view SXMLExpected = "'{}' should stand here";
inline constexpr std::string_view SXMLNoSpace = "white space should stand here";
inline constexpr std::string_view SXMLNoQuote = "a value in quotes should stand here";
inline constexpr std::string_view SXMLDuplicate = "the attribute {} stands here twice";
inline constexpr std::string_view SXMLLess = "'<' in a value; write &lt;";
inline constexpr std::string_view SXMLSectionEnd = "']]>' in a text; write ]]&gt;";
inline constexpr std::string_view SXMLDashes = "'--' within a comment";
inline constexpr std::string_view SXMLEntity = "the entity &{}; is not known";
inline constexpr std::string_view SXMLReference = "this reference names no character of XML";
inline constexpr std::string_view SXMLDeclaration =
    "a declaration stands at the very start: <?xml version=\"1.0\" encoding=\"UTF-8\"?>";
inline constexpr std::string_view SXMLEncoding =
    "the encoding {} cannot be read; save the text as UTF-8";
inline constexpr std::string_view SXMLDocumentType =
    "a document type stands once, before the root element";
inline constexpr std::string_view SXMLSubset =
    "a document type with declarations of its own is not read";
inline constexpr std::string_view SXMLIndentedTooLong =
    "the indented text would be longer than {} bytes";
inline constexpr std::string_view SXMLUnreadable = "the text cannot be read: {}";
inline constexpr std::string_view SDrawingSize =
    "A drawing of {} x {} pixels is not possible; sides are from 1 to {} pixels";
inline constexpr std::string_view SUnknownPicture = "{}: this is no PNG, JPEG or WebP picture";
inline constexpr std::string_view SDamagedPicture =
    "{}: the {} picture is damaged or cut short: {}";
inline constexpr std::string_view SLargePicture =
    "{}: the picture has {} x {} pixels; at most {} on a side and {} in all are read";
inline constexpr std::string_view SPrintColours =
    "{}: the picture has colours for print (CMYK); save it with RGB colours";
inline constexpr std::string_view SAnimation =
    "{}: the picture is an animation; save a single picture";
inline constexpr std::string_view SNoWindow =
    "A window cannot be opened: {}; set DISPLAY or WAYLAND_DISPLAY to a display that can be "
    "reached, or draw without a window";
inline constexpr std::string_view SBuiltWithoutWindows =
    "A window cannot be opened: this build was made without SDL2; install libsdl2-dev, configure "
    "again and rebuild, or draw without a window";

}  // namespace System::Messages
