// Objects as XML text: what is refused leaves nothing, what is read is written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "persistence/System.Beacon.Fencing.Serializer.h"
#include "platform/errors.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;

/// The object of a text; nothing when it is refused.
TRef<TInterfacedObject> Read(const std::string& AText) {
  TRef<TInterfacedObject> Object;
  TRef<IInterface> Interface;
  try {
    if (!UnserializeFromXMLString(Object, Interface, AText) && (Object || Interface)) std::abort();
  } catch (const EXMLError&) {
    if (Object || Interface) std::abort();
  }
  return Object;
}

/// The text of an object; empty when it could not be read again, being nested too deeply.
std::string Written(TObject& AObject) {
  try {
    return SerializeToXML(AObject);
  } catch (const EConvertError&) {
    return {};
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  const TRef<TInterfacedObject> Object =
      Read(std::string(reinterpret_cast<const char*>(AData), ASize));
  const std::string Text = Object ? Written(*Object) : "";
  if (Text.empty()) return 0;
  const TRef<TInterfacedObject> Copy = Read(Text);
  if (!Copy || Written(*Copy) != Text) std::abort();
  const TRef<TInterfacedObject> Indented = Read(FormatXML(Text));
  if (!Indented || Written(*Indented) != Text) std::abort();
  return 0;
}
