// The program's command line.
#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/map_command_line.h"
#include "apps/wayfence/project_commands.h"
#include "apps/wayfence/source_command_line.h"
#include "platform/errors.h"

namespace {

using namespace Wayfence;

void AddSeconds(CLI::App& ACommand, double& ASeconds) {
  ACommand
      .add_option(
          "--seconds", ASeconds, "End after so many seconds; 0: at the end, or when interrupted")
      ->check(CLI::Range(0.0, 1e9))
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
  AddSource(Command, AArguments.From, false);
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
  Command.add_option("--seed", AArguments.Seed, "Fixes every random number")->capture_default_str();
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

/// "WIDTHxHEIGHT", both positive numbers of metres.
void ReadSize(const std::string& AText, TEvaluateArguments& AArguments) {
  constexpr double MaxMetres = 1e5;
  const char* const End = AText.data() + AText.size();
  const auto Width = std::from_chars(AText.data(), End, AArguments.Width);
  const bool HasHeight = Width.ec == std::errc() && Width.ptr != End && *Width.ptr == 'x';
  const auto Height = std::from_chars(HasHeight ? Width.ptr + 1 : End, End, AArguments.Height);
  const auto IsSize = [](double AValue) { return AValue > 0.0 && AValue <= MaxMetres; };
  if (Height.ec != std::errc() || Height.ptr != End || !IsSize(AArguments.Width) ||
      !IsSize(AArguments.Height))
    throw CLI::ValidationError("--size", "'" + AText + "' is not WIDTHxHEIGHT in metres");
}

void AddEvaluateFiles(CLI::App& ACommand, TEvaluateArguments& AArguments) {
  ACommand
      .add_option("--beacons",
                  AArguments.BeaconFile,
                  "The beacons: columns x, y (metres), map, kind, uuid, major, minor, namespace, "
                  "instance, power")
      ->required();
  AddSource(ACommand, AArguments.From, false);
  ACommand.get_option("--source")->required();
  ACommand
      .add_option(
          "--truth", AArguments.TruthFile, "The true positions: columns t (seconds), x, y, map")
      ->required();
  ACommand
      .add_option_function<std::string>(
          "--size",
          [&AArguments](const std::string& AText) { ReadSize(AText, AArguments); },
          "The area, WIDTHxHEIGHT in metres, from (0, 0) on")
      ->required();
  ACommand.add_option("--options",
                      AArguments.OptionsFile,
                      "A JSON file with properties of the particle filter: {\"BeaconsToUse\": 4}");
}

void AddEvaluateSettings(CLI::App& ACommand, TEvaluateArguments& AArguments) {
  ACommand.add_option("--spc", AArguments.SPC, "The signal propagation constant")
      ->check(CLI::Range(0.0, 10.0))
      ->capture_default_str();
  ACommand
      .add_option("--death-time",
                  AArguments.DeathTime,
                  "Seconds without an advertisement after which a beacon is lost")
      ->check(CLI::Range(1, 86'400))
      ->capture_default_str();
  ACommand
      .add_option(
          "--interval",
          AArguments.Interval,
          "Milliseconds between two steps of the filter; by default its UpdateInterval, 500")
      ->check(CLI::Range(1, 3'600'000));
  ACommand.add_option("--seed", AArguments.From.Seed, "Fixes every random number of the run")
      ->capture_default_str();
  ACommand
      .add_option(
          "--skip", AArguments.Skip, "Leave out so many seconds after the true position has jumped")
      ->check(CLI::Range(0.0, 1e9))
      ->capture_default_str();
  ACommand.add_flag("--json", AArguments.Json, "Print one JSON object instead of a table");
}

CLI::App* AddEvaluate(CLI::App& AProgram, TEvaluateArguments& AArguments) {
  CLI::App& Command = *AProgram.add_subcommand(
      "evaluate", "Tells how far estimated positions are off, on a recording with known positions");
  AddEvaluateFiles(Command, AArguments);
  AddEvaluateSettings(Command, AArguments);
  Command.footer(
      "Errors are in metres. An estimate counts when a true position is known within one second "
      "of\n"
      "it. The true position has jumped when it is elsewhere after a pause, or faster than 3 m/s.\n"
      "Example:\n"
      "  wayfence evaluate --beacons beacons.csv --source walk.log --truth truth.csv "
      "--size 20.66x17.64 --spc 0.752\n"
      "  wayfence evaluate --beacons beacons.csv --source walk.log --truth truth.csv "
      "--size 20.66x17.64 --json");
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
  } catch (const std::exception& Error) {
    std::fprintf(stderr, "wayfence: %s\n", Error.what());
    return ExitRefused;
  }
}

}  // namespace

int main(int ACount, char** AValues) {
  CLI::App Program("Indoor positioning and geofencing with Bluetooth LE beacons.", "wayfence");
  Program.set_version_flag("--version", WAYFENCE_VERSION);
  Program.require_subcommand(1);
  Program.footer("'wayfence COMMAND --help' shows the options and an example of a command.");
  TZonesArguments Zones;
  TScanArguments Scan;
  TRecordArguments Record;
  TSimulateArguments Simulate;
  TEvaluateArguments Evaluate;
  TReportArguments Report;
  std::function<int()> Command;
  AddZones(Program, Zones)->final_callback([&] { Command = [&] { return RunZones(Zones); }; });
  AddScan(Program, Scan)->final_callback([&] { Command = [&] { return RunScan(Scan); }; });
  AddRecord(Program, Record)->final_callback([&] { Command = [&] { return RunRecord(Record); }; });
  AddSimulate(Program, Simulate)->final_callback([&] {
    Command = [&] { return RunSimulate(Simulate); };
  });
  AddEvaluate(Program, Evaluate)->final_callback([&] {
    Command = [&] { return RunEvaluate(Evaluate); };
  });
  AddMap(Program, Command);
  AddReport(Program, Report)->final_callback([&] { Command = [&] { return RunReport(Report); }; });
  AddProjectCommands(Program, Command);
  try {
    Program.parse(ACount, AValues);
  } catch (const CLI::ParseError& Error) {
    return Program.exit(Error) == 0 ? ExitDone : ExitUsage;
  }
  return Run(Command);
}
