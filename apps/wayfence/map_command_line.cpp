// The command line of wayfence map.
#include "apps/wayfence/map_command_line.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/option_values.h"
#include "apps/wayfence/source_command_line.h"

namespace Wayfence {
namespace {

void AddPictures(CLI::App& ACommand, const std::shared_ptr<TMapArguments>& AArguments) {
  ACommand.add_option("--frames",
                      AArguments->FrameDirectory,
                      "Draw the live map into this folder, as frame-SECONDS.png");
  ACommand.add_option("--every", AArguments->FrameInterval, "Seconds between two pictures")
      ->check(NumberFrom(0.0, 1e6))
      ->capture_default_str();
  ACommand.add_option_function<std::string>(
      "--size",
      [AArguments](const std::string& AText) {
        AArguments->FrameSize = ReadPixels("--size", AText);
      },
      "Their size, WIDTHxHEIGHT in pixels; by default 1280x800");
  ACommand
      .add_flag("--overwrite",
                AArguments->Overwrite,
                "Remove the frame-SECONDS.png that the folder holds already")
      ->needs("--frames");
  ACommand
      .add_flag("--window",
                AArguments->Window,
                "Show the live map in a window; a recording then runs in real time")
      ->excludes("--frames");
}

}  // namespace

void AddMap(CLI::App& AProgram, std::function<int()>& AChosen) {
  const auto Arguments = std::make_shared<TMapArguments>();
  CLI::App& Command = *AProgram.add_subcommand(
      "map", "Tells where the device is on the maps of a project: one JSON object per event");
  Command.final_callback(
      [&AChosen, Arguments] { AChosen = [Arguments] { return RunMap(*Arguments); }; });
  Command
      .add_option("PROJECT",
                  Arguments->Project,
                  "The project: a bundle (XML, .zip or a directory), or the XML of its scene alone")
      ->required();
  AddSource(Command, Arguments->From, {.Walks = true});
  Command.add_option("--seed", Arguments->From.Seed, "Fixes every random number of the run")
      ->check(SeedNumber())
      ->capture_default_str();
  Command.add_option("--component",
                     Arguments->ComponentFile,
                     "A component file with further properties: filter, beacon service, display");
  Command.add_option("--route",
                     Arguments->Route,
                     "Show the way to this point of interest, and tell of the arrival");
  AddPictures(Command, Arguments);
  Command.add_option("--run",
                     Arguments->RunFile,
                     "Write what happens for 'wayfence report'; an existing file is replaced");
  Command
      .add_option("--truth",
                  Arguments->TruthFile,
                  "The true positions, for the run file: columns t (seconds), x, y (metres), map")
      ->needs("--run");
  Command.footer(
      "Positions are in map units, times in seconds since the first advertisement.\n"
      "Example:\n"
      "  wayfence project new office.xml\n"
      "  wayfence map office.xml --source simulate:office.walk.json --route 'Coffee machine'\n"
      "  {\"time\": 3.500, \"event\": \"Position\", \"map\": 0, \"x\": 1.302, ...}\n"
      "  {\"time\": 3.500, \"event\": \"ZoneEnter\", \"zone\": \"Lobby\", \"map\": 0}");
}

}  // namespace Wayfence
