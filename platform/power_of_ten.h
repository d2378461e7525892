// Powers of ten that are the same on every processor.
#pragma once

namespace System {

/// 10 to the power of `AExponent`, within 4 units in the 16th place. By additions and
/// multiplications alone, since the standard library takes steps of its own on every processor.
double PowerOfTen(double AExponent);

}  // namespace System
