// What is wrong, or doubtful, in a project.
#pragma once

#include <string>
#include <vector>

#include "apps/wayfence/project_file.h"

namespace Wayfence {

struct TFault {
  enum class TKind { Error, Warning };

  TKind Kind;
  std::string Where;  ///< the names from the map down, or an entry of the bundle
  std::string Text;   ///< what is wrong, and what to do
};

/// Collects faults, in the order in which they are found.
class TFaults {
 public:
  using INode = System::Beacon::Fencing::Scene::INode;

  void AddError(const std::string& AWhere, std::string AText);
  void AddWarning(const std::string& AWhere, std::string AText);
  const std::vector<TFault>& Get() const { return FFaults; }
  bool HasErrors() const;

  /// "Ground floor > Beacons > Door".
  static std::string PlaceOf(INode& ANode);

 private:
  std::vector<TFault> FFaults;
};

// One function for each matter. All take time in proportion to the project.
void CheckMaps(const TProjectFile& AProject, TFaults& AFaults);
void CheckBeacons(const TProjectFile& AProject, TFaults& AFaults);
void CheckZones(const TProjectFile& AProject, TFaults& AFaults);
void CheckPaths(const TProjectFile& AProject, TFaults& AFaults);
void CheckLinks(const TProjectFile& AProject, TFaults& AFaults);
/// Names, descriptions, and the places of nodes.
void CheckNodes(const TProjectFile& AProject, TFaults& AFaults);

/// What is wrong with a file of the bundle as a picture; empty for a good one.
std::string FaultOfPicture(System::Beacon::Fencing::TBundle& ABundle, const std::string& APath);

}  // namespace Wayfence
