#include <fmt/format.h>

#include <unordered_map>
#include <utility>
#include <vector>

#include "persistence/System.Beacon.Fencing.RttiUtils.h"
#include "persistence/System.Beacon.Fencing.Serializer.h"
#include "persistence/messages.h"
#include "persistence/value_text.h"
#include "platform/xml_characters.h"

namespace System::Beacon::Fencing {
namespace {

using TCreators = std::span<const TCreator>;

[[noreturn]] void RefuseAt(const IXMLNode& ANode, const std::string& AWhat) {
  throw EXMLError(fmt::format("{}: <{}>: {}", ANode.GetPlace(), ANode.GetNodeName(), AWhat));
}

/// Calls something that has to do with a node, and gives what it raises the node's place.
template <class TCall>
auto At(const IXMLNode& ANode, TCall&& ACall) {
  try {
    return ACall();
  } catch (const EXMLError&) {
    throw;  // has a place
  } catch (const EGeneralError& Error) {
    RefuseAt(ANode, Error.what());
  }
}

bool IsElement(const IXMLNode& ANode, std::string_view AName) {
  return ANode.GetKind() == TXMLNodeKind::Element && SameName(ANode.GetNodeName(), AName);
}

void RequireElement(const IXMLNode& ANode, std::string_view AName) {
  if (!IsElement(ANode, AName))
    RefuseAt(ANode, fmt::format(fmt::runtime(Messages::SNotInPlace), AName));
}

std::string_view Attribute(const IXMLNode& ANode, std::string_view AName) {
  return ANode.GetAttribute(AName).value_or("");
}

/// The properties of a class by name, those of the nearest class first.
class TPropertyNames {
 public:
  explicit TPropertyNames(const TClassInfo& AClass) {
    for (const TClassInfo* Class = &AClass; Class; Class = Class->Base)
      for (const TPropertyInfo& Property : Class->Properties)
        if (FindProperty(AClass, Property.Name) == &Property) FProperties.push_back(&Property);
  }

  /// Nothing for an unknown name. Looks at `ANext` first and sets it behind what was found, since
  /// texts name properties in the order of the tables.
  const TPropertyInfo* Find(std::string_view AName, std::size_t& ANext) const {
    for (std::size_t I = 0; I < FProperties.size(); ++I) {
      const std::size_t Index = (ANext + I) % FProperties.size();
      if (!SameName(FProperties[Index]->Name, AName)) continue;
      ANext = Index + 1;
      return FProperties[Index];
    }
    return nullptr;
  }

  static const TPropertyNames& Of(const TClassInfo& AClass) {
    thread_local std::unordered_map<const TClassInfo*, TPropertyNames> Known;
    return Known.try_emplace(&AClass, AClass).first->second;
  }

