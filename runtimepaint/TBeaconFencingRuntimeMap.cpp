#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.h"

namespace System::Beacon::Fencing {

constinit TBeaconFencingRuntimeMapClass TBeaconFencingRuntimeMap::FRuntimeMapClass;

}  // namespace System::Beacon::Fencing
