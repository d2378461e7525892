// Makes projects in code: floors with their pictures, beacons, zones and walkable paths, and links
// between floors.
//
//   TProjectBuilder Project("Office");
//   TMapBuilder Ground = Project.AddMap("Ground floor", 20, 12);
//   Ground.SetPicture("ground.png");
//   Ground.AddZone("Lobby", {0, 0, 6, 12});
//   Ground.AddBeacon("Door", {1, 6}, "2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6", 1, 7);
//   Ground.AddPath("Hall", {{"Entrance", {1, 6}}, {"Stairs", {18, 6}}});
//   Project.Save("office.xml");
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "persistence/System.Beacon.Fencing.Bundle.h"

namespace System::Beacon::Fencing::Scene::Beacons {

/// A point of a walkable path: the name of its node, by which routes and links know it and which
/// no other node of the project has, and its place. Without a name the node gets one of its own.
struct TNamedPoint {
  std::string Name;
  TPointF Position;
};

/// Adds a pair to the description list of a beacon, zone, map or path node.
template <class TNodeClass>
void Describe(TNodeClass& ANode, const std::string& AKey, const std::string& AValue) {
  TDescriptionList List = StringToDescriptionList(ANode.GetDescriptionList());
  List.push_back({AKey, AValue});
  ANode.SetDescriptionList(DescriptionListToString(List));
}

/// Furnishes one floor. A light handle; positions are in metres from the floor's upper left corner,
/// Y downwards. What is not finite raises `EGeneralError`; what is returned may be changed further.
class TMapBuilder {
 public:
  /// The floor's picture, stretched over the whole floor: a PNG, JPEG or WebP file, which is kept
  /// under its name without the folder, or its bytes with a name. Where another picture has the
  /// name already it becomes "plan-2.png". Raises `EFileError` for what is no picture.
  TMapBuilder& SetPicture(const std::string& AFileName);
  TMapBuilder& SetPicture(const std::string& AName, std::string_view ABytes);

  /// A beacon that sends iBeacon or AltBeacon frames. The UUID is in the 8-4-4-4-12 form, in braces
  /// or not; raises `EConvertError` for any other.
  TRef<TBeacon> AddBeacon(
      const std::string& AName, TPointF AnAt, std::string_view AUUID, int AMajor, int AMinor);
  /// A beacon that sends Eddystone frames: 20 and 12 hexadecimal digits.
  TRef<TBeacon> AddEddystone(const std::string& AName,
                             TPointF AnAt,
                             const std::string& ANamespace,
                             const std::string& AnInstance);

  TRef<TZone> AddZone(const std::string& AName, const TRectF& ARect);
  TRef<TCircularZone> AddCircularZone(const std::string& AName, TPointF ACentre, float ARadius);
  /// The outline closes itself; three corners or more.
  TRef<TPathZone> AddPathZone(const std::string& AName, std::span<const TPointF> ACorners);

  /// A path from point to point, in this order. `TMapPath::ConnectControlPoints` joins others.
  TRef<TMapPath> AddPath(const std::string& AName, std::span<const TNamedPoint> APoints);
  TRef<TMapPath> AddPath(const std::string& AName, std::initializer_list<TNamedPoint> APoints) {
    return AddPath(AName, std::span(APoints.begin(), APoints.size()));
  }

  /// Adds a point to a path, joined to the one of that number. Returns its node, whose
  /// `GetControlPointIndex` is its own number.
  static TRef<TMapPathNode> AddBranch(TMapPath& APath,
                                      std::int32_t AFrom,
                                      const TNamedPoint& APoint);
  /// The node at a point of a path.
  static TRef<TMapPathNode> GetNode(TMapPath& APath, std::int32_t AIndex);

  const TRef<TMap>& GetMap() const { return FMap; }

 private:
  friend class TProjectBuilder;
  TMapBuilder(TRef<TBundle> ABundle, const std::string& AName, float AWidth, float AHeight);

  template <class TLayerClass>
  TRef<INode> GetLayer() const;
  TRef<TBeacon> AddBeacon(const std::string& AName, TPointF AnAt);

  TRef<TBundle> FBundle;
  TRef<TMap> FMap;
};

/// A project from nothing.
class TProjectBuilder {
 public:
  explicit TProjectBuilder(const std::string& AName);

  /// A floor of so many metres; the sides are above 0.
  TMapBuilder AddMap(const std::string& AName, float AWidth, float AHeight);
  /// A link between the path nodes of two names, of one floor or of two: stairs, a lift.
  void Connect(const std::string& AFrom, const std::string& ATo);

  const TRef<TScene>& GetScene() const { return FScene; }
  /// The scene's text and the pictures.
  TRef<TBundle> MakeBundle() const;
  /// Writes the bundle: as an archive when the name ends in ".zip", as XML otherwise. An existing
  /// file is replaced as a whole. Raises `EFileError`.
  void Save(const std::string& AFileName) const;

 private:
  TRef<TScene> FScene;
  TRef<TBundle> FBundle;
  TRef<TConnectingNodes> FConnections;  // made for the first link
};

/// The path in bundles under which the text of the scene is kept.
inline constexpr std::string_view SceneEntry = "project";

}  // namespace System::Beacon::Fencing::Scene::Beacons
