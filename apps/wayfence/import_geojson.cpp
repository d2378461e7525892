#include "apps/wayfence/import_geojson.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <utility>

#include "apps/wayfence/feature_fields.h"
#include "persistence/json_tree.h"
#include "platform/errors.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

using TKind = TJsonNode::TKind;

constexpr double MaxCoordinate = 1e9;

/// Numbers by their value, before other texts.
struct TLevelOrder {
  bool operator()(const std::string& A, const std::string& B) const { return KeyOf(A) < KeyOf(B); }

 private:
  static std::pair<double, std::string_view> KeyOf(const std::string& ALevel) {
    double Number = 0.0;
    const char* const End = ALevel.data() + ALevel.size();
    const auto Result = std::from_chars(ALevel.data(), End, Number);
    if (Result.ec == std::errc() && Result.ptr == End && std::isfinite(Number))
      return {Number, ALevel};
    return {HUGE_VAL, ALevel};
  }
};

/// A feature that is being taken apart.
struct TFeature {
  const TFeatureFields& Fields;
  std::vector<TImportedFloor*> Floors;
  TImportedThing Thing;
  int Parts = 0;
};

class TGeoJsonReader {
 public:
  TGeoJsonReader(const std::string& AFileName, TWarnings& AWarnings)
      : FFileName(AFileName), FWarnings(AWarnings) {}

  TImportedFloors Read(const TJsonNode& ARoot) {
    const std::vector<const TJsonNode*> Features = FeaturesOf(ARoot);
    std::vector<TFeatureFields> Fields;
    Fields.reserve(Features.size());
    for (const TJsonNode* const Feature : Features) Fields.emplace_back(*Feature, FFileName);
    MakeFloors(Fields);
    for (std::size_t I = 0; I < Features.size(); ++I) AddFeature(*Features[I], Fields[I]);
    return std::move(FFloors);
  }

 private:
  [[noreturn]] void Refuse(const TJsonNode& ANode, std::string_view AWhat) const {
    throw EFileError(fmt::format("{}:{}: {}", FFileName, ANode.Line, AWhat));
  }
  void Warn(const TFeature& AFeature, std::string_view AWhat) {
    FWarnings.push_back(fmt::format("{}: {}", AFeature.Thing.Source, AWhat));
  }

  // ------------------------------------------------------------- structure

  const std::string& TypeOf(const TJsonNode& ANode) const {
    const TJsonNode* const Type = FindMember(ANode, "type");
    if (!Type || Type->Kind != TKind::String)
      Refuse(ANode, "this is no GeoJSON: an object with a \"type\" is expected here");
    return Type->String;
  }

  const std::vector<TJsonNode>& ArrayOf(const TJsonNode& ANode, std::string_view AName) const {
    const TJsonNode* const Member = FindMember(ANode, AName);
    if (!Member || Member->Kind != TKind::Array)
      Refuse(ANode, fmt::format("\"{}\" with an array is missing here", AName));
    return Member->Children;
  }

  /// The features of a collection; a single feature or geometry is the only one.
  std::vector<const TJsonNode*> FeaturesOf(const TJsonNode& ARoot) const {
    if (TypeOf(ARoot) != "FeatureCollection") return {&ARoot};
    std::vector<const TJsonNode*> Result;
    for (const TJsonNode& Feature : ArrayOf(ARoot, "features")) {
      if (TypeOf(Feature) != "Feature")
        Refuse(Feature, fmt::format("a feature is expected here, not a {}", TypeOf(Feature)));
      Result.push_back(&Feature);
    }
    return Result;
  }

  void MakeFloors(const std::vector<TFeatureFields>& AFields) {
    for (const TFeatureFields& Fields : AFields)
      for (const std::string& Level : Fields.GetLevels()) {
        FFloorOf.try_emplace(Level, nullptr);
        if (FFloorOf.size() > MaxImportedFloors)
          Fields.Refuse(fmt::format("more than {} levels in this file", MaxImportedFloors));
      }
    FFloors.resize(std::max<std::size_t>(FFloorOf.size(), 1));
    std::size_t Next = 0;
    for (auto& [Level, Floor] : FFloorOf) {
      Floor = &FFloors[Next++];
      Floor->Thing.Name = "Level " + Level;
    }
    for (TImportedFloor& Floor : FFloors) Floor.Thing.Source = FFileName;
  }

