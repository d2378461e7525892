// Walkable paths: nodes that follow their control points, links by name, the graph of all paths,
// routes that are shown.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "platform/errors.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "support/pictures.h"
#include "support/raised.h"

namespace System::Beacon::Fencing::Scene::Beacons {
namespace {

using TPoints = std::vector<TPointF>;

TRef<TMapPath> MakePath(const TPoints& APoints, const TConnections& AConnections = {}) {
  const TRef<TMapPath> Result = New<TMapPath>();
  for (const TPointF Point : APoints) Result->AddControlPoint(Point);
  Result->SetConnections(AConnections);
  return Result;
}

void NameNodes(TMapPath& APath, const TNames& ANames) {
  for (std::size_t I = 0; I < ANames.size(); ++I)
    APath.GetControlPointNode(static_cast<std::int32_t>(I))->SetName(ANames[I]);
}

/// What a path and a polygon of the same points should be: the points in order with the nodes that
/// stand at them; every point has a number of its own, by which it is connected.
struct TModel {
  struct TPoint {
    int Number;
    TPointF Place;
    TRef<IPathNode> Node;
  };
  std::vector<TPoint> Points;
  std::vector<std::uint8_t> Commands;
  std::vector<std::pair<int, int>> Connections;
  int LastNumber = 0;

  void Insert(std::size_t AIndex, TPointF APlace, const TRef<IPathNode>& ANode = nullptr) {
    const auto At = static_cast<std::ptrdiff_t>(AIndex);
    Points.insert(Points.begin() + At, {++LastNumber, APlace, ANode});
    const bool IsFirst = Commands.empty();
    Commands.insert(Commands.begin() + (IsFirst ? 0 : std::max<std::ptrdiff_t>(At, 1)),
                    IsFirst ? 0 : 1);
  }
  void Remove(std::size_t AIndex) {
    const int Number = Points[AIndex].Number;
    Points.erase(Points.begin() + static_cast<std::ptrdiff_t>(AIndex));
    Commands.erase(Commands.begin() + static_cast<std::ptrdiff_t>(AIndex));
    std::erase_if(Connections,
                  [&](const auto& C) { return C.first == Number || C.second == Number; });
  }
  std::int32_t IndexOf(int ANumber) const {
    const auto Found = std::find_if(
        Points.begin(), Points.end(), [&](const TPoint& P) { return P.Number == ANumber; });
    return static_cast<std::int32_t>(Found - Points.begin());
  }
  TRectF Bounds() const {
    if (Points.empty()) return {};
    const TPointF First = Points.front().Place;
    TRectF R{First.X, First.Y, First.X, First.Y};
    for (const TPoint& P : Points)
      R = {std::min(R.Left, P.Place.X),
           std::min(R.Top, P.Place.Y),
           std::max(R.Right, P.Place.X),
           std::max(R.Bottom, P.Place.Y)};
    return R;
  }

