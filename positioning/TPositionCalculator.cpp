#include "positioning/System.Beacon.Fencing.PositionCalculator.h"

namespace System::Beacon::Fencing {

constinit TPositionCalculatorClass TPositionCalculator::FPositionCalculatorClass =
    ClassOf<TTrilateration>();

}  // namespace System::Beacon::Fencing
