#include "apps/wayfence/source_command_line.h"

#include <CLI/CLI.hpp>

namespace Wayfence {
namespace {

std::string HelpOf(const TSourceKinds& AKinds) {
  std::string Result =
      "Where advertisements come from: btsnoop:FILE, pcap:FILE, log:FILE, just FILE (told by its "
      "first bytes)";
  if (AKinds.Radio) Result += ", bluez or bluez:hci1 (a live radio)";
  if (AKinds.Walks) Result += ", simulate:WALK.json (a walk through the project)";
  return Result;
}

}  // namespace

void AddSource(CLI::App& ACommand, TSourceArguments& AFrom, const TSourceKinds& AKinds) {
  CLI::Option* const Source = ACommand.add_option("-s,--source", AFrom.Source, HelpOf(AKinds));
  AKinds.Radio ? Source->capture_default_str() : Source->required();
  if (AKinds.Speed)
    ACommand
        .add_option("--speed",
                    AFrom.Speed,
                    "How fast a recording runs: 0 as fast as it can, 1 in real time")
        ->check(CLI::IsMember({"0", "1"}))
        ->capture_default_str();
}

}  // namespace Wayfence
