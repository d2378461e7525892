#include "apps/wayfence/walk_path.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "platform/errors.h"
#include "platform/random.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

using TPathPoints = std::vector<TReceiverPath::TPoint>;
using TLink = TContiguityMatrix::TLink;

/// Writes down where the receiver is while it moves.
class TWalker {
 public:
  TWalker(double ASpeed, double AStairs) : FSpeed(ASpeed), FStairs(AStairs) {}

  bool HasBegun() const { return !FPoints.empty(); }
  const TRadioPlace& GetPlace() const { return FPoints.back().Place; }
  double GetSeconds() const { return FSeconds; }

  void BeginAt(const TRadioPlace& APlace) { Add(APlace); }
  void Wait(double ASeconds) {
    if (ASeconds <= 0.0) return;
    FSeconds += ASeconds;
    Add(GetPlace());
  }
  void GoTo(const TRadioPlace& APlace) {
    if (APlace.Level != GetPlace().Level) return ClimbTo(APlace);
    const double X = APlace.X - GetPlace().X;
    const double Y = APlace.Y - GetPlace().Y;
    FSeconds += std::sqrt(X * X + Y * Y) / FSpeed;
    Add(APlace);
  }

  /// The whole way, or its first `ASeconds`.
  TReceiverPath Finish(std::optional<double> ASeconds = std::nullopt) {
    TReceiverPath Whole(std::move(FPoints));
    if (!ASeconds) return Whole;
    const TTicks End = TicksOf(*ASeconds);
    TPathPoints Points = Whole.GetPoints();
    std::erase_if(Points, [End](const auto& APoint) { return APoint.Time >= End; });
    Points.push_back({End, Whole.GetPlace(End)});
    return TReceiverPath(std::move(Points));
  }

 private:
  static TTicks TicksOf(double ASeconds) {
    return static_cast<TTicks>(std::ceil(ASeconds * TicksPerSecond));
  }

  void ClimbTo(const TRadioPlace& APlace) {
    FSeconds += FStairs / 2.0;
    Add(GetPlace());
    Add(APlace);
    FSeconds += FStairs / 2.0;
    Add(APlace);
  }

  void Add(TRadioPlace APlace) {
    constexpr double Longest = static_cast<double>(TReceiverPath::LongestTime) / TicksPerSecond;
    if (FPoints.size() == TReceiverPath::MaxPoints || FSeconds > Longest)
      throw EBeaconSourceError(
          fmt::format("the walk takes more than {} days or {} turns; shorten it",
                      TReceiverPath::LongestTime / (86'400 * TicksPerSecond),
                      TReceiverPath::MaxPoints));
    FPoints.push_back({TicksOf(FSeconds), APlace});
  }

  double FSpeed;   // m/s
  double FStairs;  // seconds
  double FSeconds = 0.0;
  TPathPoints FPoints;
};

class TWalkPlanner {
 public:
  TWalkPlanner(const TWalk& AWalk,
               const TFencingProject& AProject,
               const TWalkFloors& AFloors,
               std::uint64_t ASeed)
      : FWalk(AWalk),
        FProject(AProject),
        FGraph(AProject.Graph),
        FFloors(AFloors),
        FStream(~ASeed),  // not the one that the radio begins with
        FWalker(AWalk.Speed, AWalk.Stairs) {}

  TReceiverPath Plan() {
    if (FWalk.Random) return WalkAtRandom(*FWalk.Random);
    for (const TWalkStop& Stop : FWalk.Stops) {
      Stop.Node.empty() ? VisitPlace(Stop) : VisitNode(Stop);
      FWalker.Wait(Stop.Wait);
    }
    return FWalker.Finish();
  }

 private:
  [[noreturn]] void Refuse(int ALine, std::string_view AWhat) const {
    throw EFileError(fmt::format("{}:{}: {}", FWalk.FileName, ALine, AWhat));
  }

  // ------------------------------------------------------------- nodes

  /// The node stands on a map.
  bool IsOnMap(std::int32_t ANode) const { return InfoOf(ANode).MapIndex >= 0; }
  const TPathNodeInfo& InfoOf(std::int32_t ANode) const {
    return FProject.GlobalPath[static_cast<std::size_t>(ANode)];
  }
  TRadioPlace PlaceOf(std::int32_t ANode) const {
    return FFloors.ToBuilding(InfoOf(ANode).MapIndex, InfoOf(ANode).GlobalPosition);
  }
  std::int32_t GetNodeCount() const {
    return static_cast<std::int32_t>(FProject.GlobalPath.GetLength());
  }

  std::int32_t FindNode(const TWalkStop& AStop) const {
    for (std::int32_t I = 0; I < GetNodeCount(); ++I)
      if (IsOnMap(I) && InfoOf(I).Node && InfoOf(I).Node->GetName() == AStop.Node) return I;
    Refuse(AStop.Line,
           fmt::format("there is no path node '{}' on a map; 'wayfence inspect' lists them under "
                       "\"graph\"",
                       AStop.Node));
  }

