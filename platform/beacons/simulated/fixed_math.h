// Functions that are the same on every processor, unlike the standard library's.
#pragma once

#include "platform/random.h"

namespace System::Beacon {

/// The logarithm to base 10 of a number above 0, to 15 digits.
double FixedLog10(double AValue);

/// The cosine of an angle in turns: 0.5 is half a circle. To 15 digits for a few turns.
double CosineOfTurns(double ATurns);

/// Two independent numbers of the standard normal distribution.
struct TNormalPair {
  double A = 0.0;
  double B = 0.0;
};
/// By the polar method (Marsaglia and Bray, 1964).
TNormalPair DrawNormals(TRandomStream& AStream);

/// A direction, uniform over the circle, as a vector of length 1.
TNormalPair DrawDirection(TRandomStream& AStream);

}  // namespace System::Beacon
