// The program's command line.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/evaluate_command_line.h"
#include "apps/wayfence/map_command_line.h"
#include "apps/wayfence/messages.h"
#include "apps/wayfence/option_values.h"
#include "apps/wayfence/project_commands.h"
#include "apps/wayfence/source_command_line.h"
#include "platform/errors.h"
#include "platform/threads.h"

namespace {

using namespace Wayfence;

void AddSeconds(CLI::App& ACommand, double& ASeconds) {
  ACommand
      .add_option(
          "--seconds", ASeconds, "End after so many seconds; 0: at the end, or when interrupted")
      ->check(NumberFrom(0.0, 1e9))
      ->capture_default_str();
}

CLI::App* AddZones(CLI::App& AProgram, TZonesArguments& AArguments) {
  CLI::App& Command = *AProgram.add_subcommand(
      "zones", "Tells which zone the device is in: one JSON object per event");
  Command.add_option("FILE.json", AArguments.ComponentFile, "The component file with the zones")
      ->required();
  AddSource(Command, AArguments.From);
  Command.add_flag(
      "--regions", AArguments.OnlyRegions, "Print the regions that would be monitored, and stop");
  Command.footer(
      "Example:\n"
      "  wayfence zones office.json --source walk.log\n"
      "  {\"time\": 0.000, \"event\": \"Started\", \"regions\": [...]}\n"
      "  {\"time\": 1.240, \"event\": \"ZoneEnter\", \"zone\": \"Lobby\", \"address\": ...}");
  return &Command;
}

CLI::App* AddScan(CLI::App& AProgram, TScanArguments& AArguments) {
  CLI::App& Command =
      *AProgram.add_subcommand("scan", "Lists every beacon frame that is heard, in any region");
  AddSource(Command, AArguments.From);
  AddSeconds(Command, AArguments.Seconds);
  Command.footer(
      "Prints one JSON object per frame; on a terminal, a table of the beacons.\n"
      "Distances in metres, voltage in volts, temperature in degrees Celsius, uptime in seconds.\n"
      "Example:\n"
      "  wayfence scan --source bluez --seconds 10\n"
      "  wayfence scan --source capture.btsnoop | head");
  return &Command;
}

CLI::App* AddRecord(CLI::App& AProgram, TRecordArguments& AArguments) {
  CLI::App& Command = *AProgram.add_subcommand(
      "record", "Writes what a source delivers to a file that every command can read");
  Command.add_option("FILE", AArguments.File, "The file to write; an existing one is replaced")
      ->required();
  AddSource(Command, AArguments.From, {.Speed = false});
  Command.add_option("--format", AArguments.Format, "The format of the file")
      ->check(CLI::IsMember({"log", "btsnoop", "pcap"}))
      ->capture_default_str();
  AddSeconds(Command, AArguments.Seconds);
  Command.footer(
      "Example:\n"
      "  wayfence record walk.log --source bluez --seconds 60\n"
      "  wayfence record walk.btsnoop --format btsnoop --source walk.log");
  return &Command;
}

CLI::App* AddSimulate(CLI::App& AProgram, TSimulateArguments& AArguments) {
  CLI::App& Command = *AProgram.add_subcommand(
      "simulate", "Writes what a radio would record on a walk, and where the walk really was");
  Command
      .add_option("PROJECT",
                  AArguments.Project,
                  "The project whose beacons are heard: a bundle or the XML of its scene")
      ->required();
  Command.add_option("WALK.json", AArguments.Walk, "Where the walk leads, and the radio")
      ->required();
  Command.add_option("-o,--output", AArguments.File, "The recording to write")->required();
  Command.add_option("--truth",
                     AArguments.TruthFile,
                     "The true positions to write: columns t (seconds), x, y (metres), map; by "
                     "default beside the recording, as NAME.truth.csv");
  Command.add_option("--format", AArguments.Format, "The format of the recording")
      ->check(CLI::IsMember({"log", "btsnoop", "pcap"}))
      ->capture_default_str();
  Command.add_option("--seed", AArguments.Seed, "Fixes every random number")
      ->check(SeedNumber())
      ->capture_default_str();
  Command.add_flag("--overwrite", AArguments.Overwrite, "Replace files that are there");
  Command.footer(
      "A walk is {\"speed\": 1.2, \"interval\": 0.1, \"stairs\": 8, \"points\": [\n"
      "  {\"map\": 0, \"x\": 1, \"y\": 6, \"wait\": 3}, {\"node\": \"Coffee machine\"}]}\n"
      "with metres a second, seconds and map units; a node is reached along the paths. Instead of\n"
      "points: \"random\": {\"map\": 0, \"seconds\": 600}. \"radio\": {...} sets up the radio.\n"
      "True positions are map coordinates in metres. Times begin with the walk.\n"
      "Example:\n"
      "  wayfence project new office.xml\n"
      "  wayfence simulate office.xml office.walk.json -o walk.log    also writes walk.truth.csv");
  return &Command;
}

CLI::App* AddReport(CLI::App& AProgram, TReportArguments& AArguments) {
  CLI::App& Command = *AProgram.add_subcommand(
      "report", "Makes a page of runs, for any browser and without a network");
  Command.add_option("RUN", AArguments.RunFiles, "Run files, as 'wayfence map --run' writes them")
      ->required();
  Command.add_option("-o,--output", AArguments.File, "The page to write: FILE.html")->required();
  Command.add_flag("--overwrite", AArguments.Overwrite, "Replace the page if it is there");
  Command.footer(
      "The page begins where its address says, all of it or parts: page.html#t=12.5&run=0&floor=1\n"
      "Example:\n"
      "  wayfence report walk.run -o walk.html\n"
      "  wayfence report monday.run tuesday.run -o both.html --overwrite");
  return &Command;
}

int Run(const std::function<int()>& ACommand) {
  try {
    const int Result = ACommand();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
      throw System::EFileError("standard output cannot be written to; the output is incomplete");
    return Result;
  } catch (const std::filesystem::filesystem_error& Error) {
    Say(Error.path1().empty() ? Error.what()
                              : Error.path1().string() + ": " + Error.code().message());
  } catch (const std::exception& Error) {
    Say(Error.what());
  }
  return ExitRefused;
}

/// What to say of a word that stands where a command should; empty where none does.
std::string FaultOfCommand(const CLI::App& AProgram) {
  const CLI::App* Group = &AProgram;
  while (!Group->get_subcommands().empty()) Group = Group->get_subcommands().front();
  const std::vector<std::string> Words = AProgram.remaining(true);
  const auto Commands = Group->get_subcommands([](const CLI::App*) { return true; });
  if (Commands.empty() || Words.empty() || Words.front().starts_with('-')) return {};
  std::string Names;
  for (const CLI::App* Command : Commands)
    Names += (Names.empty() ? "" : ", ") + Command->get_name();
  const std::string Path = Group == &AProgram ? "" : Group->get_name() + " ";
  return fmt::format("there is no command '{}{}'; there are {}", Path, Words.front(), Names);
}

}  // namespace

