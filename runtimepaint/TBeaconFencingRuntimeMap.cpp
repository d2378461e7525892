#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.Painter.h"

namespace System::Beacon::Fencing {

constinit TBeaconFencingRuntimeMapClass TBeaconFencingRuntimeMap::FRuntimeMapClass =
    RuntimeMapClassOf<TBeaconFencingMapPainter>();

}  // namespace System::Beacon::Fencing
