#include "apps/wayfence/feature_fields.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

using TKind = TJsonNode::TKind;
using TNames = std::span<const std::string_view>;

constexpr std::size_t MaxLevels = 64;  // of one feature
constexpr std::array<std::string_view, 4> ThingNames{"name", "level", "floor", "link"};
constexpr std::array<std::string_view, 7> BeaconNames{
    "kind", "uuid", "major", "minor", "namespace", "instance", "power"};

bool IsOneOf(std::string_view AName, TNames ANames) {
  return std::find(ANames.begin(), ANames.end(), AName) != ANames.end();
}

std::string_view Trim(std::string_view AText) {
  const std::size_t First = AText.find_first_not_of(' ');
  if (First == std::string_view::npos) return {};
  return AText.substr(First, AText.find_last_not_of(' ') - First + 1);
}

std::string TextOf(const TJsonNode& ANode) {
  switch (ANode.Kind) {
    case TKind::Null:
      return {};
    case TKind::Boolean:
      return ANode.Boolean ? "true" : "false";
    case TKind::Integer:
      return fmt::format("{}", ANode.Integer);
    case TKind::Number:
      return fmt::format("{}", ANode.Number);
    case TKind::String:
      return ANode.String;
    case TKind::Array:
    case TKind::Object:
      break;
  }
  std::string Result;
  for (const TJsonNode& Child : ANode.Children) {
    if (!Result.empty()) Result += ", ";
    if (!Child.Name.empty()) Result += Child.Name + ": ";
    Result += TextOf(Child);
  }
  return Result;
}

}  // namespace

const TJsonNode* FindMember(const TJsonNode& AObject, std::string_view AName) {
  if (AObject.Kind != TKind::Object) return nullptr;
  for (const TJsonNode& Child : AObject.Children)
    if (Child.Name == AName) return &Child;
  return nullptr;
}

TFeatureFields::TFeatureFields(const TJsonNode& AFeature, const std::string& AFileName)
    : FFileName(AFileName), FLine(AFeature.Line) {
  if (const TJsonNode* const Id = FindMember(AFeature, "id")) FId = TextOf(*Id);
  const TJsonNode* const Properties = FindMember(AFeature, "properties");
  if (!Properties || Properties->Kind == TKind::Null) return;
  if (Properties->Kind != TKind::Object) Refuse("the properties of a feature are an object");
  for (const TJsonNode& Property : Properties->Children)
    if (std::string Text = TextOf(Property); !Text.empty())
      FTexts.emplace_back(Property.Name, std::move(Text));
}

std::string_view TFeatureFields::GetText(std::string_view AName) const {
  for (const auto& [Name, Text] : FTexts)
    if (Name == AName) return Text;
  return {};
}

std::string TFeatureFields::GetSource() const {
  return fmt::format("{}:{}", FFileName, FLine);
}

std::string TFeatureFields::GetName() const {
  const std::string_view Name = GetText("name");
  return Name.empty() ? FId : std::string(Name);
}

std::vector<std::string> TFeatureFields::GetLevels() const {
  std::string_view Rest = GetText("level");
  if (Rest.empty()) Rest = GetText("floor");
  std::vector<std::string> Result;
  while (!Rest.empty()) {
    const std::size_t End = std::min(Rest.find(';'), Rest.size());
    const std::string Level(Trim(Rest.substr(0, End)));
    Rest.remove_prefix(std::min(End + 1, Rest.size()));
    if (Level.empty() || std::find(Result.begin(), Result.end(), Level) != Result.end()) continue;
    if (Result.size() == MaxLevels) Refuse(fmt::format("on more than {} levels", MaxLevels));
    Result.push_back(Level);
  }
  return Result;
}

bool TFeatureFields::IsBeacon() const {
  return !GetText("uuid").empty() || !GetText("namespace").empty();
}

bool TFeatureFields::IsOutline() const {
  return GetText("type") == "floor" || GetText("indoor") == "level";
}

Scene::Beacons::TDescriptionList TFeatureFields::GetDescription() const {
  Scene::Beacons::TDescriptionList Result;
  const bool IsOfBeacon = IsBeacon();
  for (const TStringPair& Text : FTexts)
    if (!IsOneOf(Text.first, ThingNames) && !(IsOfBeacon && IsOneOf(Text.first, BeaconNames)))
      Result.push_back(Text);
  return Result;
}

}  // namespace Wayfence
