// The map model: maps with their layers of beacons, zones and walkable paths, what links the paths,
// and the graph that they make.
//
//   TScene > TMap > TBeaconsLayer > TBeacon
//                 > TZonesLayer   > TZone, TCircularZone, TPathZone
//                 > TPathsLayer   > TMapPath > TMapPathNode
//          > TConnectingNodes
//
// Map units; colours are ARGB. Scene thread only, but for what the design interfaces read: that may
// be read on any thread while nobody edits the map.
#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "persistence/System.Beacon.Fencing.Serializer.h"
#include "platform/array.h"
#include "platform/atomic_value.h"
#include "platform/beacons/System.Beacon.h"
#include "platform/enum_set.h"
#include "platform/guid.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"

namespace System::Beacon::Fencing::Scene::Beacons {

using Fencing::TMeasureUnits;

/// What is drawn of a beacon: a disc (or its picture), circles of 0.1, 0.5 and 1.5, a circle as
/// wide as its last distance.
enum class TBeaconVisualizationMode : std::uint8_t { SolidCircle, ThreeDistances, SignalDistance };
using TBeaconVisualizationSet = TSet<TBeaconVisualizationMode>;

// ---------------------------------------------------------------- interfaces

/// A beacon on a map; its sightings are `System::Beacon::IBeacon`.
class IBeacon : public virtual IShape {
 protected:
  ~IBeacon() = default;
};

class IZone : public virtual IShape {
 protected:
  ~IZone() = default;
};

class IMap : public virtual IShape {
 protected:
  ~IMap() = default;
};

/// A point that tells something.
class IInformationPoint : public virtual ISceneNode {
 protected:
  ~IInformationPoint() = default;
};

// ---------------------------------------------------------------- description lists

/// Keys and values in the order in which they were given; either may be empty or occur again.
using TDescriptionList = std::vector<TStringPair>;

/// ":", then Base64 of key and value of each pair, a ":" after each of them.
std::string DescriptionListToString(std::span<const TStringPair> AList);
/// A key without a value is left out, as is what stands before the first ":". Raises
/// `EConvertError` for what is not Base64.
TDescriptionList StringToDescriptionList(std::string_view AText);

/// A node of class `TBase` that carries a description list, kept in its text form.
template <class TBase>
class TDescribed : public TBase {
 public:
  std::string GetDescriptionList() const { return FDescriptionList; }
  /// Takes any text. Announced as a change of the property, also when the text is equal.
  void SetDescriptionList(const std::string& AValue) {
    const std::string Old = std::exchange(FDescriptionList, AValue);
    this->EmitPropertyChange(static_cast<INode*>(this),
                             std::string("DescriptionList"),
                             TValue::From(Old),
                             TValue::From(FDescriptionList));
  }

