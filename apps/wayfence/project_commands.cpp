#include "apps/wayfence/project_commands.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <memory>
#include <string>

#include "apps/wayfence/commands.h"

namespace Wayfence {
namespace {

using TCommand = std::function<int()>;
constexpr const char* ProjectHelp =
    "The project: a bundle (XML, .zip or a directory), or the XML of its scene alone";

/// A subcommand whose arguments live as long as it does.
template <class TArguments>
CLI::App& Add(CLI::App& AProgram,
              const std::string& AName,
              const std::string& AHelp,
              TCommand& AChosen,
              int (*ARun)(const TArguments&),
              const std::shared_ptr<TArguments>& AArguments) {
  CLI::App& Result = *AProgram.add_subcommand(AName, AHelp);
  Result.final_callback(
      [&AChosen, ARun, AArguments] { AChosen = [ARun, AArguments] { return ARun(*AArguments); }; });
  return Result;
}

void AddInspect(CLI::App& AProgram, TCommand& AChosen) {
  const auto Arguments = std::make_shared<TInspectArguments>();
  CLI::App& Command = Add(
      AProgram, "inspect", "Prints a project as one JSON object", AChosen, &RunInspect, Arguments);
  Command.add_option("PROJECT", Arguments->Project, ProjectHelp)->required();
  Command.footer(
      "Maps with their beacons and zones, points of interest, the graph of all paths, and the\n"
      "regions that are looked for. Positions are in map units.\n"
      "Example:\n"
      "  wayfence inspect office.xml");
}

void AddCheck(CLI::App& AProgram, TCommand& AChosen) {
  const auto Arguments = std::make_shared<TCheckArguments>();
  CLI::App& Command = Add(AProgram,
                          "check",
                          "Tells what is wrong or doubtful in a project",
                          AChosen,
                          &RunCheck,
                          Arguments);
  Command.add_option("PROJECT", Arguments->Project, ProjectHelp)->required();
  Command.footer(
      "One line for each fault: 'error' or 'warning', where it is, what is wrong and what to do.\n"
      "The exit code is 1 when there is an error, and 0 when there are only warnings.\n"
      "Example:\n"
      "  wayfence check office.xml");
}

/// "X,Y,MAP".
void ReadPlace(const std::string& AText, TRouteArguments& AArguments) {
  const char* const End = AText.data() + AText.size();
  const auto Skip = [End](const char* AAt) { return AAt != End && *AAt == ',' ? AAt + 1 : End; };
  const auto X = std::from_chars(AText.data(), End, AArguments.X);
  const auto Y = std::from_chars(Skip(X.ptr), End, AArguments.Y);
  const auto Map = std::from_chars(Skip(Y.ptr), End, AArguments.Map);
  if (X.ec != std::errc() || Y.ec != std::errc() || Map.ec != std::errc() || Map.ptr != End)
    throw CLI::ValidationError("--from", "'" + AText + "' is not X,Y,MAP, for example 1.5,6,0");
}

void AddRoute(CLI::App& AProgram, TCommand& AChosen) {
  const auto Arguments = std::make_shared<TRouteArguments>();
  CLI::App& Command = Add(AProgram,
                          "route",
                          "Finds the shortest route to a point of interest",
                          AChosen,
                          &RunRoute,
                          Arguments);
  Command.add_option("PROJECT", Arguments->Project, ProjectHelp)->required();
  Command
      .add_option_function<std::string>(
          "--from",
          [Arguments](const std::string& AText) { ReadPlace(AText, *Arguments); },
          "Where one is: X,Y,MAP, in map units; maps count from 0")
      ->required();
  Command.add_option("--to", Arguments->To, "The name of a path node, a beacon or a zone")
      ->required();
  Command.footer(
      "One JSON object for each node of the route; length is how far one has come, in map units,\n"
      "without the ways between maps.\n"
      "Example:\n"
      "  wayfence route office.xml --from 1,6,0 --to Bookshelf");
}

void AddBundle(CLI::App& AProgram, TCommand& AChosen) {
  CLI::App& Group = *AProgram.add_subcommand("bundle", "Packs and unpacks project bundles");
  Group.require_subcommand(1);
  const auto Arguments = std::make_shared<TBundleArguments>();
  CLI::App& Create = Add(Group,
                         "create",
                         "Packs a scene and its pictures into a bundle",
                         AChosen,
                         &RunBundleCreate,
                         Arguments);
  Create.add_option("BUNDLE", Arguments->Bundle, "The file to write: .zip, or else XML")
      ->required();
  Create.add_option("SCENE.xml", Arguments->SceneFile, "The text of the scene")->required();
  Create.add_option("FILE", Arguments->Files, "Pictures, kept under their file names");
  Create.footer("Example:\n  wayfence bundle create office.zip scene.xml ground.png upper.png");
  CLI::App& List = Add(
      Group, "list", "Lists the files of a bundle, as JSON", AChosen, &RunBundleList, Arguments);
  List.add_option("BUNDLE", Arguments->Bundle, ProjectHelp)->required();
  CLI::App& Extract = Add(
      Group, "extract", "Unpacks a bundle into a directory", AChosen, &RunBundleExtract, Arguments);
  Extract.add_option("BUNDLE", Arguments->Bundle, ProjectHelp)->required();
  Extract.add_option("DIRECTORY", Arguments->Directory, "Where to; made if it is missing")
      ->capture_default_str();
  Extract.add_flag("--overwrite", Arguments->Overwrite, "Replace files that are there");
  Extract.footer("The scene's text is the file 'project'.");
}

void AddProject(CLI::App& AProgram, TCommand& AChosen) {
  CLI::App& Group = *AProgram.add_subcommand("project", "Makes projects");
  Group.require_subcommand(1);
  const auto Arguments = std::make_shared<TProjectNewArguments>();
  CLI::App& Command = Add(Group,
                          "new",
                          "Writes a small example project to start from, and a walk beside it",
                          AChosen,
                          &RunProjectNew,
                          Arguments);
  Command.add_option("FILE", Arguments->File, "The file to write: .zip, or else XML")->required();
  Command.add_flag("--overwrite", Arguments->Overwrite, "Replace files that are there");
  Command.footer(
      "Example:\n"
      "  wayfence project new office.xml    also writes office.walk.json\n"
      "  wayfence check office.xml");
}

}  // namespace

void AddProjectCommands(CLI::App& AProgram, TCommand& ACommand) {
  AddInspect(AProgram, ACommand);
  AddCheck(AProgram, ACommand);
  AddRoute(AProgram, ACommand);
  AddBundle(AProgram, ACommand);
  AddProject(AProgram, ACommand);
}

}  // namespace Wayfence
