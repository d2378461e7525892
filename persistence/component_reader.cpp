#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "persistence/component_file.h"
#include "persistence/json_tree.h"
#include "platform/files.h"

namespace System::Beacon::Fencing {
namespace {

using TKind = TJsonNode::TKind;

/// Applies a tree to an object, property by property.
class TApplier {
 public:
  explicit TApplier(const std::string& AFileName) : FFileName(AFileName) {}

  void ApplyObject(TObject& AObject, const TJsonNode& ANode, const std::string& APath) {
    Expect(ANode.Kind == TKind::Object, ANode, APath, "an object {…} is expected here");
    enum class TPass : std::uint8_t { Plain, Collections, Enabled };
    for (const TPass Pass : {TPass::Plain, TPass::Collections, TPass::Enabled})
      for (const TJsonNode& Child : ANode.Children) {
        const TPass Due = SameName(Child.Name, "Enabled") ? TPass::Enabled
                          : Child.Kind == TKind::Array    ? TPass::Collections
                                                          : TPass::Plain;
        if (Due == Pass) ApplyProperty(AObject, Child, Join(APath, Child.Name));
      }
  }

 private:
  void ApplyProperty(TObject& AObject, const TJsonNode& ANode, const std::string& APath) {
    const TPropertyInfo* const Property = FindProperty(AObject.GetClassInfo(), ANode.Name);
    Expect(Property && Property->IsPublished,
           ANode,
           APath,
           "there is no such property; there are " + NamesOf(AObject.GetClassInfo()));
    if (Property->Type->Kind == TTypeKind::Object) {
      ApplyOwned(*std::get<TObject*>(Property->Get(AObject).GetData()), ANode, APath);
      return;
    }
    Expect(Property->Type->Kind != TTypeKind::Event,
           ANode,
           APath,
           "an event cannot be set in a file; connect its handler in code");
    const TValue Value = ReadValue(*Property->Type, ANode, APath);
    try {
      Property->Set(AObject, Value);
    } catch (const EGeneralError& Error) {
      Refuse(ANode, APath, Error.what());
    }
  }

  void ApplyOwned(TObject& AOwned, const TJsonNode& ANode, const std::string& APath) {
    auto* const Collection = dynamic_cast<TCollection*>(&AOwned);
    if (!Collection) return ApplyObject(AOwned, ANode, APath);
    Expect(ANode.Kind == TKind::Array, ANode, APath, "an array […] is expected here");
    Collection->BeginUpdate();
    try {
      ApplyItems(*Collection, ANode, APath);
    } catch (...) {
      Collection->EndUpdate();
      throw;
    }
    Collection->EndUpdate();
  }

  void ApplyItems(TCollection& ACollection, const TJsonNode& ANode, const std::string& APath) {
    ACollection.Clear();
    int Index = 0;
    for (const TJsonNode& Child : ANode.Children) {
      const std::string Path = fmt::format("{}[{}]", APath, Index++);
      TCollectionItem* Item = nullptr;
      try {
        Item = ACollection.Add();
      } catch (const EGeneralError& Error) {
        Refuse(Child, Path, fmt::format("a base value is refused here: {}", Error.what()));
      }
      ApplyObject(*Item, Child, Path);
    }
  }

  TValue ReadValue(const TTypeInfo& AType, const TJsonNode& ANode, const std::string& APath) {
    switch (AType.Kind) {
      case TTypeKind::Boolean:
        Expect(ANode.Kind == TKind::Boolean, ANode, APath, "true or false is expected here");
        return TValue(AType, ANode.Boolean);
      case TTypeKind::Word:
        return ReadInteger(AType, ANode, APath, 0, 65535);
      case TTypeKind::Integer:
        return ReadInteger(AType, ANode, APath, INT32_MIN, INT32_MAX);
      case TTypeKind::Int64:
        return ReadInteger(AType, ANode, APath, INT64_MIN, INT64_MAX);
      case TTypeKind::Single:
        return ReadFloat(AType, ANode, APath, std::numeric_limits<float>::max());
      case TTypeKind::Double:
        return ReadFloat(AType, ANode, APath, std::numeric_limits<double>::max());
      case TTypeKind::String:
        return TValue(AType, ReadText(ANode, APath, "a text in quotes"));
      case TTypeKind::Enumeration:
        return TValue(AType, ReadOrdinal(AType, ANode, APath));
      case TTypeKind::Set:
        return ReadSet(AType, ANode, APath);
      case TTypeKind::Color:
        return ReadColor(AType, ANode, APath);
      default:
        Refuse(ANode, APath, fmt::format("a {} cannot be set in a file", AType.Name));
    }
  }

