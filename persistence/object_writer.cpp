#include <fmt/format.h>

#include <algorithm>

#include "persistence/System.Beacon.Fencing.Serializer.h"
#include "persistence/messages.h"
#include "persistence/value_text.h"
#include "platform/errors.h"

namespace System::Beacon::Fencing {
namespace {

using TElements = std::vector<TValue>;

/// The object of a value that holds one or nothing.
TObject* ObjectOf(const TValue& AValue) {
  if (const auto* Object = std::get_if<TObject*>(&AValue.GetData())) return *Object;
  const auto& Interface = std::get<TRef<IInterface>>(AValue.GetData());
  return Interface ? const_cast<TObject*>(Interface->GetObject()) : nullptr;
}

bool IsReference(const TTypeInfo& AType) {
  return AType.Kind == TTypeKind::Object || AType.Kind == TTypeKind::Interface;
}

class TObjectWriter {
 public:
  explicit TObjectWriter(std::span<const std::string> AnExclusion) : FExclusion(AnExclusion) {}

  void WriteObject(TObject& AObject);
  std::string Finish() { return std::move(FResult); }

 private:
  void WriteProperty(TObject& AObject, const TPropertyInfo& AProperty);
  void WriteValue(const TValue& AValue);
  void WriteElement(const TValue& AValue);
  void WriteBetween(std::string_view AName, const TValue& AValue);
  void Enter();
  void Leave(std::string_view AName);
  bool IsExcluded(std::string_view AName) const;
  [[noreturn]] void Refuse(const std::string& AWhat) const;

  const std::span<const std::string> FExclusion;
  std::string FResult;
  std::size_t FDepth = 0;  // elements around
  const TClassInfo* FClass = nullptr;
  std::string_view FProperty;  // the last one that was begun, of FClass
};

void TObjectWriter::WriteObject(TObject& AObject) {
  const TClassInfo& Class = AObject.GetClassInfo();
  Enter();
  FResult += "<object class = \"";
  FResult += Class.GetShortName();
  FResult += "\" qualified_class = \"";
  FResult += Class.Name;
  FResult += "\">";
  for (const TClassInfo* Level = &Class; Level; Level = Level->Base)
    for (const TPropertyInfo& Property : Level->Properties)
      if (Property.IsPublished && !IsExcluded(Property.Name)) WriteProperty(AObject, Property);
  Leave("object");
}

void TObjectWriter::WriteProperty(TObject& AObject, const TPropertyInfo& AProperty) {
  FClass = &AObject.GetClassInfo();
  FProperty = AProperty.Name;
  if (!AProperty.Get) Refuse(std::string(Messages::SUnsupportedProperty));
  WriteBetween(AProperty.Name, AProperty.Get(AObject));
}

/// An element of that name around a value; of an array with its length.
void TObjectWriter::WriteBetween(std::string_view AName, const TValue& AValue) {
  Enter();
  FResult += '<';
  FResult += AName;
  if (const auto* Elements = std::get_if<TElements>(&AValue.GetData())) {
    FResult += " count = \"";
    FResult += std::to_string(Elements->size());
    FResult += '"';
  }
  FResult += '>';
  WriteValue(AValue);
  Leave(AName);
}

void TObjectWriter::WriteValue(const TValue& AValue) {
  if (const auto* Elements = std::get_if<TElements>(&AValue.GetData())) {
    for (const TValue& Element : *Elements) WriteElement(Element);
  } else if (IsReference(*AValue.GetType())) {
    if (TObject* const Object = ObjectOf(AValue)) WriteObject(*Object);
  } else {
    try {
      AppendValueText(FResult, AValue);
    } catch (const EConvertError& Error) {
      Refuse(Error.what());
    }
  }
}

void TObjectWriter::WriteElement(const TValue& AValue) {
  if (IsReference(*AValue.GetType()) && ObjectOf(AValue)) return WriteObject(*ObjectOf(AValue));
  if (AValue.GetType()->Kind != TTypeKind::Array) return WriteBetween("item", AValue);
  Enter();
  FResult += "<item>";
  WriteBetween("array", AValue);
  Leave("item");
}

void TObjectWriter::Enter() {
  if (++FDepth > MaxXMLDepth) Refuse(fmt::format(fmt::runtime(Messages::STooDeep), MaxXMLDepth));
}

void TObjectWriter::Leave(std::string_view AName) {
  FResult += "</";
  FResult += AName;
  FResult += '>';
  --FDepth;
  if (FResult.size() > MaxXMLSize)
    Refuse(fmt::format(fmt::runtime(Messages::STooLong), MaxXMLSize));
}

bool TObjectWriter::IsExcluded(std::string_view AName) const {
  return std::any_of(FExclusion.begin(), FExclusion.end(), [AName](const std::string& AExcluded) {
    return SameName(AExcluded, AName);
  });
}

void TObjectWriter::Refuse(const std::string& AWhat) const {
  throw EConvertError(fmt::format("{}.{}: {}", FClass->GetShortName(), FProperty, AWhat));
}

}  // namespace

std::string SerializeToXML(TObject& AObject, std::span<const std::string> AnExclusion) {
  TObjectWriter Writer(AnExclusion);
  Writer.WriteObject(AObject);
  return Writer.Finish();
}

}  // namespace System::Beacon::Fencing
