// How well the zone events of a component follow the true stays in a zone.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "apps/wayfence/truth.h"
#include "fencing/System.Beacon.Fencing.Types.h"

namespace Wayfence {

/// A time in a zone, true or reported, seconds.
struct TStay {
  double Begin = 0.0;
  double End = std::numeric_limits<double>::infinity();  ///< infinite: no end is known

  bool operator==(const TStay&) const = default;
};

/// The true stays in a zone of a map, by the rows of the truth: from the first to the last of those
/// that follow each other inside it. `AUnitsPerMetre` of the map.
std::vector<TStay> FindStays(const TTruth& ATruth,
                             const System::Beacon::Fencing::IDesignZone& AZone,
                             int AMap,
                             double AUnitsPerMetre);

/// Counts over zones.
struct TZoneFigures {
  struct TMissed {
    std::string Zone;
    TStay Stay;
  };

  int Stays = 0;    ///< true ones of more than five seconds
  int Late = 0;     ///< those that were reported later than the tolerance after their begin
  int Entries = 0;  ///< reported ones
  int False = 0;    ///< those without a true stay, however short, within the tolerance
  std::vector<TMissed> Missed;      ///< true stays of more than five seconds
  std::vector<double> EntryDelays;  ///< seconds; negative when it was reported too early
  std::vector<double> ExitDelays;   ///< the same of the last exit
};

/// Adds one zone; true and reported stays in the order of time.
///
/// A reported stay belongs to the true stay nearest to its entry, if the entry lies between the
/// begin and the end of that stay or no further from them than the tolerance. A true stay is missed
/// when no reported stay that lasts until its begin or longer belongs to it.
void JudgeZone(const std::string& AName,
               const std::vector<TStay>& ATrue,
               const std::vector<TStay>& AReported,
               double ATolerance,
               TZoneFigures& AFigures);

}  // namespace Wayfence