  /// Takes over nodes that the path has made.
  void Expect(TMapPath& APath) {
    const TPathNodes Nodes = APath.GetControlPointNodes();
    ASSERT_EQ(Nodes.size(), Points.size());
    ASSERT_EQ(APath.GetChildCount(), std::ssize(Points));
    for (std::size_t I = 0; I < Nodes.size(); ++I) {
      auto& [Number, Point, Node] = Points[I];
      if (!Node) Node = Nodes[I];
      ASSERT_TRUE(IsSame(Nodes[I].Get(), Node.Get())) << "slot " << I;
      ASSERT_EQ(Node->GetControlPointIndex(), std::ssize(std::span(Nodes).first(I)));
      ASSERT_TRUE(IsSame(Node->GetParent(), &APath));
      ASSERT_EQ(Node->GetDisplacement(), Point);
      ASSERT_EQ(APath.GetControlPointNodeIndex(Node.Get()), Node->GetControlPointIndex());
    }
    TConnections Expected;
    for (const auto& [From, To] : Connections) Expected.emplace_back(IndexOf(From), IndexOf(To));
    ASSERT_EQ(APath.GetConnections(), Expected);
    ASSERT_EQ(APath.GetRect(), Bounds());
  }
};

TEST(TMapPath, StaysInStepWithAPlainModelWhateverIsDone) {
  enum TAction {
    Remove,
    Detach,
    Renew,
    Add,
    AddMore,
    Insert,
    AddNode,
    MoveNode,
    Set,
    Move,
    Connect
  };
  std::mt19937 Generator(7);
  const auto Below = [&](std::size_t ALimit) { return Generator() % ALimit; };
  const auto Path = New<TMapPath>();
  const auto Polygon = New<TPolygonShape>();
  TModel Model;
  TPathNodes Gone;
  TRectF Announced;
  Polygon->ConnectRectChange(
      [&](ISceneNode*, const TRectF&, const TRectF& ANew) { Announced = ANew; });
  for (int Step = 0; Step < 10'000; ++Step) {
    const std::size_t Count = Model.Points.size(), Slot = Below(Count + 1);
    const auto Index = static_cast<std::int32_t>(Slot);
    const TPointF Place{static_cast<float>(Below(20)), static_cast<float>(Below(20))};
    const TPointF Delta = Below(2) == 0 ? TPointF{1, -1} : TPointF{-1, 1};
    const bool IsThere = Slot < Count;
    const auto Action = static_cast<TAction>(Below(Count > 20 ? Add : Connect + 1));
    SCOPED_TRACE(fmt::format("step {}, action {}, slot {}", Step, static_cast<int>(Action), Slot));
    if (Action < Add && IsThere) Gone.push_back(Model.Points[Slot].Node);
    if (Action == Remove) {
      ASSERT_EQ(Path->RemoveControlPoint(Index), IsThere);
    } else if (Action == Detach && IsThere) {
      Gone.back()->Detach();
    } else if (Action == Renew && IsThere) {  // the point stays and gets another node
      Path->RemoveChild(std::exchange(Model.Points[Slot].Node, nullptr).Get());
    } else if (Action == Add || Action == AddMore) {
      Path->AddControlPoint(Place);
      Polygon->AddControlPoint(Place);
      Model.Insert(Count, Place);
    } else if (Action == Insert) {
      Path->AddControlPointAtIndex(Index, Place);
      Model.Insert(Slot, Place);
    } else if (Action == AddNode) {
      const auto Node = New<TMapPathNode>();
      Node->SetControlPointIndex(Index);
      Path->AddChild(Node);
      Model.Insert(Slot, {}, Node);
    } else if (Action == MoveNode && IsThere) {
      Supports<IShape>(Model.Points[Slot].Node)->SetDisplacement(Place);
    } else if (Action == Set && IsThere) {
      Path->SetControlPointAt(Index, Place);
    } else if (Action == Move) {
      Path->SetDisplacement(Delta);
      Polygon->SetDisplacement(Delta);
      for (auto& P : Model.Points) P.Place = P.Place + Delta;
    } else if (Action == Connect && IsThere) {
      const std::size_t Other = Below(Count);
      Path->ConnectControlPoints(Index, static_cast<std::int32_t>(Other));
      Model.Connections.emplace_back(Model.Points[Slot].Number, Model.Points[Other].Number);
    }
    if (Action <= Detach && IsThere) {
      Polygon->RemoveControlPoint(Index);
      Model.Remove(Slot);
    }
    if (Action == Insert || Action == AddNode)
      Polygon->AddControlPointAtIndex(Index, Model.Points[Slot].Place);
    if ((Action == MoveNode || Action == Set) && IsThere) {
      Polygon->SetControlPointAt(Index, Place);
      Model.Points[Slot].Place = Place;
    }
    ASSERT_NO_FATAL_FAILURE(Model.Expect(*Path));
    if (!Gone.empty()) {
      ASSERT_FALSE(Gone.back()->GetParent());
    }
    // Insertions and moves are not announced as changes of the rectangle.
    if (Action == Insert || Action == AddNode || Action == Move) Announced = Model.Bounds();
    ASSERT_EQ(Announced, Polygon->GetRect());
    ASSERT_EQ(Polygon->GetRect(), Model.Bounds());
    ASSERT_EQ(Polygon->GetCommands(), Model.Commands);
  }
  // As many points as are set have nodes.
  for (const std::size_t Count : {std::size_t{50}, std::size_t{3}}) {
    Path->SetConnections({});
    Path->SetControlPoints(TPoints(Count, TPointF{1, 2}));
    Model.Connections.clear();
    Model.Points.resize(Count);
    for (auto& P : Model.Points) P.Place = {1, 2};
    Model.Expect(*Path);
  }
}

TEST(TMapPath, PutsNodesThatAreReadIntoTheSlotsThatTheyName) {
  const auto Path = New<TMapPath>();
  Path->SetControlPoints(TPoints{{1, 1}, {2, 2}, {3, 3}});
  TNodes Nodes;
  for (const std::int32_t Index : {2, 0, 2, 9, -1}) {
    const auto Node = New<TMapPathNode>();
    Node->SetControlPointIndex(Index);
    Nodes.push_back(Node);
  }
  Path->SetChildren(Nodes);
  const TPathNodes Slots = Path->GetControlPointNodes();
  EXPECT_TRUE(IsSame(Slots[0].Get(), Nodes[1].Get()));
  EXPECT_TRUE(IsSame(Slots[2].Get(), Nodes[0].Get()));
  EXPECT_EQ(Slots[1]->GetDisplacement(), (TPointF{2, 2}));
  std::string Indexes;
  for (const TRef<INode>& Node : Path->GetChildren())
    Indexes += std::to_string(Supports<IPathNode>(Node)->GetControlPointIndex()) + ' ';
  EXPECT_EQ(Indexes, "2 0 -1 -1 -1 1 ");
}

TEST(TMapPath, StaysInStepWhenHandlersAskForNodesOrAddPoints) {
  const auto Path = MakePath({{0, 0}, {1, 0}, {2, 0}});
  const TRef<IPathNode> Last = Path->GetControlPointNode(2);
  bool IsToAdd = true;
  Path->ConnectControlPointsChange([&](IControlPointsShape*, bool) {
    Path->GetControlPointNodes();
    if (std::exchange(IsToAdd, false)) Path->AddControlPoint({3, 0});
  });
  Path->RemoveControlPoint(0);
  EXPECT_TRUE(IsSame(Path->GetControlPointNode(1).Get(), Last.Get()));
  for (std::int32_t I = 0; I < 3; ++I)
    EXPECT_EQ(Path->GetControlPointNode(I)->GetDisplacement(), Path->GetControlPointAt(I));
  EXPECT_EQ(Path->GetChildCount(), 3);

  // A point cannot be inserted while another one is being announced.
  Path->ConnectControlPointsChange([&](IControlPointsShape*, bool) {
    EXPECT_FALSE(Path->AddControlPointAtIndex(0, {9, 9}));
  });
  EXPECT_TRUE(Path->AddControlPoint({4, 0}));
  for (std::int32_t I = 0; I < 4; ++I)
    EXPECT_EQ(Path->GetControlPointNode(I)->GetDisplacement(), Path->GetControlPointAt(I));
}

TEST(TMapPath, ConnectsAndDescribesByNames) {
  const auto Path = MakePath({{0, 0}, {1, 0}, {2, 0}}, {{0, 1}, {7, 1}});
  NameNodes(*Path, {"Door", "Stairs", "Desk"});
  Path->AddNodeConnections(TNodeConnections{{"desk", "DOOR"}, {"Desk", "Lift"}});
  EXPECT_EQ(Path->GetNodeConnections(), (TNodeConnections{{"Door", "Stairs"}, {"Desk", "Door"}}));
  const auto Describe = [&](std::int32_t AIndex, const TDescriptionList& AList) {
    Path->GetControlPointNode(AIndex)->SetProperty("DescriptionList",
                                                   TValue::From(DescriptionListToString(AList)));
  };
  Describe(0, {{"Kind", "exit"}, {"Width", "2"}});
  Describe(2, {{"kind", "desk"}});
  std::string Text;
  for (const TDescriptionEntry& Entry : Path->GetNodesDescriptionList())
    for (const auto& [Value, Slot] : Entry.Values)
      Text += fmt::format("{}={}@{} ", Entry.Key, Value, Slot);
  EXPECT_EQ(Text, "Kind=exit@0 Kind=desk@2 Width=2@0 ");
}

/// Two floors side by side with a path each, and a link between them.
struct TTwoFloors {
  TRef<TScene> Scene = New<TScene>();
  TRef<TMap> Ground = AddMap("Ground", 0);
  TRef<TMap> Upper = AddMap("Upper", 20);
  TRef<TMapPath> GroundPath = AddPath(*Ground, {{2, 8}, {8, 8}, {8, 2}, {5, 5}}, {{0, 1}, {2, 1}});
  TRef<TMapPath> UpperPath = AddPath(*Upper, {{28, 2}, {22, 8}}, {{0, 1}});
  TRef<TConnectingNodes> Links = New<TConnectingNodes>();
  TArray<TPathNodeInfo> Infos;
  TArray<TPathEdge> Edges;