 private:
  std::string FDescriptionList;
};

// ---------------------------------------------------------------- TBeacon

/// A beacon placed on a map: a square of 1 about its place, which cannot be resized. A refused
/// identity raises `EComponentError` and leaves the old one.
class TBeacon : public TDescribed<TRectangle>,
                public virtual IBeacon,
                public virtual IDesignBeacon {
 public:
  FENCING_CLASS_INFO()

  TBeacon();

  TGUID GetGUID() const override { return FGUID; }
  void SetGUID(const TGUID& AValue) { FGUID = AValue; }
  /// Any number is kept; outside 0 to 65535 no sighting is this beacon's.
  std::int32_t GetMajor() const override { return FMajor; }
  void SetMajor(std::int32_t AValue) { FMajor = AValue; }
  std::int32_t GetMinor() const override { return FMinor; }
  void SetMinor(std::int32_t AValue) { FMinor = AValue; }
  std::string GetManufacturerID() const override { return FManufacturerID; }
  /// "-1" or up to four hexadecimal digits, kept as they are.
  void SetManufacturerID(const std::string& AValue);
  std::int32_t GetMID() const override;
  std::string GetEddyNamespace() const override { return FEddyUUID.GetNamespace(); }
  /// 20 hexadecimal digits, 12 of an instance.
  void SetEddyNamespace(const std::string& AValue);
  std::string GetEddyInstance() const override { return FEddyUUID.GetInstance(); }
  void SetEddyInstance(const std::string& AValue);
  TKindofBeacon GetKindofBeacon() const override { return FKindOfBeacon; }
  void SetKindofBeacon(TKindofBeacon AValue) { FKindOfBeacon = AValue; }
  bool GetUseToPositioning() const override { return FUseToPositioning; }
  void SetUseToPositioning(bool AValue) override { FUseToPositioning = AValue; }
  TBeaconProximity GetAlertRaius() const { return FAlertRaius; }
  void SetAlertRaius(TBeaconProximity AValue) { FAlertRaius = AValue; }
  TBeaconVisualizationSet GetVisualizationMode() const { return FVisualizationMode; }
  void SetVisualizationMode(TBeaconVisualizationSet AValue);
  float GetSignalDistance() const override { return FSignalDistance; }
  /// Radius of the signal circle. Both circles are drawn anew.
  void SetSignalDistance(float ADistance) override;
  std::string GetDescription() const { return {}; }
  std::string GetInformationItems() const override { return GetDescriptionList(); }

  const std::string& GetName() const override { return TRectangle::GetName(); }
  TPointF GetDisplacement() const override { return TRectangle::GetDisplacement(); }
  TPointF GetCenterInGlobalSpace() const override { return TRectangle::GetCenterInGlobalSpace(); }
  TRectF GetGlobalRect() const override { return TRectangle::GetGlobalRect(); }

  /// Nor the size, the rotation and what concerns filling and clipping.
  bool AllowDesignProperty(std::string_view AName) const override;
  bool GetAllowRectModification() const override { return false; }
  /// Holds the circles that are drawn; the margin is that of the square alone.
  TRectF GetRepaintRect(bool AWithChildren, float AMargin) const override;

 protected:
  TExtent GetExtent() const override;
  void Draw(Canvas::ICanvas& ACanvas) override;

 private:
  /// How far from its place the beacon draws, local space.
  float GetReach() const;

  std::int32_t FMinor = 0;
  TBeaconProximity FAlertRaius = TBeaconProximity::Unknown;
  std::int32_t FMajor = 0;
  TGUID FGUID;
  TEddystoneUID FEddyUUID;
  std::string FManufacturerID = "-1";
  TBeaconVisualizationSet FVisualizationMode{TBeaconVisualizationMode::SolidCircle,
                                             TBeaconVisualizationMode::ThreeDistances};
  TAtomicValue<float> FSignalDistance;
  TKindofBeacon FKindOfBeacon = TKindofBeacon::iBeaconAltBeacon;
  TAtomicValue<bool> FUseToPositioning{true};
};

// ---------------------------------------------------------------- zones

/// A shape of class `TBase` that is a zone.
template <class TBase>
class TZoneOf : public TDescribed<TBase>, public virtual IZone, public virtual IDesignZone {
 public:
  TZoneOf() {
    TBase::SetOpacity(0.5F);
    TBase::SetFillColor(TAlphaColor{0xFFAA1122});
  }

  const std::string& GetName() const override { return TBase::GetName(); }
  TPointF GetCenterInGlobalSpace() const override { return TBase::GetCenterInGlobalSpace(); }
  TRectF GetGlobalRect() const override { return TBase::GetGlobalRect(); }
  bool IsUnderGlobalPoint(TPointF APoint) const override {
    return TBase::IsUnderGlobalPoint(APoint);
  }
  std::string GetInformationItems() const override { return this->GetDescriptionList(); }
};

class TZone : public TZoneOf<TRectangle> {
 public:
  FENCING_CLASS_INFO()
 protected:
  TExtent GetExtent() const override {
    return TExtent::Of<TZone>(GetRect(), FBrush.GetStrokeReach());
  }
};

/// The largest circle in the middle of a rectangle; an ellipse when it is set so.
class TCircularZone : public TZoneOf<TEllipse> {
 public:
  FENCING_CLASS_INFO()