int main(int ACount, char** AValues) {
  System::SetApplicationExceptionHandler(
      [](System::TObject*, const std::exception& AError) { Say(AError.what()); });
  CLI::App Program("Indoor positioning and geofencing with Bluetooth LE beacons.", "wayfence");
  Program.set_version_flag("--version", WAYFENCE_VERSION);
  Program.require_subcommand(1);
  Program.footer("'wayfence COMMAND --help' shows the options and an example of a command.");
  TZonesArguments Zones;
  TScanArguments Scan;
  TRecordArguments Record;
  TSimulateArguments Simulate;
  TReportArguments Report;
  std::function<int()> Command;
  AddZones(Program, Zones)->final_callback([&] { Command = [&] { return RunZones(Zones); }; });
  AddScan(Program, Scan)->final_callback([&] { Command = [&] { return RunScan(Scan); }; });
  AddRecord(Program, Record)->final_callback([&] { Command = [&] { return RunRecord(Record); }; });
  AddSimulate(Program, Simulate)->final_callback([&] {
    Command = [&] { return RunSimulate(Simulate); };
  });
  AddEvaluate(Program, Command);
  AddMap(Program, Command);
  AddReport(Program, Report)->final_callback([&] { Command = [&] { return RunReport(Report); }; });
  AddProjectCommands(Program, Command);
  RefuseEmptyTexts(Program);
  try {
    Program.parse(ACount, AValues);
  } catch (const CLI::ParseError& Error) {
    if (const std::string Fault = FaultOfCommand(Program); !Fault.empty()) {
      Say(Fault);
      return ExitUsage;
    }
    return Program.exit(Error) == 0 ? ExitDone : ExitUsage;
  }
  return Run(Command);
}