  TTwoFloors() {
    NameNodes(*GroundPath, {"Door", "Hall", "Stairs", "Alone"});
    NameNodes(*UpperPath, {"Landing", "Desk"});
    Links->SetConnections(TNodeConnections{{"stairs", "LANDING"}, {"Desk", "Nowhere"}});
    Scene->AddChild(Links);
    GetAllPaths(Scene.Get(), Infos, Edges);
  }

  TRef<TMap> AddMap(const std::string& AName, float ALeft) {
    const auto Map = New<TMap>();
    Map->SetName(AName);
    Map->SetRect({ALeft, 0, ALeft + 10, 10});
    Map->SetChildren({New<TBeaconsLayer>(), New<TZonesLayer>(), New<TPathsLayer>()});
    Scene->AddChild(Map);
    return Map;
  }

  static TRef<TMapPath> AddPath(const TMap& AMap,
                                const TPoints& APoints,
                                const TConnections& AConnections) {
    const auto Path = MakePath(APoints, AConnections);
    AMap.GetChildAt(2)->AddChild(Path);
    return Path;
  }

  std::string GraphText() const {
    std::string Result;
    for (const TPathNodeInfo& Info : Infos)
      Result += fmt::format("{} {},{} {}/{}/{}; ",
                            Info.Node->GetName(),
                            Info.GlobalPosition.X,
                            Info.GlobalPosition.Y,
                            Info.MapIndex,
                            Info.PathIndex,
                            Info.NodeIndex);
    for (const auto& [From, To] : Edges) Result += fmt::format("{}-{} ", From, To);
    return Result;
  }
};

TEST(GetAllPaths, FlattensPathsAndLinksOfAllMaps) {
  TTwoFloors Floors;
  EXPECT_EQ(Floors.GraphText(),
            "Door 2,8 0/0/0; Hall 8,8 0/0/1; Stairs 8,2 0/0/2; Landing 28,2 1/0/0; "
            "Desk 22,8 1/0/1; 0-1 2-1 3-4 2-3 ");
  // Nodes of one name are one vertex; a link makes a vertex of a node that has no other edge.
  Floors.UpperPath->GetControlPointNode(1)->SetName("Door");
  Floors.Links->AddConnection("Alone", "Hall");
  GetAllPaths(Floors.Scene.Get(), Floors.Infos, Floors.Edges);
  EXPECT_EQ(Floors.GraphText(),
            "Door 2,8 0/0/0; Hall 8,8 0/0/1; Stairs 8,2 0/0/2; Landing 28,2 1/0/0; "
            "Alone 5,5 0/0/3; 0-1 2-1 3-0 2-3 4-1 ");
  const std::span<const TPathNodeInfo> Infos(Floors.Infos.begin(), Floors.Infos.end());
  EXPECT_EQ(FilterPositions<TPointF>(Infos).back(), (TPointF{5, 5}));
  EXPECT_EQ(FilterPositions<TPathPosition>(Infos)[3], (TPathPosition{1, 0, 0}));
}

TEST(TMap, ShowsEachStretchOfARouteOnItself) {
  TTwoFloors Floors;
  const std::span<const TPathNodeInfo> Infos(Floors.Infos.begin(), Floors.Infos.end());
  struct TCase {
    std::vector<std::int32_t> Route;
    std::vector<std::vector<std::int32_t>> Ground, Upper;
  };
  for (const TCase& C : {TCase{{0, 1, 2, 3, 4, 3, 2}, {{0, 1, 2}, {3}}, {{0, 1, 2}}},
                         TCase{{4, 0, 3, 1, 2}, {{0}, {1, 2}}, {{0}, {1}}},
                         TCase{{0, 9, -1, 1}, {{0}, {1}}, {}},
                         TCase{{}, {}, {}}}) {
    Floors.Ground->HighLitCustomPath(Infos, C.Route);
    Floors.Upper->HighLitCustomPath(Infos, C.Route);
    EXPECT_EQ(Floors.Ground->GetCustomPathHighLitPaths(), C.Ground);
    EXPECT_EQ(Floors.Upper->GetCustomPathHighLitPaths(), C.Upper);
  }
}

void Paint(TScene& AScene, TDrawing& ADrawing) {
  const auto Canvas = New<Canvas::TWyxCanvas>();
  AScene.PaintScene(New<Canvas::TWyxLayer>(&ADrawing), Canvas);
}

TEST(TConnectingNodes, KeepsLinksWithoutRegardToCaseAndDirection) {
  const auto Links = New<TConnectingNodes>();
  Links->AddConnection("A", "B");
  Links->AddConnection("b", "a");
  Links->AddConnection("B", "C");
  Links->AddConnection("C", "A");
  EXPECT_EQ(Links->GetConnectionCount(), 3);
  EXPECT_EQ(Links->GetIndexOf("c"), 1);
  EXPECT_EQ(Links->GetConnectionIndex("a", "C"), 2);
  Links->UpdateNode("b", "D");
  Links->RemoveConnection("a", "c");
  EXPECT_EQ(Links->GetConnections(), (TNodeConnections{{"A", "D"}, {"D", "C"}}));
  Links->RemoveNode("a");
  EXPECT_EQ(Links->GetConnections(), (TNodeConnections{{"D", "C"}}));
  EXPECT_FALSE(Links->ContainsNode("A"));
}

TEST(TConnectingNodes, FollowsTheNodesThatItWasPaintedWith) {
  TTwoFloors Floors;
  TDrawing Drawing(10, 10);
  Paint(*Floors.Scene, Drawing);  // hidden: no name is looked up
  Floors.Links->HighLitPath(TPoints{{0, 0}, {1, 1}});
  EXPECT_EQ(Raised<EGeneralError>([&] { Paint(*Floors.Scene, Drawing); }), "Invalid Object");
  Floors.Links->RemoveNode("Nowhere");
  EXPECT_EQ(Floors.Links->GetRect(), TRectF{});
  Paint(*Floors.Scene, Drawing);
  EXPECT_EQ(Floors.Links->GetRect(), (TRectF{8, 2, 28, 2}));
  Floors.GroundPath->GetControlPointNode(2)->SetName("Lift");
  Floors.GroundPath->SetControlPointAt(2, {8, 3});
  EXPECT_EQ(Floors.Links->GetConnections(), (TNodeConnections{{"Lift", "LANDING"}}));
  EXPECT_EQ(Floors.Links->GetRect(), (TRectF{8, 2, 28, 3}));
  Floors.Infos = {};  // the last to keep the nodes
  Floors.UpperPath->RemoveControlPoint(0);
  EXPECT_EQ(Floors.Links->GetRect(), TRectF{});
  Floors.Links->HighLitPath({});
  Paint(*Floors.Scene, Drawing);
}

// ---------------------------------------------------------------- pictures

constexpr int Side = 240;

TRef<TBeacon> AddBeacon(const TMap& AMap, TPointF APlace, TBeaconVisualizationSet AModes) {
  const auto Beacon = New<TBeacon>();
  Beacon->SetDisplacement(APlace);
  Beacon->SetFillColor(TAlphaColor{0xFF3366CC});
  Beacon->SetVisualizationMode(AModes);
  Beacon->SetSignalDistance(2.0F);
  AMap.GetChildAt(0)->AddChild(Beacon);
  return Beacon;
}

/// A floor of 10 by 10, 24 pixels a unit, with something of everything.
void Furnish(TTwoFloors& AFloors) {
  using enum TBeaconVisualizationMode;
  const auto Camera = New<TCamera>();
  Camera->SetFrustum({0, 0, 10, 10});
  AFloors.Scene->SetCamera(Camera);
  AFloors.Scene->GetViewport()->SetScreenSize(Side, Side);
  AddBeacon(*AFloors.Ground, {2, 2}, {SolidCircle, ThreeDistances, SignalDistance});
  AddBeacon(*AFloors.Ground, {5, 1}, {SolidCircle});
  AddBeacon(*AFloors.Ground, {8, 5}, {ThreeDistances});
  const auto Zone = New<TZone>();
  Zone->SetRect({1, 5, 4, 7});
  const auto Circle = New<TCircularZone>();
  Circle->SetRect({5, 3, 8, 5});
  const auto Polygon = New<TPathZone>();
  Polygon->SetControlPoints(TPoints{{4, 9.8F}, {7, 9.8F}, {5, 6}});
  Polygon->SetCommands(std::vector<std::uint8_t>{0, 1, 1});
  AFloors.Ground->GetChildAt(1)->SetChildren({Zone, Circle, Polygon});
  AFloors.GroundPath->SetHighLitPath(std::vector<std::int32_t>{3, 1});
  AFloors.Ground->HighLitCustomPath(std::span(AFloors.Infos.begin(), AFloors.Infos.end()),
                                    std::vector<std::int32_t>{0, 1, 2, 3});
  AFloors.Links->SetConnections(TNodeConnections{{"Stairs", "Alone"}});
  AFloors.Links->HighLitPath(TPoints{{2, 8}, {2, 9.5F}, {9.5F, 9.5F}});
}

TEST(Maps, AreDrawnWithBeaconsZonesPathsAndRoutes) {
  TTwoFloors Floors;
  Furnish(Floors);
  TDrawing Drawing(Side, Side);
  Paint(*Floors.Scene, Drawing);
  ExpectPicture(Drawing.GetPicture(), "map_floor");
  TDrawing Parts(Side, Side);
  for (int Part = 0; Part < 8 * 12; ++Part) {
    const auto X = static_cast<float>(Part % 8 * 30), Y = static_cast<float>(Part / 8 * 20);
    Parts.SetClip({X, Y, X + 30, Y + 20});
    Paint(*Floors.Scene, Parts);
  }
  EXPECT_EQ(CountDifferent(Drawing, Parts, 32), 0);
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene::Beacons