  TCircularZone() { SetFitIntoRect(true); }

 protected:
  TExtent GetExtent() const override {
    return TExtent::Of<TCircularZone>(GetRect(), FBrush.GetStrokeReach());
  }
};

class TPathZone : public TZoneOf<TPolygonShape> {
 public:
  FENCING_CLASS_INFO()
 protected:
  TExtent GetExtent() const override {
    return TExtent::Of<TPathZone>(GetRect(), FBrush.GetStrokeReach());
  }
};

// ---------------------------------------------------------------- TMap

/// A floor: a rectangle with the floor's picture (`BitmapPath`), and on it the route that is shown.
/// Its size in its measure units is its rectangle.
class TMap : public TDescribed<TRectangle>,
             public virtual IMap,
             public virtual IDesignMap,
             public virtual IDesignMapUnits {
 public:
  FENCING_CLASS_INFO()

  TMap();

  TMeasureUnits GetMeasureUnits() const override { return FMeasureUnits; }
  /// A change is announced.
  void SetMeasureUnits(TMeasureUnits AValue);
  TPointF GetRepresentationDisplacement() const { return FRepresentationDisplacement; }
  void SetRepresentationDisplacement(const TPointF& AValue) {
    FRepresentationDisplacement = AValue;
  }

  const std::string& GetName() const override { return TRectangle::GetName(); }
  TRectF GetGlobalRect() const override { return TRectangle::GetGlobalRect(); }
  /// Each stretch of the route on this map becomes a line of its own.
  void HighLitCustomPath(std::span<const TPathNodeInfo> APoints,
                         std::span<const std::int32_t> APath) override;
  /// The points of the route that is shown, global space, and its stretches as indexes into them.
  const std::vector<TPointF>& GetCustomPathHighLitPoints() const {
    return FCustomPathHighLitPoints;
  }
  const std::vector<std::vector<std::int32_t>>& GetCustomPathHighLitPaths() const {
    return FCustomPathHighLitPaths;
  }

 protected:
  /// Where a route that is shown draws is not told.
  TExtent GetExtent() const override;
  void Draw(Canvas::ICanvas& ACanvas) override;

 private:
  void DrawRoute(Canvas::ICanvas& ACanvas) const;

  TMeasureUnits FMeasureUnits = TMeasureUnits::Centimeters;
  TPointF FRepresentationDisplacement;
  std::vector<TPointF> FCustomPathHighLitPoints;
  std::vector<std::vector<std::int32_t>> FCustomPathHighLitPaths;
};

// ---------------------------------------------------------------- layers of a map

class TBeaconsLayer : public TLayer {
 public:
  FENCING_CLASS_INFO()
  std::string GetAlias() const override { return "Beacons"; }

 protected:
  TExtent GetExtent() const override { return TExtent::Nothing<TBeaconsLayer>(); }
};

class TZonesLayer : public TLayer {
 public:
  FENCING_CLASS_INFO()
  std::string GetAlias() const override { return "Zones"; }

 protected:
  TExtent GetExtent() const override { return TExtent::Nothing<TZonesLayer>(); }
};

class TPathsLayer : public TLayer {
 public:
  FENCING_CLASS_INFO()
  std::string GetAlias() const override { return "Paths"; }

 protected:
  TExtent GetExtent() const override { return TExtent::Nothing<TPathsLayer>(); }
};

// ---------------------------------------------------------------- walkable paths

/// A key of description lists with the values that path nodes give it, and their slots.
struct TDescriptionEntry {
  std::string Key;
  std::vector<std::pair<std::string, std::int32_t>> Values;
};

class IMapPath : public virtual IConnectedControlPointsShape {
 public:
  /// The control points that are shown highlighted, joined in this order.
  virtual std::vector<std::int32_t> GetHighLitPath() const = 0;
  virtual void SetHighLitPath(std::span<const std::int32_t> AnIndexes) = 0;
  /// The description list of the node in each slot. Raises as `StringToDescriptionList`.
  virtual std::vector<TDescriptionList> GetNodesDescriptionLists() = 0;
  /// The same by key, letter case ignored, in order of first appearance.
  virtual std::vector<TDescriptionEntry> GetNodesDescriptionList() = 0;