  std::vector<TImportedFloor*> FloorsOf(const TFeatureFields& AFields) {
    std::vector<TImportedFloor*> Result;
    for (const std::string& Level : AFields.GetLevels()) Result.push_back(FFloorOf.at(Level));
    if (Result.empty()) Result.push_back(&FFloors.front());
    return Result;
  }

  void AddFeature(const TJsonNode& ANode, const TFeatureFields& AFields) {
    TFeature Feature{AFields,
                     FloorsOf(AFields),
                     {AFields.GetSource(), AFields.GetName(), AFields.GetDescription()}};
    const TJsonNode* Geometry = &ANode;
    if (TypeOf(ANode) == "Feature") Geometry = FindMember(ANode, "geometry");
    if (!Geometry || Geometry->Kind == TKind::Null)
      return Warn(Feature, "the feature has no geometry and is left out");
    if (AFields.IsWall()) return Warn(Feature, "the feature is a wall and is left out");
    if (AFields.IsOutline())
      for (TImportedFloor* const Floor : Feature.Floors) DescribeFloor(*Floor, Feature);
    AddGeometry(Feature, *Geometry);
  }

  void DescribeFloor(TImportedFloor& AFloor, TFeature& AFeature) {
    const TImportedThing Thing = MakeThing(AFeature);
    if (!Thing.Name.empty()) AFloor.Thing.Name = Thing.Name;
    AFloor.Thing.Description.insert(
        AFloor.Thing.Description.end(), Thing.Description.begin(), Thing.Description.end());
  }

  void AddGeometry(TFeature& AFeature, const TJsonNode& AGeometry) {
    const std::string& Type = TypeOf(AGeometry);
    if (Type == "GeometryCollection") {
      for (const TJsonNode& Part : ArrayOf(AGeometry, "geometries")) AddGeometry(AFeature, Part);
      return;
    }
    const bool IsMulti = Type.starts_with("Multi");
    const auto Add = AdderOf(std::string_view(Type).substr(IsMulti ? 5 : 0));
    if (!Add) Refuse(AGeometry, fmt::format("there is no geometry of type '{}'", Type));
    ArrayOf(AGeometry, "coordinates");
    const TJsonNode& Coordinates = *FindMember(AGeometry, "coordinates");
    if (!IsMulti) return (this->*Add)(AFeature, Coordinates);
    for (const TJsonNode& Part : Coordinates.Children) (this->*Add)(AFeature, Part);
  }

  using TAdder = void (TGeoJsonReader::*)(TFeature&, const TJsonNode&);
  static TAdder AdderOf(std::string_view AType) {
    if (AType == "Point") return &TGeoJsonReader::AddPoint;
    if (AType == "LineString") return &TGeoJsonReader::AddLine;
    if (AType == "Polygon") return &TGeoJsonReader::AddPolygon;
    return nullptr;
  }

  // ------------------------------------------------------------- coordinates

  TPlace ReadPlace(const TJsonNode& ANode) const {
    if (ANode.Kind != TKind::Array || ANode.Children.size() < 2)
      Refuse(ANode, "a position is expected here: an array of two numbers or more");
    return {ReadCoordinate(ANode.Children[0]), ReadCoordinate(ANode.Children[1])};
  }

  double ReadCoordinate(const TJsonNode& ANode) const {
    const bool IsNumber = ANode.Kind == TKind::Integer || ANode.Kind == TKind::Number;
    if (!IsNumber || !(std::abs(ANode.Number) <= MaxCoordinate))
      Refuse(
          ANode,
          fmt::format("a coordinate is a number of degrees or metres, at most {}", MaxCoordinate));
    return ANode.Number;
  }

  /// Positions that repeat the one before are left out.
  std::vector<TPlace> ReadPlaces(const TJsonNode& ANode) const {
    if (ANode.Kind != TKind::Array) Refuse(ANode, "an array of positions is expected here");
    std::vector<TPlace> Result;
    for (const TJsonNode& Position : ANode.Children) {
      const TPlace Place = ReadPlace(Position);
      if (Result.empty() || Place.X != Result.back().X || Place.Y != Result.back().Y)
        Result.push_back(Place);
    }
    return Result;
  }

