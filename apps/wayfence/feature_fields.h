// What a GeoJSON feature says of itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "apps/wayfence/fields.h"
#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "persistence/json_tree.h"

namespace Wayfence {

/// The properties of a feature as texts; lists are joined with commas, empty ones are left out.
class TFeatureFields final : public TFields {
 public:
  /// `AFeature` outlives this.
  TFeatureFields(const System::Beacon::Fencing::TJsonNode& AFeature, const std::string& AFileName);

  std::string_view GetText(std::string_view AName) const override;
  std::string GetSource() const override;

  /// Its `name`, or else its `id`.
  std::string GetName() const;
  /// The values of `level`, or else of `floor`, which ";" parts.
  std::vector<std::string> GetLevels() const;
  bool IsBeacon() const;
  /// The outline of a floor: `type` "floor", or `indoor` "level".
  bool IsOutline() const;
  bool IsWall() const { return GetText("indoor") == "wall"; }
  /// All that is not known here.
  System::Beacon::Fencing::Scene::Beacons::TDescriptionList GetDescription() const;

 private:
  const std::string& FFileName;
  const int FLine;
  std::string FId;
  std::vector<System::TStringPair> FTexts;
};

/// The member of an object; null when there is none, or it is no object.
const System::Beacon::Fencing::TJsonNode* FindMember(
    const System::Beacon::Fencing::TJsonNode& AObject, std::string_view AName);

}  // namespace Wayfence
