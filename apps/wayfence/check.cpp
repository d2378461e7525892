// wayfence check: what is wrong, or doubtful, in a project.
#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/messages.h"
#include "apps/wayfence/project_faults.h"
#include "map/node_names.h"

namespace Wayfence {

void TFaults::AddError(const std::string& AWhere, std::string AText) {
  FFaults.push_back({TFault::TKind::Error, AWhere, std::move(AText)});
}

void TFaults::AddWarning(const std::string& AWhere, std::string AText) {
  FFaults.push_back({TFault::TKind::Warning, AWhere, std::move(AText)});
}

bool TFaults::HasErrors() const {
  return std::any_of(FFaults.begin(), FFaults.end(), [](const TFault& AFault) {
    return AFault.Kind == TFault::TKind::Error;
  });
}

std::string TFaults::PlaceOf(INode& ANode) {
  std::string Result;
  const std::string Place = System::Beacon::Fencing::Scene::Beacons::PlaceInScene(ANode);
  constexpr std::string_view Parting = " > ";
  for (std::size_t From = 0, End = 0; End != std::string::npos; From = End + Parting.size()) {
    End = Place.find(Parting, From);
    Result += (From == 0 ? "" : std::string(Parting)) + Clipped(Place.substr(From, End - From));
  }
  return Result;
}

int RunCheck(const TCheckArguments& AArguments) {
  const TProjectFile Project = OpenProject(AArguments.Project);
  TFaults Faults;
  for (const auto Check : {CheckMaps, CheckBeacons, CheckZones, CheckPaths, CheckLinks, CheckNodes})
    Check(Project, Faults);
  for (const TFault& Fault : Faults.Get())
    fmt::print("{}: {}: {}\n",
               Fault.Kind == TFault::TKind::Error ? "error" : "warning",
               Printable(Fault.Where),
               Printable(Fault.Text));
  return Faults.HasErrors() ? ExitRefused : ExitDone;
}

}  // namespace Wayfence
