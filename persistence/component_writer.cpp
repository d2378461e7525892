#include <fmt/format.h>

#include <charconv>
#include <nlohmann/json.hpp>

#include "persistence/component_file.h"
#include "platform/files.h"

namespace System::Beacon::Fencing {
namespace {

using TJson = nlohmann::ordered_json;

/// The double whose shortest text is the shortest text of the float, whatever the locale.
double AsPrinted(float AValue) {
  std::array<char, 32> Text{};
  const auto End = std::to_chars(Text.data(), Text.data() + Text.size(), AValue).ptr;
  double Result = AValue;
  std::from_chars(Text.data(), End, Result);
  return Result;
}

TJson NamesOf(const TTypeInfo& AEnumeration, std::int64_t ABits) {
  TJson Result = TJson::array();
  for (std::size_t I = 0; I < AEnumeration.Names.size(); ++I)
    if (ABits >> I & 1) Result.push_back(AEnumeration.Names[I]);
  return Result;
}

TJson JsonOf(const TValue& AValue) {
  const TTypeInfo& Type = *AValue.GetType();
  switch (Type.Kind) {
    case TTypeKind::Boolean:
      return AValue.As<bool>();
    case TTypeKind::Single:
      return AsPrinted(AValue.As<float>());
    case TTypeKind::Double:
      return AValue.As<double>();
    case TTypeKind::String:
      return AValue.As<std::string>();
    case TTypeKind::Enumeration:
      return Type.Names[static_cast<std::size_t>(AValue.GetOrdinal())];
    case TTypeKind::Set:
      return NamesOf(*Type.Element, AValue.GetOrdinal());
    case TTypeKind::Color:
      return ColorToString(AValue.As<TAlphaColor>());
    default:
      return AValue.GetOrdinal();
  }
}

TJson WriteObject(TObject& AObject, TObject& ADefault);

TJson WriteItems(TCollection& AItems, TCollection& ADefaultOwner) {
  TJson Result = TJson::array();
  for (int I = 0; I < AItems.GetCount(); ++I) {
    Result.push_back(WriteObject(*AItems.GetItem(I), *ADefaultOwner.Add()));
    ADefaultOwner.Clear();
  }
  return Result;
}

TJson WriteOwned(TObject& AOwned, TObject& ADefault) {
  auto* const Items = dynamic_cast<TCollection*>(&AOwned);
  return Items ? WriteItems(*Items, dynamic_cast<TCollection&>(ADefault))
               : WriteObject(AOwned, ADefault);
}

bool IsCollection(const TValue& AValue) {
  TObject* const* const Object = std::get_if<TObject*>(&AValue.GetData());
  return Object && dynamic_cast<TCollection*>(*Object);
}

void WriteProperty(TJson& AResult,
                   const TPropertyInfo& AProperty,
                   TObject& AObject,
                   TObject& ADefault) {
  const TValue Value = AProperty.Get(AObject);
  const TValue Default = AProperty.Get(ADefault);
  const std::string Name(AProperty.Name);
  if (AProperty.Type->Kind != TTypeKind::Object) {
    if (Value == Default) return;
    AResult[Name] = JsonOf(Value);
    AProperty.Set(ADefault, Value);  // later values are compared with what it brings about
    return;
  }
  TJson Owned = WriteOwned(*Value.As<TPersistent*>(), *Default.As<TPersistent*>());
  if (!Owned.empty()) AResult[Name] = std::move(Owned);
}

/// Plain values and option sets first, then collections, then `Enabled`: the order of reading.
int PassOf(const TPropertyInfo& AProperty, TObject& AObject) {
  if (AProperty.Name == "Enabled") return 2;
  return AProperty.Type->Kind == TTypeKind::Object && IsCollection(AProperty.Get(AObject)) ? 1 : 0;
}

TJson WriteObject(TObject& AObject, TObject& ADefault) {
  TJson Result = TJson::object();
  for (int Pass = 0; Pass <= 2; ++Pass)
    for (const TClassInfo* Class = &AObject.GetClassInfo(); Class; Class = Class->Base)
      for (const TPropertyInfo& Property : Class->Properties)
        if (Property.IsPublished && Property.Get && PassOf(Property, AObject) == Pass)
          WriteProperty(Result, Property, AObject, ADefault);
  return Result;
}

/// A component that is designed may show something else than it stores: not while it is written.
class TWriting {
 public:
  explicit TWriting(TComponent& AComponent)
      : FComponent(AComponent),
        FIsDesigning(AComponent.GetComponentState().Contains(TComponentStateFlag::Designing)) {
    if (FIsDesigning) FComponent.SetDesigning(false);
  }
  ~TWriting() {
    if (FIsDesigning) FComponent.SetDesigning(true);
  }
  TWriting(const TWriting&) = delete;
  TWriting& operator=(const TWriting&) = delete;

 private:
  TComponent& FComponent;
  const bool FIsDesigning;
};

}  // namespace

std::string WriteComponent(TComponent& AComponent) {
  const TClassInfo& Class = AComponent.GetClassInfo();
  if (!Class.CreateComponent)
    throw EFileError(fmt::format("a {} cannot be written to a file", Class.GetShortName()));
  const std::unique_ptr<TComponent> Default = Class.CreateComponent(nullptr);
  Default->BeginLoading();  // it stores what it is given, and does not act
  const TWriting Writing(AComponent);
  const TJson Object = WriteObject(AComponent, *Default);
  return Object.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

void SaveComponentFile(TComponent& AComponent, const std::string& AFileName) {
  ReplaceFile(AFileName, WriteComponent(AComponent));
}

}  // namespace System::Beacon::Fencing
