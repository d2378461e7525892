#include "apps/wayfence/source_command_line.h"

#include <CLI/CLI.hpp>

namespace Wayfence {
namespace {

constexpr const char* SourceHelp =
    "Where advertisements come from: btsnoop:FILE, pcap:FILE, log:FILE, just FILE (told by its "
    "first bytes), bluez or bluez:hci1 (a live radio), simulate:WALK.json (a walk through the "
    "project that the command is given)";

}  // namespace

void AddSource(CLI::App& ACommand, TSourceArguments& AFrom, bool AHasSpeed) {
  ACommand.add_option("-s,--source", AFrom.Source, SourceHelp)->capture_default_str();
  if (AHasSpeed)
    ACommand
        .add_option("--speed",
                    AFrom.Speed,
                    "How fast a recording runs: 0 as fast as it can, 1 in real time")
        ->check(CLI::IsMember({"0", "1"}))
        ->capture_default_str();
}

}  // namespace Wayfence