 protected:
  ~IMapPath() = default;
};

class IMapPathNode : public virtual IShape {
 protected:
  ~IMapPathNode() = default;
};

/// The vertices of a walking graph: at each control point stands a node, a child of the path, in
/// the slot of the same number. Slots are found out anew when they are asked for after the points
/// were set or the children read. Adding a point makes its node; adding a node that names a point
/// inserts that; a point and its node go together. What handlers of a change ask for meanwhile
/// makes no nodes.
class TMapPath : public TConnectedControlPointsShape,
                 public virtual IMapPath,
                 public virtual IDesignMapPath {
 public:
  FENCING_CLASS_INFO()

  bool AddControlPoint(TPointF APoint) override;
  bool RemoveControlPoint(std::int32_t AIndex) override;
  void SetControlPointAt(std::int32_t AIndex, TPointF APoint) override;
  void SetControlPoints(std::span<const TPointF> APoints) override;
  void SetDisplacement(const TPointF& ADelta) override;
  void SetRect(const TRectF& ARect) override;
  void SetChildren(const TNodes& AChildren) override;

  using TConnectedControlPointsShape::GetControlPointNode;
  TRef<IPathNode> GetControlPointNode(std::int32_t AIndex) override;
  TPathNodes GetControlPointNodes() override;
  std::int32_t GetControlPointNodeIndex(const IPathNode* ANode) const override;
  void AdjustNodes() override { FControlPointNodes.clear(); }
  void AddNodeConnections(std::span<const TStringPair> AConnections) override;
  /// Connections without a node at either end are left out.
  TNodeConnections GetNodeConnections() override;
  std::vector<TDescriptionList> GetNodesDescriptionLists() override;
  std::vector<TDescriptionEntry> GetNodesDescriptionList() override;
  std::vector<std::int32_t> GetHighLitPath() const override { return FHighLitPath; }
  void SetHighLitPath(std::span<const std::int32_t> AnIndexes) override;

  const std::string& GetName() const override { return TConnectedControlPointsShape::GetName(); }
  TArray<TPointF> GetPathGlobalPoints() const override;
  TArray<TPathEdge> GetPathEdges() const override { return TArray<TPathEdge>(GetConnections()); }

 protected:
  bool BeginControlPointInsertion(std::int32_t AIndex) override;
  void MovedControlPointOnePositionBack(std::int32_t AFrom, std::int32_t ATo) override;
  void EndControlPointInsertion(std::int32_t AIndex) override;
  void AddedChild(INode* AChild, bool AFront) override;
  /// A node that leaves while its point stays: the next access makes another one.
  void RemovedChild(INode* AChild) override;
  TExtent GetExtent() const override;
  void DoPaintBeforeChildren(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override;

 private:
  void CorrectChildren();
  void DetachNodesWithoutPoint();
  void PlaceChildren();
  void FillSlot(std::int32_t AIndex);
  void InsertNode(IPathNode& ANode, std::int32_t AIndex);
  TRef<IPathNode> TakeOutNode(std::int32_t AIndex);
  bool IsNodeInSlot(const IPathNode& ANode) const;
  void ChangedPlacesOfNodes();

  TPathNodes FControlPointNodes;
  std::vector<std::int32_t> FHighLitPath;
  int FChangesOfPoints = 0;  // adding or removing a point, perhaps another one within
};

// ---------------------------------------------------------------- TMapPathNode

/// What stands at a control point: its place is the point, in the space of the path. A square that
/// is hit as a circle.
class TMapPathNode : public TDescribed<TSceneNode>,
                     public virtual IMapPathNode,
                     public virtual IPathNode,
                     public virtual IDesignShape {
 public:
  FENCING_CLASS_INFO()

  std::int32_t GetControlPointIndex() const override { return FControlPointIndex; }
  void SetControlPointIndex(std::int32_t AIndex) override;
  /// Removes the control point, too.
  void Detach() override;

  const std::string& GetName() const override { return TSceneNode::GetName(); }
  std::string GetInformationItems() const override { return GetDescriptionList(); }
  TPointF GetCenterInGlobalSpace() const override { return TSceneNode::GetCenterInGlobalSpace(); }
  TRectF GetGlobalRect() const override { return TSceneNode::GetGlobalRect(); }

  bool ContainsDisplacement() const override { return false; }
  bool ContainsRect() const override { return false; }
  TPointF GetDisplacement() const override;
  /// Moves the control point.
  void SetDisplacement(const TPointF& APoint) override;
  TMatrix GetLocalMatrix() const override;
  void SetScaling(const TPointF&) override {}
  TPointF GetScaling() const override { return {1.0F, 1.0F}; }
  void SetRotation(float) override {}
  float GetRotation() const override { return 0.0F; }
  void SetRect(const TRectF&) override {}
  TRectF GetRect() const override { return {-Radius, -Radius, Radius, Radius}; }
  bool GetAllowRectModification() const override { return false; }
  bool ContainsLocalPoint(TPointF APoint) const override;
  TPointF GetDisplacementToGetGlobalPosition(TPointF APoint) const override {
    return TSceneNode::GetDisplacementToGetGlobalPosition(APoint);
  }
  void SetCenterInGlobalSpace(TPointF APoint) override {
    TSceneNode::SetCenterInGlobalSpace(APoint);
  }
  void SetEnableFill(bool) override {}
  bool GetEnableFill() const override { return false; }
  FENCING_NODE_EVENT(RectChange)

 protected:
  void SettedParent(INode* AParent) override;
  TExtent GetExtent() const override { return TExtent::Of<TMapPathNode>(GetRect(), OutlineReach); }
  void DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override;

 private:
  static constexpr float Radius = 0.25F;
  static constexpr float OutlineReach = 6.0F;  // pixels

  std::int32_t FControlPointIndex = -1;
  IMapPath* FParent = nullptr;  // looks at it; cleared when the node leaves it
};

// ---------------------------------------------------------------- TConnectingNodes

/// Links path nodes by their names, letter case ignored, also across maps.
class IConnectingNodes : public virtual ISceneNode {
 public:
  /// Appends a link, unless there is one between the two already.
  virtual void AddConnection(const std::string& AFrom, const std::string& ATo) = 0;
  /// All links between the two, in either direction.
  virtual void RemoveConnection(const std::string& A, const std::string& B) = 0;
  /// All links of a node.
  virtual void RemoveNode(const std::string& AName) = 0;
  virtual void UpdateNode(const std::string& AnOldName, const std::string& ANewName) = 0;
  /// The first link of a node, between two nodes in either direction; -1 when there is none.
  virtual std::int32_t GetIndexOf(std::string_view AName) const = 0;
  virtual std::int32_t GetConnectionIndex(std::string_view A, std::string_view B) const = 0;
  virtual bool ContainsNode(std::string_view AName) const = 0;
  virtual std::int32_t GetConnectionCount() const = 0;
  virtual TNodeConnections GetConnections() const = 0;
  virtual void SetConnections(std::span<const TStringPair> AConnections) = 0;
  /// Shows a route, global space, and the links; an empty one hides them.
  virtual void HighLitPath(std::span<const TPointF> APoints) = 0;

 protected:
  ~IConnectingNodes() = default;
};

/// Hidden and inactive until it shows a route. The nodes behind the names are looked up when they
/// are painted, and looked at until a link changes or one of them dies; a name that no node of the
/// scene has makes the painting raise `EGeneralError`. Renaming a node that was looked up renames
/// it in the links.
class TConnectingNodes : public TSceneNode, public virtual IConnectingNodes {
 public:
  FENCING_CLASS_INFO()

  TConnectingNodes();
  ~TConnectingNodes() override;

  void AddConnection(const std::string& AFrom, const std::string& ATo) override;
  void RemoveConnection(const std::string& A, const std::string& B) override;
  void RemoveNode(const std::string& AName) override;
  void UpdateNode(const std::string& AnOldName, const std::string& ANewName) override;
  std::int32_t GetIndexOf(std::string_view AName) const override;
  std::int32_t GetConnectionIndex(std::string_view A, std::string_view B) const override;
  bool ContainsNode(std::string_view AName) const override { return GetIndexOf(AName) >= 0; }
  std::int32_t GetConnectionCount() const override {
    return static_cast<std::int32_t>(FConnections.size());
  }
  TNodeConnections GetConnections() const override { return FConnections; }
  void SetConnections(std::span<const TStringPair> AConnections) override;
  void HighLitPath(std::span<const TPointF> APoints) override;

  void SetScene(TScene* AScene) override;
  TPointF GetDisplacement() const override { return {}; }
  void SetDisplacement(const TPointF&) override {}
  /// What bounds the centres of the nodes that were looked up.
  TRectF GetRect() const override;
  void SetRect(const TRectF&) override {}

 protected:
  void DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override;

 private:
  using TEnds = std::pair<TSceneNode*, TSceneNode*>;

  void CorrectConnections();
  void Watch(TSceneNode& ANode);
  void DropConnectionObjects();
  void Rename(const std::string& AnOldName, const std::string& ANewName);
  void NodeChangedName(INode* ANode, const std::string& AnOldName, const std::string& ANewName);
  void NodeDestroyed(INode* ANode);
  void NodeMoved(ISceneNode* ANode);

  TNodeConnections FConnections;
  std::set<TStringPair>
      FKnownLinks;  // keys of all connections; empty when they are to be found out
  std::vector<TEnds> FConnectionObjects;  // looks at them; nothing where none was looked up yet
  bool FAreAllResolved = false;
  std::vector<TPointF> FHighLitPath;
};

// ---------------------------------------------------------------- the graph of all paths

/// Three values.
template <class T1, class T2, class T3>
struct TTriple {
  T1 First;
  T2 Second;
  T3 Third;

  bool operator==(const TTriple&) const = default;
};
using TPathPosition = TTriple<std::int32_t, std::int32_t, std::int32_t>;

/// The vertices and edges of all paths of a scene and of what links them. A vertex is the first
/// node of its name; a node without edges is none. Links to names that no shape has are left out.
/// Places nodes at control points where they are missing.
void GetAllPaths(IScene* AScene, TArray<TPathNodeInfo>& AnInfos, TArray<TPathEdge>& AnEdges);

/// The positions (`TPointF`), or the numbers of map, path and node (`TPathPosition`), of vertices.
template <class TPosition>
std::vector<TPosition> FilterPositions(std::span<const TPathNodeInfo> AnInfos);
template <>
std::vector<TPointF> FilterPositions<TPointF>(std::span<const TPathNodeInfo> AnInfos);
template <>
std::vector<TPathPosition> FilterPositions<TPathPosition>(std::span<const TPathNodeInfo> AnInfos);

// ---------------------------------------------------------------- classes by name

/// Makes an object of one of the classes of stored scenes, letter case ignored, or nothing; a
/// `TCreator`. Hands back nothing to be called. `CreateInstanceOfClass` makes the same ones.
TRef<TInterfacedObject> GetDefaultClassLoader(const std::string& AQualifiedClass,
                                              TLoadedResource& ALoadedResource);

}  // namespace System::Beacon::Fencing::Scene::Beacons

namespace System {

template <>
struct TEnumNames<Beacon::Fencing::Scene::Beacons::TBeaconVisualizationMode> {
  static constexpr std::string_view Type = "TBeaconVisualizationMode";
  static constexpr std::array<std::string_view, 3> Names{
      "SolidCircle", "ThreeDistances", "SignalDistance"};
};

}  // namespace System
