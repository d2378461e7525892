// The program's command line.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>

#include "apps/wayfence/commands.h"
#include "platform/errors.h"

namespace {

using namespace Wayfence;

constexpr const char* SourceHelp =
    "Where advertisements come from: btsnoop:FILE, pcap:FILE, log:FILE, just FILE (told by its "
    "first bytes), bluez or bluez:hci1 (a live radio)";

void AddSource(CLI::App& ACommand, TSourceArguments& AFrom, bool AHasSpeed = true) {
  ACommand.add_option("-s,--source", AFrom.Source, SourceHelp)->capture_default_str();
  if (AHasSpeed)
    ACommand
        .add_option("--speed",
                    AFrom.Speed,
                    "How fast a recording runs: 0 as fast as it can, 1 in real time")
        ->check(CLI::IsMember({"0", "1"}))
        ->capture_default_str();
}

void AddSeconds(CLI::App& ACommand, double& ASeconds) {
  ACommand
      .add_option(
          "--seconds", ASeconds, "End after so many seconds; 0: at the end, or when interrupted")
      ->check(CLI::Range(0.0, 1e9))
      ->capture_default_str();
}

void AddZones(CLI::App& AProgram, TZonesArguments& AArguments) {
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
}

void AddScan(CLI::App& AProgram, TScanArguments& AArguments) {
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
}

void AddRecord(CLI::App& AProgram, TRecordArguments& AArguments) {
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
  AddZones(Program, Zones);
  AddScan(Program, Scan);
  AddRecord(Program, Record);
  try {
    Program.parse(ACount, AValues);
  } catch (const CLI::ParseError& Error) {
    return Program.exit(Error) == 0 ? ExitDone : ExitUsage;
  }
  if (Program.got_subcommand("zones")) return Run([&] { return RunZones(Zones); });
  if (Program.got_subcommand("scan")) return Run([&] { return RunScan(Scan); });
  return Run([&] { return RunRecord(Record); });
}