  /// The node of the level that is nearest to where the walk is; -1 when there is none.
  std::int32_t NearestNode() const {
    const TRadioPlace& Here = FWalker.GetPlace();
    std::int32_t Result = -1;
    double Nearest = 0.0;
    for (std::int32_t I = 0; I < GetNodeCount(); ++I) {
      if (InfoOf(I).MapIndex != Here.Level) continue;
      const TRadioPlace Place = PlaceOf(I);
      const double Distance =
          (Place.X - Here.X) * (Place.X - Here.X) + (Place.Y - Here.Y) * (Place.Y - Here.Y);
      if (Result >= 0 && Distance >= Nearest) continue;
      Result = I;
      Nearest = Distance;
    }
    return Result;
  }

  // ------------------------------------------------------------- stops

  void CheckMap(int ALine, int AMap) const {
    if (AMap >= FFloors.GetCount())
      Refuse(ALine,
             fmt::format("there is no map {}; the project has {}", AMap, FFloors.GetCount()));
  }

  void VisitPlace(const TWalkStop& AStop) {
    CheckMap(AStop.Line, AStop.Map);
    const TRadioPlace Place = FFloors.ToBuilding(AStop.Map, AStop.X, AStop.Y);
    if (!FWalker.HasBegun()) return FWalker.BeginAt(Place);
    if (Place.Level != FWalker.GetPlace().Level)
      Refuse(AStop.Line,
             fmt::format("the walk is on map {} and cannot go straight to map {}; name a node of "
                         "that map before",
                         FWalker.GetPlace().Level,
                         Place.Level));
    FWalker.GoTo(Place);
  }

  void VisitNode(const TWalkStop& AStop) {
    const std::int32_t Target = FindNode(AStop);
    if (!FWalker.HasBegun()) return FWalker.BeginAt(PlaceOf(Target));
    const std::int32_t Start = NearestNode();
    if (Start < 0)
      Refuse(
          AStop.Line,
          fmt::format("there is no path on map {}, where the walk is", FWalker.GetPlace().Level));
    FGraph.CalculateMinimalPath(Start, Target);
    const TArray<TRouteStep> Route = FGraph.LastCalculatedPath.Get();
    if (Route.IsEmpty() || Route[0].first != Start)
      Refuse(AStop.Line,
             fmt::format("no path leads from '{}' to '{}'",
                         InfoOf(Start).Node ? InfoOf(Start).Node->GetName() : std::string(),
                         AStop.Node));
    for (const auto& [Node, Map] : Route) {
      if (!IsOnMap(Node))
        Refuse(AStop.Line, fmt::format("the way to '{}' leads over no map", AStop.Node));
      FWalker.GoTo(PlaceOf(Node));
    }
  }

  // ------------------------------------------------------------- at random

  /// The nodes to which one can walk from a node.
  std::vector<std::int32_t> NeighboursOf(std::int32_t ANode) const {
    std::vector<std::int32_t> Result;
    for (const TLink& Link : FGraph.ContiguityMatrix.GetRows().GetLinks(ANode))
      if (IsOnMap(Link.Node)) Result.push_back(Link.Node);
    return Result;
  }

  std::int32_t OneOf(const std::vector<std::int32_t>& ANodes) {
    return ANodes[FStream.NextBelow(static_cast<std::uint32_t>(ANodes.size()))];
  }

  TReceiverPath WalkAtRandom(const TRandomWalk& ARandom) {
    CheckMap(ARandom.Line, ARandom.Map);
    std::vector<std::int32_t> Starts;
    for (std::int32_t I = 0; I < GetNodeCount(); ++I)
      if (InfoOf(I).MapIndex == ARandom.Map && !NeighboursOf(I).empty()) Starts.push_back(I);
    if (Starts.empty())
      Refuse(ARandom.Line, fmt::format("there is no path on map {} to walk along", ARandom.Map));
    std::int32_t Here = OneOf(Starts);
    std::int32_t Last = -1;
    FWalker.BeginAt(PlaceOf(Here));
    while (FWalker.GetSeconds() < ARandom.Seconds) {
      std::vector<std::int32_t> Choice = NeighboursOf(Here);
      if (Choice.size() > 1) std::erase(Choice, Last);
      Last = std::exchange(Here, OneOf(Choice));
      FWalker.GoTo(PlaceOf(Here));
    }
    return FWalker.Finish(ARandom.Seconds);
  }

  const TWalk& FWalk;
  const TFencingProject& FProject;
  TRouteCalculator FGraph;  // a copy, whose routes it changes
  const TWalkFloors& FFloors;
  TRandomStream FStream;
  TWalker FWalker;
};

}  // namespace

TReceiverPath MakeWalkPath(const TWalk& AWalk,
                           const TFencingProject& AProject,
                           const TWalkFloors& AFloors,
                           std::uint64_t ASeed) {
  return TWalkPlanner(AWalk, AProject, AFloors, ASeed).Plan();
}

}  // namespace Wayfence
