// Projects and runs for the tests of run files and reports.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "apps/wayfence/project_file.h"
#include "apps/wayfence/run_file.h"
#include "map/project_builder.h"
#include "runtimepaint/project_extraction.h"

namespace Wayfence {

/// Writes a run on a project that was stored and read again, as every project of the program is.
inline void WriteRun(const std::string& AFileName,
                     const System::Beacon::Fencing::Scene::Beacons::TProjectBuilder& AProject,
                     const std::vector<std::string>& ALines) {
  const std::string ProjectFile = AFileName + ".xml";
  AProject.Save(ProjectFile);
  const TProjectFile Stored = OpenProject(ProjectFile);
  std::filesystem::remove(ProjectFile);
  const auto Project = System::Beacon::Fencing::ExtractProject(*Stored.Scene);
  TRunWriter Writer(AFileName, *Stored.Scene, Project, "a test");
  for (const std::string& Line : ALines) Writer.Line(Line);
  Writer.Close();
}

}  // namespace Wayfence