  TValue ReadInteger(const TTypeInfo& AType,
                     const TJsonNode& ANode,
                     const std::string& APath,
                     std::int64_t AFrom,
                     std::int64_t ATo) {
    Expect(ANode.Kind == TKind::Integer && ANode.Integer >= AFrom && ANode.Integer <= ATo,
           ANode,
           APath,
           fmt::format("a whole number from {} to {} is expected here", AFrom, ATo));
    return TValue(AType, ANode.Integer);
  }

  TValue ReadFloat(const TTypeInfo& AType,
                   const TJsonNode& ANode,
                   const std::string& APath,
                   double ALargest) {
    const bool IsNumber = ANode.Kind == TKind::Integer || ANode.Kind == TKind::Number;
    Expect(
        IsNumber && std::abs(ANode.Number) <= ALargest, ANode, APath, "a number is expected here");
    return TValue(AType, ANode.Number);
  }

  std::string ReadText(const TJsonNode& ANode, const std::string& APath, std::string_view AWhat) {
    Expect(ANode.Kind == TKind::String, ANode, APath, fmt::format("{} is expected here", AWhat));
    return ANode.String;
  }

  std::int64_t ReadOrdinal(const TTypeInfo& AType,
                           const TJsonNode& ANode,
                           const std::string& APath) {
    const std::string Expected = fmt::format("one of \"{}\"", fmt::join(AType.Names, "\", \""));
    const std::string Text = ReadText(ANode, APath, Expected);
    const auto Found = std::find_if(AType.Names.begin(),
                                    AType.Names.end(),
                                    [&Text](std::string_view A) { return SameName(A, Text); });
    Expect(Found != AType.Names.end(),
           ANode,
           APath,
           fmt::format("{} is expected here, not \"{}\"", Expected, Text));
    return Found - AType.Names.begin();
  }

  TValue ReadSet(const TTypeInfo& AType, const TJsonNode& ANode, const std::string& APath) {
    Expect(ANode.Kind == TKind::Array, ANode, APath, "an array of names is expected here");
    std::int64_t Bits = 0;
    for (const TJsonNode& Child : ANode.Children)
      Bits |= std::int64_t{1} << ReadOrdinal(*AType.Element, Child, APath);
    return TValue(AType, Bits);
  }

  TValue ReadColor(const TTypeInfo& AType, const TJsonNode& ANode, const std::string& APath) {
    TAlphaColor Color;
    Expect(TryStringToColor(ReadText(ANode, APath, "a colour \"#AARRGGBB\""), Color),
           ANode,
           APath,
           "a colour \"#AARRGGBB\" is expected here");
    return TValue(AType, Color);
  }

  static std::string Join(const std::string& APath, const std::string& AName) {
    return APath.empty() ? AName : APath + "." + AName;
  }

  static std::string NamesOf(const TClassInfo& AClass) {
    std::vector<std::string_view> Names;
    for (const TClassInfo* Class = &AClass; Class; Class = Class->Base)
      for (const TPropertyInfo& Property : Class->Properties)
        if (Property.IsPublished && Property.Type->Kind != TTypeKind::Event)
          Names.push_back(Property.Name);
    return fmt::format("{}", fmt::join(Names, ", "));
  }

  void Expect(bool AIsTrue,
              const TJsonNode& ANode,
              const std::string& APath,
              const std::string& AMessage) const {
    if (!AIsTrue) Refuse(ANode, APath, AMessage);
  }
  [[noreturn]] void Refuse(const TJsonNode& ANode,
                           const std::string& APath,
                           const std::string& AMessage) const {
    const std::string Path = APath.empty() ? "" : APath + ": ";
    throw EFileError(fmt::format("{}:{}: {}{}", FFileName, ANode.Line, Path, AMessage));
  }

  const std::string& FFileName;
};

void TryOnAnother(const TComponent& AComponent,
                  const TJsonNode& ATree,
                  const std::string& AFileName) {
  const TClassInfo& Class = AComponent.GetClassInfo();
  if (!Class.CreateComponent)
    throw EFileError(
        fmt::format("{}: a {} cannot be read from a file", AFileName, Class.GetShortName()));
  const std::unique_ptr<TComponent> Scratch = Class.CreateComponent(nullptr);
  Scratch->SetDesigning(true);
  TApplier(AFileName).ApplyObject(*Scratch, ATree, "");
}

}  // namespace

void ReadComponent(TComponent& AComponent, std::string_view AText, const std::string& AFileName) {
  const TJsonNode Tree = ParseJson(AText, AFileName);
  TryOnAnother(AComponent, Tree, AFileName);
  AComponent.BeginLoading();
  try {
    TApplier(AFileName).ApplyObject(AComponent, Tree, "");
  } catch (...) {
    AComponent.CancelLoading();
    throw;
  }
  AComponent.EndLoading();
}

void LoadComponentFile(TComponent& AComponent, const std::string& AFileName) {
  ReadComponent(AComponent, ReadWholeFile(AFileName, MaxJsonSize), AFileName);
}

}  // namespace System::Beacon::Fencing
