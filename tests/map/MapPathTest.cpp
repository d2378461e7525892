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
#include "persistence/System.Beacon.Fencing.Serializer.h"
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

/// What a path should be: the points and the nodes that stand at them, in order.
struct TModel {
  std::vector<std::pair<TPointF, TRef<IPathNode>>> Points;

  /// Takes over nodes that the path has made.
  void Expect(TMapPath& APath) {
    const TPathNodes Nodes = APath.GetControlPointNodes();
    ASSERT_EQ(Nodes.size(), Points.size());
    ASSERT_EQ(APath.GetChildCount(), std::ssize(Points));
    for (std::size_t I = 0; I < Nodes.size(); ++I) {
      auto& [Point, Node] = Points[I];
      if (!Node) Node = Nodes[I];
      ASSERT_TRUE(IsSame(Nodes[I].Get(), Node.Get())) << "slot " << I;
      ASSERT_EQ(Node->GetControlPointIndex(), std::ssize(std::span(Nodes).first(I)));
      ASSERT_TRUE(IsSame(Node->GetParent(), &APath));
      ASSERT_EQ(Node->GetDisplacement(), Point);
      ASSERT_EQ(APath.GetControlPointNodeIndex(Node.Get()), Node->GetControlPointIndex());
    }
  }
};

TEST(TMapPath, KeepsANodeAtEveryControlPointWhateverIsDone) {
  std::mt19937 Generator(7);
  const auto Random = [&] { return static_cast<std::uint32_t>(Generator()); };
  const auto Path = New<TMapPath>();
  TModel Model;
  TPathNodes Gone;
  for (int Step = 0; Step < 5000; ++Step) {
    const auto Count = static_cast<std::uint32_t>(Model.Points.size());
    const std::uint32_t Slot = Random() % (Count + 1);
    const auto Index = static_cast<std::int32_t>(Slot);
    const auto At = Model.Points.begin() + Index;
    const TPointF Point{static_cast<float>(Step), static_cast<float>(Random() % 100)};
    const bool IsThere = Slot < Count;
    const std::uint32_t Action = Random() % (Count > 40 ? 4 : 9);
    SCOPED_TRACE(fmt::format("step {}, action {}, slot {}", Step, Action, Slot));
    if (Action < 4 && IsThere) Gone.push_back(At->second);
    if (Action == 0 || Action == 1) {
      ASSERT_EQ(Path->RemoveControlPoint(Index), IsThere);
      if (IsThere) Model.Points.erase(At);
    } else if (Action == 2 && IsThere) {
      Gone.back()->Detach();
      Model.Points.erase(At);
    } else if (Action == 3 && IsThere) {  // the point stays and gets another node
      Path->RemoveChild(std::exchange(At->second, nullptr).Get());
    } else if (Action == 4) {
      Path->AddControlPoint(Point);
      Model.Points.emplace_back(Point, nullptr);
    } else if (Action == 5) {
      Path->AddControlPointAtIndex(Index, Point);
      Model.Points.insert(At, {Point, nullptr});
    } else if (Action == 6) {
      const auto Node = New<TMapPathNode>();
      Node->SetControlPointIndex(Index);
      Path->AddChild(Node);
      Model.Points.insert(At, {TPointF{}, Node});
    } else if (Action == 7 && IsThere) {
      Supports<IShape>(At->second)->SetDisplacement(Point);
      At->first = Point;
    } else if (Action == 8) {
      TPoints Points;
      for (const auto& Each : Model.Points) Points.push_back(Each.first);
      Points.resize(Slot + Random() % 2);
      Model.Points.resize(Points.size());
      Path->SetControlPoints(Points);
    }
    ASSERT_NO_FATAL_FAILURE(Model.Expect(*Path));
    if (!Gone.empty()) {
      ASSERT_FALSE(Gone.back()->GetParent());
    }
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
}

TEST(Maps, AreReadBackWithTheSameGraph) {
  TTwoFloors Floors;
  Furnish(Floors);
  GetAllPaths(Floors.Scene.Get(), Floors.Infos, Floors.Edges);
  const std::string Graph = Floors.GraphText();
  const std::string Text = SerializeToXML(*Floors.Scene);
  TRef<TInterfacedObject> Scene;
  TRef<IInterface> Ignored;
  const TCreator Loader = GetDefaultClassLoader;
  ASSERT_TRUE(UnserializeFromXMLString(Scene, Ignored, Text, std::span(&Loader, 1)));
  GetAllPaths(Supports<IScene>(Scene), Floors.Infos, Floors.Edges);
  EXPECT_EQ(Floors.GraphText(), Graph);
  EXPECT_EQ(SerializeToXML(*Scene), Text);
}

TEST(Maps, AreSearchedAndPaintedInPartsAsAWhole) {
  TTwoFloors Floors;
  Furnish(Floors);
  std::mt19937 Random(3);
  std::uniform_real_distribution<float> Along(0.0F, 10.0F);
  const auto Point = [&] { return TPointF{Along(Random), Along(Random)}; };
  for (int I = 0; I < 100; ++I) {  // enough for an index of children
    AddBeacon(*Floors.Ground, Point(), {TBeaconVisualizationMode::SignalDistance});
    Floors.GroundPath->AddControlPoint(Point());
  }
  for (int Step = 0; Step < 40; ++Step) {
    const auto Beacon = Supports<TBeacon>(Floors.Ground->GetChildAt(0)->GetChildAt(Step));
    Beacon->SetSignalDistance(Along(Random));
    Floors.GroundPath->SetControlPointAt(Step, Point());
    const TPointF Place = Floors.GroundPath->GetControlPointAt(Step);
    TSceneNodes Hit;
    Floors.Scene->GetSceneNodeUnderGlobalPoint(Place, Hit);
    const auto IsNode = [&](const ISceneNode* A) {
      return IsSame(A, Floors.GroundPath->GetControlPointNode(Step).Get());
    };
    EXPECT_TRUE(std::any_of(Hit.begin(), Hit.end(), IsNode)) << Step;
    TDrawing Whole(Side, Side), Part(Side, Side);
    const float X = static_cast<float>(Random() % 200), Y = static_cast<float>(Random() % 200);
    const TRectF Area{X, Y, X + 30, Y + 20};
    Whole.SetClip({0, 0, Side, Side});
    Part.SetClip(Area);
    Paint(*Floors.Scene, Whole);
    Paint(*Floors.Scene, Part);
    for (int Row = static_cast<int>(Y); Row < static_cast<int>(Y) + 20; ++Row)
      for (int Column = static_cast<int>(X); Column < static_cast<int>(X) + 30; ++Column) {
        const auto I = static_cast<std::size_t>(Row) * Side + static_cast<std::size_t>(Column);
        ASSERT_LE(Difference(Whole.GetPixels()[I], Part.GetPixels()[I]), 32)
            << Column << "," << Row;
      }
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene::Beacons
