// Metres and map units.
#pragma once

#include "fencing/System.Beacon.Fencing.Types.h"

namespace Wayfence {

/// How many metres a unit of a map is. A map that does not tell its unit is in centimetres.
inline double MetresPerUnit(System::Beacon::Fencing::IDesignMap* AMap) {
  using namespace System::Beacon::Fencing;
  const auto* const Units = System::Supports<IDesignMapUnits>(AMap);
  switch (Units ? Units->GetMeasureUnits() : TMeasureUnits::Centimeters) {
    case TMeasureUnits::Meters:
      return 1.0;
    case TMeasureUnits::Inches:
      return 0.0254;
    case TMeasureUnits::Centimeters:
      break;
  }
  return 0.01;
}

}  // namespace Wayfence
