#include "platform/beacons/simulated/receiver_path.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/beacons/advertisement.h"

namespace System::Beacon {
namespace {

bool IsWithin(const TRadioPlace& APlace) {
  return std::abs(APlace.X) <= TReceiverPath::MaxMetres &&
         std::abs(APlace.Y) <= TReceiverPath::MaxMetres;
}

TRadioPlace Between(const TReceiverPath::TPoint& AFrom,
                    const TReceiverPath::TPoint& ATo,
                    TTicks ATime) {
  const double Part =
      static_cast<double>(ATime - AFrom.Time) / static_cast<double>(ATo.Time - AFrom.Time);
  return {AFrom.Place.X + (ATo.Place.X - AFrom.Place.X) * Part,
          AFrom.Place.Y + (ATo.Place.Y - AFrom.Place.Y) * Part,
          AFrom.Place.Level};
}

}  // namespace

TReceiverPath::TReceiverPath(std::vector<TPoint> APoints) : FPoints(std::move(APoints)) {
  if (FPoints.empty() || FPoints.size() > MaxPoints)
    throw EBeaconSourceError(
        fmt::format("the way of a simulated receiver has from 1 to {} points; shorten it or take "
                    "parts of it one by one",
                    MaxPoints));
  TTicks Last = 0;
  for (const TPoint& Point : FPoints) {
    if (Point.Time < Last || Point.Time > LongestTime)
      throw EBeaconSourceError(
          fmt::format("the way of a simulated receiver goes forward in time and takes at most {} "
                      "days; shorten it",
                      LongestTime / (86'400 * TicksPerSecond)));
    if (!IsWithin(Point.Place))
      throw EBeaconSourceError(fmt::format(
          "the way of a simulated receiver leads further than {} metres; bring it nearer to the "
          "origin",
          MaxMetres));
    Last = Point.Time;
  }
}

TRadioPlace TReceiverPath::GetPlace(TTicks ATime) const {
  const auto Next = std::upper_bound(
      FPoints.begin(), FPoints.end(), ATime, [](TTicks AWanted, const TPoint& APoint) {
        return AWanted < APoint.Time;
      });
  if (Next == FPoints.begin()) return FPoints.front().Place;
  const TPoint& Before = *(Next - 1);
  if (Next == FPoints.end() || Next->Place.Level != Before.Place.Level) return Before.Place;
  return Between(Before, *Next, ATime);
}

}  // namespace System::Beacon
