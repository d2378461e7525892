// The command line of wayfence evaluate.
#include "apps/wayfence/evaluate_command_line.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <tuple>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/option_values.h"
#include "apps/wayfence/source_command_line.h"

namespace Wayfence {
namespace {

void AddCommon(CLI::App& ACommand, TEvaluateArguments& AArguments) {
  AddSource(ACommand, AArguments.From, {.Radio = false, .Walks = true, .Speed = false});
  ACommand
      .add_option("--truth",
                  AArguments.TruthFile,
                  "The true positions: columns t (seconds), x, y (metres), map")
      ->required();
  ACommand.add_option("--seed", AArguments.From.Seed, "Fixes every random number of the run")
      ->check(SeedNumber())
      ->capture_default_str();
  ACommand
      .add_option("--skip",
                  AArguments.Skip,
                  "Leave out the errors of so many seconds after the true position has jumped")
      ->check(NumberFrom(0.0, 1e9))
      ->capture_default_str();
  ACommand.add_flag("--json", AArguments.Json, "Print one JSON object instead of a table");
}

void AddOfProject(CLI::App& ACommand, TEvaluateArguments& AArguments) {
  CLI::Option* const Project =
      ACommand.add_option("PROJECT",
                          AArguments.Project,
                          "The project to evaluate: a bundle, or the XML of its scene alone");
  const std::string Group = "With a project";
  ACommand
      .add_option("--component",
                  AArguments.ComponentFile,
                  "A component file with further properties: filter, beacon service")
      ->needs(Project)
      ->group(Group);
  ACommand.add_option("--route", AArguments.Route, "Tell of arrivals at this point of interest")
      ->needs(Project)
      ->group(Group);
  ACommand
      .add_option(
          "--picture",
          AArguments.PictureFile,
          "Draw the true way, the estimates and their errors into this PNG file; an existing one "
          "is replaced")
      ->needs(Project)
      ->group(Group);
  ACommand
      .add_option("--tolerance",
                  AArguments.Tolerance,
                  "Seconds by which an entry into a zone may lie beside a true stay")
      ->check(NumberFrom(0.0, 1e6))
      ->capture_default_str()
      ->needs(Project)
      ->group(Group);
}

void AddSettings(CLI::App& ACommand, TEvaluateArguments& AArguments, CLI::Option* ABeacons) {
  const auto Belongs = [&](CLI::Option* AOption) {
    return AOption->needs(ABeacons)->group("With a list of beacons");
  };
  Belongs(ACommand.add_option(
      "--options",
      AArguments.OptionsFile,
      "A JSON file with properties of the particle filter: {\"BeaconsToUse\": 4}"));
  Belongs(ACommand.add_option("--spc", AArguments.SPC, "The signal propagation constant"))
      ->check(NumberFrom(0.0, 10.0))
      ->capture_default_str();
  Belongs(ACommand.add_option("--death-time",
                              AArguments.DeathTime,
                              "Seconds without an advertisement after which a beacon is lost"))
      ->check(WholeNumberFrom(1, 86'400))
      ->capture_default_str();
  Belongs(ACommand.add_option(
              "--interval",
              AArguments.Interval,
              "Milliseconds between two steps of the filter; by default its UpdateInterval, 500"))
      ->check(WholeNumberFrom(1, 3'600'000));
}

void AddOfBeacons(CLI::App& ACommand, TEvaluateArguments& AArguments) {
  CLI::Option* const Beacons = ACommand.add_option(
      "--beacons",
      AArguments.BeaconFile,
      "Evaluate the estimator alone, on these beacons: columns x, y (metres), map, kind, uuid, "
      "major, minor, namespace, instance, power");
  CLI::Option* const Size = ACommand.add_option_function<std::string>(
      "--size",
      [&AArguments](const std::string& AText) {
        std::tie(AArguments.Width, AArguments.Height) = ReadMetres("--size", AText);
      },
      "The area, WIDTHxHEIGHT in metres, from (0, 0) on");
  Beacons->needs(Size)->excludes(ACommand.get_option("PROJECT"))->group("With a list of beacons");
  Size->needs(Beacons)->group("With a list of beacons");
  AddSettings(ACommand, AArguments, Beacons);
}

}  // namespace

void AddEvaluate(CLI::App& AProgram, std::function<int()>& AChosen) {
  const auto Arguments = std::make_shared<TEvaluateArguments>();
  CLI::App& Command = *AProgram.add_subcommand(
      "evaluate", "Tells how far estimated positions are off, on a recording with known positions");
  Command.final_callback([&AChosen, Arguments] {
    if (Arguments->Project.empty() && Arguments->BeaconFile.empty())
      throw CLI::RequiredError("PROJECT or --beacons");
    AChosen = [Arguments] { return RunEvaluate(*Arguments); };
  });
  AddCommon(Command, *Arguments);
  AddOfProject(Command, *Arguments);
  AddOfBeacons(Command, *Arguments);
  Command.footer(
      "Errors are in metres. An estimate counts when a true position is known within one second "
      "of\n"
      "it. The true position has jumped when it is elsewhere after a pause, or faster than 3 m/s.\n"
      "Example:\n"
      "  wayfence evaluate office.xml --source walk.log --truth walk.truth.csv --picture walk.png\n"
      "  wayfence evaluate --beacons beacons.csv --source walk.log --truth truth.csv "
      "--size 20.66x17.64 --json");
}

}  // namespace Wayfence