 private:
  std::vector<const TPropertyInfo*> FProperties;
};

TRef<TInterfacedObject> MakeObject(const IXMLNode& ANode,
                                   TCreators ACreators,
                                   TLoadedResource& ALoadedResource) {
  if (TRef<TInterfacedObject> Object = CreateInstanceOfClass(Attribute(ANode, "class")))
    return Object;
  const std::string Class(Attribute(ANode, "qualified_class"));
  TRef<TInterfacedObject> Object = CreateInstanceOfClass(Class);
  for (auto Creator = ACreators.begin(); !Object && Creator != ACreators.end(); ++Creator) {
    ALoadedResource = nullptr;
    Object = (*Creator)(Class, ALoadedResource);
  }
  return Object;
}

/// How many elements an array is said to have, which are all there.
std::size_t CountOf(const IXMLNode& AnElement) {
  const auto Text = AnElement.GetAttribute("count");
  const std::int32_t Count = Text ? At(AnElement, [&] { return ParseInteger(*Text); }) : 0;
  if (Count <= 0) return 0;
  const auto Result = static_cast<std::size_t>(Count);
  const std::size_t Children = AnElement.GetChildCount();
  if (Result > Children)
    RefuseAt(AnElement, fmt::format(fmt::runtime(Messages::SCountTooLarge), Result, Children));
  return Result;
}

/// An object among the elements of an array; nothing for an empty item or an unknown class.
TValue ReadReference(const IXMLNode& ANode, const TTypeInfo& AType, TCreators ACreators) {
  if (AType.Kind == TTypeKind::Object)  // there is nobody who would own it
    RefuseAt(ANode, std::string(Messages::SInvalidType));
  TRef<TInterfacedObject> Object;
  TRef<IInterface> Interface;
  const bool IsNothing = IsElement(ANode, "item") && !ANode.GetFirstChild();
  if (!IsNothing) {
    RequireElement(ANode, "object");
    TUnserializer::UnserializeObjectFromXMLNode(Object, Interface, ANode, ACreators);
  }
  if (Object && !AType.IsOfferedBy(Interface.Get())) {
    RefuseAt(ANode,
             fmt::format(fmt::runtime(Messages::SWrongClass),
                         Object->GetClassInfo().GetShortName(),
                         AType.Name));
  }
  return {AType, std::move(Interface)};
}

TValue ReadInnerArray(const IXMLNode& AnItem, const TTypeInfo& AType, TCreators ACreators) {
  const TRef<IXMLNode> Array = AnItem.GetFirstChild();
  if (!Array) return {AType, std::vector<TValue>()};
  RequireElement(*Array, "array");
  return TUnserializer::UnserializeArrayFromXMLNode(*Array, AType, ACreators);
}

TValue ReadElement(const IXMLNode& ANode, const TTypeInfo& AType, TCreators ACreators) {
  if (AType.Kind == TTypeKind::Object || AType.Kind == TTypeKind::Interface)
    return ReadReference(ANode, AType, ACreators);
  RequireElement(ANode, "item");
  if (AType.Kind == TTypeKind::Array) return ReadInnerArray(ANode, AType, ACreators);
  return TUnserializer::UnserializeItemFromXMLNode(ANode, AType);
}

}  // namespace

bool TUnserializer::UnserializeObjectFromXMLNode(TRef<TInterfacedObject>& AObject,
                                                 TRef<IInterface>& AnInterface,
                                                 const IXMLNode& ANode,
                                                 TCreators ACreators) {
  AObject = nullptr;
  AnInterface = nullptr;
  TLoadedResource LoadedResource;
  TRef<TInterfacedObject> Object =
      At(ANode, [&] { return MakeObject(ANode, ACreators, LoadedResource); });
  if (!Object) return false;
  const TPropertyNames& Properties = TPropertyNames::Of(Object->GetClassInfo());
  std::size_t Next = 0;
  const TRef<IXMLNode> Child = ANode.GetFirstChild();
  for (bool IsThere = Child != nullptr; IsThere; IsThere = Child->MoveToNextSibling()) {
    if (Child->GetKind() != TXMLNodeKind::Element) continue;
    if (const TPropertyInfo* const Property = Properties.Find(Child->GetNodeName(), Next))
      AssignPropertyFromXMLNode(*Child, *Object, *Property, ACreators);
  }
  if (LoadedResource) At(ANode, [&] { LoadedResource(*Object); });
  AnInterface = Object;
  AObject = std::move(Object);
  return true;
}

void TUnserializer::AssignPropertyFromXMLNode(const IXMLNode& AnElement,
                                              TObject& AObject,
                                              const TPropertyInfo& AProperty,
                                              TCreators ACreators) {
  if (!AProperty.Get || !AProperty.Set || SameName(AProperty.Name, "LoadingChildren")) return;
  if (!AnElement.GetFirstText() && !AnElement.GetFirstChild()) return;
  const TTypeInfo& Type = *AProperty.Type;
  const TValue Value = Type.Kind == TTypeKind::Array
                           ? UnserializeArrayFromXMLNode(AnElement, Type, ACreators)
                           : UnserializeItemFromXMLNode(AnElement, Type);
  At(AnElement, [&] { AProperty.Set(AObject, Value); });
}

TValue TUnserializer::UnserializeItemFromXMLNode(const IXMLNode& AnElement,
                                                 const TTypeInfo& AType) {
  if (!HasText(AType)) RefuseAt(AnElement, std::string(Messages::SInvalidType));
  const auto Text = AnElement.GetFirstText();
  if (const TRef<IXMLNode> Child = Text ? nullptr : AnElement.GetFirstChild())
    RefuseAt(*Child, std::string(Messages::SNoValue));
  return At(AnElement, [&] { return ParseValueText(Text.value_or(""), AType); });
}

TValue TUnserializer::UnserializeArrayFromXMLNode(const IXMLNode& AnElement,
                                                  const TTypeInfo& AType,
                                                  TCreators ACreators) {
  std::vector<TValue> Elements;
  std::size_t Missing = CountOf(AnElement);
  Elements.reserve(Missing);
  for (const TRef<IXMLNode> Child = AnElement.GetFirstChild(); Missing > 0; --Missing) {
    Elements.push_back(ReadElement(*Child, *AType.Element, ACreators));
    Child->MoveToNextSibling();
  }
  return {AType, std::move(Elements)};
}

bool UnserializeFromXMLString(TRef<TInterfacedObject>& AObject,
                              TRef<IInterface>& AnInterface,
                              const std::string& AXML,
                              TCreators ACreators,
                              const std::string& AFileName) {
  AObject = nullptr;
  AnInterface = nullptr;
  if (IsXMLBlank(AXML)) return false;
  const TRef<IXMLDocument> Document = ParseXML(AXML, AFileName);
  const TRef<IXMLNode> Root = Document->GetDocumentElement();
  return !IsElement(*Root, "object") ||
         TUnserializer::UnserializeObjectFromXMLNode(AObject, AnInterface, *Root, ACreators);
}

}  // namespace System::Beacon::Fencing
