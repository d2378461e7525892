#include "fencing/System.Beacon.Fencing.Types.h"

namespace System::Beacon::Fencing {

const TClassInfo& TFencingOptions::ClassInfo() {
  using T = TFencingOptions;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Types.TFencingOptions",
      .Base = &TPersistent::ClassInfo(),
      .Properties = {
          Published<&T::GetZoneHighlightMetod, &T::SetZoneHighlightMetod>("ZoneHighlightMetod"),
          Published<&T::GetRawPositionColor, &T::SetRawPositionColor>("RawPositionColor"),
          Published<&T::GetPathPositionColor, &T::SetPathPositionColor>("PathPositionColor"),
          Published<&T::GetRawPositionRadius, &T::SetRawPositionRadius>("RawPositionRadius"),
          Published<&T::GetPathPositionRadius, &T::SetPathPositionRadius>("PathPositionRadius")}};
  return Info;
}

void TFencingOptions::AssignTo(TPersistent* ADest) {
  auto* const Dest = dynamic_cast<TFencingOptions*>(ADest);
  if (!Dest) RaiseAssignError(ADest);
  Dest->SetZoneHighlightMetod(FZoneHighlightMetod);
}

}  // namespace System::Beacon::Fencing
