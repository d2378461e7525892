#include "apps/wayfence/project_commands.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <memory>
#include <string>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/option_values.h"

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
  if (X.ec != std::errc() || Y.ec != std::errc() || Map.ec != std::errc() || Map.ptr != End ||
      !std::isfinite(AArguments.X) || !std::isfinite(AArguments.Y))
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

void AddRender(CLI::App& AProgram, TCommand& AChosen) {
  const auto Arguments = std::make_shared<TRenderArguments>();
  CLI::App& Command =
      Add(AProgram, "render", "Draws a floor of a project", AChosen, &RunRender, Arguments);
  Command.add_option("PROJECT", Arguments->Project, ProjectHelp)->required();
  Command
      .add_option("-o,--output",
                  Arguments->File,
                  "The picture to write, a PNG file; an existing one is replaced")
      ->required();
  Command.add_option("--map", Arguments->Map, "Which map, from 0 on")
      ->check(WholeNumberFrom(0, INT32_MAX))
      ->capture_default_str();
  Command.add_option("--width", Arguments->Width, "Pixels; the height follows from the map")
      ->check(WholeNumberFrom(1, 32767))
      ->capture_default_str();
  Command.add_option("--options", Arguments->Options, "What to show beside the floor itself")
      ->check(CLI::IsMember({"ShowBeacons", "ShowBeaconSignal", "ShowZones", "ShowPaths", "None"}))
      ->capture_default_str();
  Command.add_option("--rotation", Arguments->Rotation, "Degrees that the view is turned by")
      ->check(WholeNumberFrom(-180, 180))
      ->capture_default_str();
  Command
      .add_option("--route",
                  Arguments->Route,
                  "Shows the shortest route between two points of interest: FROM TO")
      ->expected(2);
  Command.footer(
      "Examples:\n"
      "  wayfence render office.xml -o ground.png --route Entrance Bookshelf\n"
      "  wayfence render office.xml -o upper.png --map 1 --width 2000 --options ShowZones");
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
  Create
      .add_option("BUNDLE",
                  Arguments->Bundle,
                  "The file to write: .zip, or else XML; a new folder if it ends with /")
      ->required();
  Create.add_option("SCENE.xml", Arguments->SceneFile, "The text of the scene, no bundle")
      ->required();
  Create.add_option("FILE", Arguments->Files, "Pictures, kept under their file names");
  Create.add_flag("--overwrite", Arguments->Overwrite, "Replace a bundle that is there");
  Create.footer(
      "Examples:\n"
      "  wayfence bundle create office.zip scene.xml ground.png upper.png\n"
      "  wayfence bundle create office/ scene.xml ground.png upper.png");
  CLI::App& List = Add(
      Group, "list", "Lists the files of a bundle, as JSON", AChosen, &RunBundleList, Arguments);
  List.add_option("BUNDLE", Arguments->Bundle, ProjectHelp)->required();
  CLI::App& Extract = Add(
      Group, "extract", "Unpacks a bundle into a directory", AChosen, &RunBundleExtract, Arguments);
  Extract.add_option("BUNDLE", Arguments->Bundle, ProjectHelp)->required();
  Extract.add_option("DIRECTORY", Arguments->Directory, "Where to; made if it is missing")
      ->capture_default_str();
  Extract.add_flag("--overwrite", Arguments->Overwrite, "Replace files that are there");
  Extract.footer(
      "The scene's text is the file 'project'. What is unpacked is no bundle itself; 'wayfence\n"
      "bundle create' makes one of it again, also one that is a folder.\n"
      "Example:\n"
      "  wayfence bundle extract office.zip office\n"
      "  wayfence bundle create again.zip office/project office/*.png");
}

constexpr const char* ImportFooter =
    "Polygons become zones, lines paths that join where they meet, points with a uuid or a\n"
    "namespace beacons; other points name the path node that they lie on. Each file is a floor, "
    "or\n"
    "several when its features have different values of level.\n"
    "\n"
    "Properties of a feature:\n"
    "  name (or else the feature's id), level or floor (\"0\", \"0;1\"), link (the name of a path\n"
    "  node on another floor); of a beacon also kind (iBeacon, AltBeacon, Eddystone or\n"
    "  iBeaconAltBeacon), uuid, major, minor, namespace, instance, power (dBm at 1 m);\n"
    "  type \"floor\" or indoor \"level\": the outline of a floor, which names it\n"
    "Columns of a list of beacons:\n"
    "  name,x,y,map,kind,uuid,major,minor,namespace,instance,power; x, y in metres, maps count\n"
    "  from 0\n"
    "Everything else goes to the description list of the thing.\n"
    "\n"
    "Examples:\n"
    "  wayfence project import mall.xml --geojson f1.geojson f2.geojson --beacons beacons.csv\n"
    "  wayfence project import hall.xml --beacons beacons.csv --size 20x12";

void AddImport(CLI::App& AGroup, TCommand& AChosen) {
  const auto Arguments = std::make_shared<TProjectImportArguments>();
  CLI::App& Command = Add(AGroup,
                          "import",
                          "Makes a project from floor plans (GeoJSON) and a list of beacons (CSV)",
                          AChosen,
                          &RunProjectImport,
                          Arguments);
  Command.add_option("FILE", Arguments->File, "The file to write: .zip, or else XML")->required();
  CLI::Option& Plans = *Command.add_option(
      "--geojson", Arguments->GeoJsonFiles, "Floor plans, the lowest floor first");
  CLI::Option& Beacons =
      *Command.add_option("--beacons", Arguments->BeaconFile, "A list of beacons");
  Command.add_option("--map", Arguments->MapNames, "Names of the maps, in their order");
  Command.add_option("--picture",
                     Arguments->Pictures,
                     "Pictures of the maps, in their order: PNG, JPEG or WebP files that show the\n"
                     "whole map, or '-' for none");
  Command
      .add_option("--coordinates",
                  Arguments->Coordinates,
                  "Of the floor plans: degrees (longitude, latitude), metres, or guess: degrees\n"
                  "where all lie within a tenth of a degree")
      ->check(CLI::IsMember({"guess", "degrees", "metres"}))
      ->capture_default_str();
  Command.add_option_function<std::string>(
      "--origin",
      [Arguments](const std::string& AText) {
        Arguments->Origin = ReadPair("--origin", AText, ',', "LON,LAT or X,Y");
      },
      "What becomes the upper left corner of every map, LON,LAT or X,Y in metres; where\n"
      "each floor begins if it is not given");
  Command.add_option_function<std::string>(
      "--size",
      [Arguments](const std::string& AText) { Arguments->Size = ReadMetres("--size", AText); },
      "The size of every map, WIDTHxHEIGHT in metres; plans in metres then begin at 0,0");
  Command.add_flag("--y-up", Arguments->IsYUp, "Y of what is in metres runs upwards");
  Command.add_flag("--overwrite", Arguments->Overwrite, "Replace the file if it is there");
  Command.footer(ImportFooter);
  Command.parse_complete_callback([&Plans, &Beacons] {
    if (Plans.empty() && Beacons.empty()) throw CLI::RequiredError("--geojson or --beacons");
  });
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
  AddImport(Group, AChosen);
}

}  // namespace

void AddProjectCommands(CLI::App& AProgram, TCommand& ACommand) {
  AddInspect(AProgram, ACommand);
  AddCheck(AProgram, ACommand);
  AddRoute(AProgram, ACommand);
  AddRender(AProgram, ACommand);
  AddBundle(AProgram, ACommand);
  AddProject(AProgram, ACommand);
}

}  // namespace Wayfence
