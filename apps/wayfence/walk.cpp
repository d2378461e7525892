#include "apps/wayfence/walk.h"

#include <fmt/format.h>

#include <limits>

#include "apps/wayfence/json_members.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using Fencing::TJsonNode;

namespace {

constexpr std::size_t MaxFileSize = 16U << 20;  // bytes
constexpr int MaxMap = std::numeric_limits<int>::max();
constexpr double MaxCoordinate = 1e8;  // map units
constexpr double LongestWalk = static_cast<double>(TReceiverPath::LongestTime) / TicksPerSecond;

class TWalkReader {
 public:
  explicit TWalkReader(const std::string& AFileName) { FWalk.FileName = AFileName; }

  TWalk Read(const TJsonNode& ARoot) {
    TJsonMembers Members(ARoot, "a walk", FWalk.FileName);
    Members.Read("speed", FWalk.Speed, 0.01, 100.0);
    Members.Read("interval", FWalk.Interval, 0.01, 3600.0);
    Members.Read("stairs", FWalk.Stairs, 0.0, 3600.0);
    for (const TJsonNode& Stop : Members.GetArray("points")) ReadStop(Stop);
    if (const TJsonNode* const Random = Members.Find("random")) ReadRandom(*Random);
    if (const TJsonNode* const Radio = Members.Find("radio")) ReadRadio(*Radio);
    Members.RefuseOthers();
    if (FWalk.Stops.empty() == !FWalk.Random)
      Members.Refuse("a walk has either points, one at least, or random");
    return std::move(FWalk);
  }

 private:
  void ReadStop(const TJsonNode& ANode) {
    TJsonMembers Members(ANode, "a point", FWalk.FileName);
    TWalkStop Stop;
    Stop.Line = ANode.Line;
    Members.Read("wait", Stop.Wait, 0.0, LongestWalk);
    Members.Read("node", Stop.Node);
    Members.Read("map", Stop.Map, 0, MaxMap);
    Members.Read("x", Stop.X, -MaxCoordinate, MaxCoordinate);
    Members.Read("y", Stop.Y, -MaxCoordinate, MaxCoordinate);
    Members.RefuseOthers();
    const bool IsNode = !Stop.Node.empty();
    for (const char* const Name : {"map", "x", "y"})
      if (IsNode == (Members.Find(Name) != nullptr))
        Members.Refuse("a point has either node, or map, x and y");
    FWalk.Stops.push_back(std::move(Stop));
  }

  void ReadRandom(const TJsonNode& ANode) {
    TJsonMembers Members(ANode, "random", FWalk.FileName);
    TRandomWalk& Random = FWalk.Random.emplace();
    Random.Line = ANode.Line;
    Members.Read("map", Random.Map, 0, MaxMap);
    Members.Read("seconds", Random.Seconds, 0.0, LongestWalk);
    Members.RefuseOthers();
    Members.Require("seconds");
  }

  void ReadRadio(const TJsonNode& ANode) {
    TJsonMembers Members(ANode, "radio", FWalk.FileName);
    for (const TRadioNumber& Number : RadioNumbers)
      Members.Read(Number.Name, FWalk.Radio.*Number.Member, Number.From, Number.To);
    Members.Read("power", FWalk.Power, TTransmitter::LeastPower, TTransmitter::MostPower);
    Members.Read("interval",
                 FWalk.BeaconInterval,
                 TTransmitter::ShortestInterval,
                 TTransmitter::LongestInterval);
    for (const TJsonNode& Wall : Members.GetArray("walls")) ReadWall(Wall);
    Members.RefuseOthers();
  }

  void ReadWall(const TJsonNode& ANode) {
    TJsonMembers Members(ANode, "a wall", FWalk.FileName);
    TWalkWall Wall;
    Wall.Line = ANode.Line;
    Members.Read("map", Wall.Map, 0, MaxMap);
    Members.Read("loss", Wall.Loss, 0.0, TRadioWall::MaxLoss);
    ReadEnd(Members, "from", Wall.FromX, Wall.FromY);
    ReadEnd(Members, "to", Wall.ToX, Wall.ToY);
    Members.RefuseOthers();
    Members.Require("map");
    FWalk.Walls.push_back(Wall);
  }

  /// "from": [x, y]
  static void ReadEnd(TJsonMembers& AMembers, std::string_view AName, double& AX, double& AY) {
    const std::vector<TJsonNode>& Place = AMembers.GetArray(AName);
    const auto IsCoordinate = [](const TJsonNode& ANode) {
      return (ANode.Kind == TJsonNode::TKind::Integer || ANode.Kind == TJsonNode::TKind::Number) &&
             ANode.Number >= -MaxCoordinate && ANode.Number <= MaxCoordinate;
    };
    if (Place.size() != 2 || !IsCoordinate(Place[0]) || !IsCoordinate(Place[1]))
      AMembers.Refuse(fmt::format("{} of a wall is [x, y] in map units", AName));
    AX = Place[0].Number;
    AY = Place[1].Number;
  }

  TWalk FWalk;
};

}  // namespace

TWalk ParseWalk(std::string_view AText, const std::string& AFileName) {
  return TWalkReader(AFileName).Read(Fencing::ParseJson(AText, AFileName));
}

TWalk ReadWalk(const std::string& AFileName) {
  return ParseWalk(ReadWholeFile(AFileName, MaxFileSize), AFileName);
}

}  // namespace Wayfence
