// Objects as XML text: written, read back, and kept in files.
//
//   <object class = "TLayer" qualified_class = "System.Beacon.Fencing.Scene.Classes.TLayer">
//     <Opacity>0.899999976158142</Opacity><Children count = "0"></Children>
//   </object>
//
// An element for every published property, in the order of the class tables, the object's own class
// first; the text has no line breaks. What its getter and setter do, a property does here too: both
// run on the thread of the caller.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "persistence/System.Beacon.Fencing.XML.h"
#include "platform/ref.h"
#include "platform/reflection.h"
#include "platform/xml.h"

namespace System::Beacon::Fencing {

/// Called with an object once all its properties are assigned.
using TLoadedResource = std::function<void(TInterfacedObject& AObject)>;

/// Makes an object of the class of that qualified name, or nothing. May hand back what is to be
/// called when the object is loaded.
using TCreator = std::function<TRef<TInterfacedObject>(const std::string& AQualifiedClass,
                                                       TLoadedResource& ALoadedResource)>;

// ---------------------------------------------------------------- writing

/// The text of one object and all that it holds. Properties of a name in `AnExclusion` (letter case
/// ignored) are left out wherever they stand; nothing is written as an element without content.
/// Raises `EConvertError` "CLASS.PROPERTY: what is wrong" for what no text can be read back from:
/// a property of another type than is known here ("Unsupported serializing property"), numbers that
/// are not finite, characters that XML cannot hold, and more, or more deeply nested, than is read.
std::string SerializeToXML(TObject& AObject, std::span<const std::string> AnExclusion = {});

// ---------------------------------------------------------------- reading

/// The four steps of the reader. Each raises `EXMLError` "LINE:COLUMN: <ELEMENT>: what is wrong",
/// also for what a setter refuses; nothing of the object that was being built is left then.
struct TUnserializer {
  /// Makes the object of an element and assigns what the elements in it name; names that the class
  /// does not know are skipped. The class is looked for as `class`, as `qualified_class`, and then
  /// with each creator in turn; false, and nothing handed out, when none knows it.
  static bool UnserializeObjectFromXMLNode(TRef<TInterfacedObject>& AObject,
                                           TRef<IInterface>& AnInterface,
                                           const IXMLNode& ANode,
                                           std::span<const TCreator> ACreators);

  /// Assigns one property, published or public. An element without content changes nothing, nor
  /// does one of a property that cannot be both read and written, or of `LoadingChildren`, which is
  /// the tree's own.
  static void AssignPropertyFromXMLNode(const IXMLNode& AnElement,
                                        TObject& AObject,
                                        const TPropertyInfo& AProperty,
                                        std::span<const TCreator> ACreators);

  /// The text of an element as a value of the type; "Property type is invalid" for a type that has
  /// no text.
  static TValue UnserializeItemFromXMLNode(const IXMLNode& AnElement, const TTypeInfo& AType);

  /// The first `count` children of an element as a value of the array type. No `count` reads as 0,
  /// one that is larger than the number of children is refused. An object of a class that nobody
  /// knows is nothing; so is an empty `item` among objects. Objects are read as counted references
  /// (`TRef`), whatever their class; an array of plain pointers is refused with "Property type is
  /// invalid", since nobody would own what is read.
  static TValue UnserializeArrayFromXMLNode(const IXMLNode& AnElement,
                                            const TTypeInfo& AType,
                                            std::span<const TCreator> ACreators);
};

/// The object of a text, and the same object as an interface. True, with both empty, when the root
/// element is no "object"; false, with both empty, for a text of nothing but white space and for a
/// class that nobody knows. Raises `EXMLError`, and leaves both empty, when the text is refused;
/// `AFileName` is only used in messages. Takes time in proportion to the text.
bool UnserializeFromXMLString(TRef<TInterfacedObject>& AObject,
                              TRef<IInterface>& AnInterface,
                              const std::string& AXML,
                              std::span<const TCreator> ACreators = {},
                              const std::string& AFileName = {});

// ---------------------------------------------------------------- texts

/// Standard Base64 of the bytes, in lines of 76 with CR LF between them.
std::string EncodeToBase64(std::string_view AText);

/// The reverse, line breaks ignored. Raises `EConvertError` for anything else.
std::string DecodeFromBase64(std::string_view AText);

/// Replaces a file by the lines of a text, each ended by CR LF. Raises `EFileError`.
void SaveStringToPath(std::string_view AText, const std::string& APath);

/// The lines of a UTF-8 file, each followed by CR LF, without its byte-order mark. Raises
/// `EFileError` when it cannot be read, is longer than `MaxXMLSize` or is UTF-16.
std::string LoadStringFromPath(const std::string& APath);

}  // namespace System::Beacon::Fencing