  // ------------------------------------------------------------- things

  /// What is told of the next part of a feature, on each of its floors.
  TImportedThing MakeThing(TFeature& AFeature) {
    TImportedThing Result = AFeature.Thing;
    if (++AFeature.Parts > 1 && !Result.Name.empty())
      Result.Name += fmt::format(" {}", AFeature.Parts);
    std::size_t Size = Result.Name.size();
    for (const auto& [Key, Value] : Result.Description) Size += Key.size() + Value.size();
    FDescribed += Size * AFeature.Floors.size();
    if (FDescribed > MaxDescriptionSize)
      AFeature.Fields.Refuse(fmt::format("more than {} MiB of names and properties in this file",
                                         MaxDescriptionSize >> 20));
    return Result;
  }

  void CountPoints(const TFeature& AFeature, std::size_t ACount) {
    FPoints += ACount * AFeature.Floors.size();
    if (FPoints > MaxImportedPoints)
      AFeature.Fields.Refuse(fmt::format(
          "more than {} points in this file; import its floors one by one", MaxImportedPoints));
  }

  void AddPoint(TFeature& AFeature, const TJsonNode& ANode) {
    const TPlace Place = ReadPlace(ANode);
    TImportedFloor& Floor = *AFeature.Floors.front();
    if (!AFeature.Fields.IsBeacon()) {
      Floor.Points.push_back(
          {MakeThing(AFeature), Place, std::string(AFeature.Fields.GetText("link"))});
      return;
    }
    TListedBeacon::TRow Row;
    if (AFeature.Fields.GetText("kind").empty() && AFeature.Fields.GetText("uuid").empty())
      Row.Kind = Beacon::TKindofBeacon::Eddystone;
    ReadBeaconFields(AFeature.Fields, Row);
    Floor.Beacons.push_back({MakeThing(AFeature), Place, Row});
  }

  void AddLine(TFeature& AFeature, const TJsonNode& ANode) {
    const std::vector<TPlace> Points = ReadPlaces(ANode);
    if (Points.size() < 2)
      return Warn(AFeature, "a line of fewer than two different points is left out");
    CountPoints(AFeature, Points.size());
    const TImportedThing Thing = MakeThing(AFeature);
    for (TImportedFloor* const Floor : AFeature.Floors) Floor->Lines.push_back({Thing, Points});
  }

  void AddPolygon(TFeature& AFeature, const TJsonNode& ANode) {
    if (ANode.Kind != TKind::Array || ANode.Children.empty())
      Refuse(ANode, "an array of rings is expected here");
    std::vector<TPlace> Corners = ReadPlaces(ANode.Children.front());
    while (Corners.size() > 1 && Corners.front().X == Corners.back().X &&
           Corners.front().Y == Corners.back().Y)
      Corners.pop_back();
    if (Corners.size() < 3)
      return Warn(AFeature, "a polygon of fewer than three different corners is left out");
    CountPoints(AFeature, Corners.size());
    if (AFeature.Fields.IsOutline()) return AddOutline(AFeature, Corners);
    if (ANode.Children.size() > 1)
      Warn(AFeature,
           fmt::format("'{}': its holes are filled: a zone has none", AFeature.Thing.Name));
    const TImportedThing Thing = MakeThing(AFeature);
    for (TImportedFloor* const Floor : AFeature.Floors) Floor->Zones.push_back({Thing, Corners});
  }

  static void AddOutline(TFeature& AFeature, const std::vector<TPlace>& ACorners) {
    for (TImportedFloor* const Floor : AFeature.Floors)
      Floor->Outline.insert(Floor->Outline.end(), ACorners.begin(), ACorners.end());
  }

  const std::string& FFileName;
  TWarnings& FWarnings;
  TImportedFloors FFloors;
  std::map<std::string, TImportedFloor*, TLevelOrder> FFloorOf;
  std::size_t FDescribed = 0;  // bytes
  std::size_t FPoints = 0;     // of lines and polygons
};

}  // namespace

TImportedFloors ReadGeoJson(std::string_view AText,
                            const std::string& AFileName,
                            TWarnings& AWarnings) {
  return TGeoJsonReader(AFileName, AWarnings).Read(ParseJson(AText, AFileName));
}

}  // namespace Wayfence
