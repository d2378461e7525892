// What the options of commands take: the checks of their values, and sizes.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <utility>

namespace Wayfence {

// These refuse whatever else a text may hold, also what is no number ("nan").
CLI::Validator NumberFrom(double AFrom, double ATo);
CLI::Validator WholeNumberFrom(std::int64_t AFrom, std::int64_t ATo);
/// A whole number that 64 bits hold.
CLI::Validator SeedNumber();

// The parts of a text of an option; raise `CLI::ValidationError`.

/// Two finite numbers with a separator between; `AForm` says in messages how they are written.
std::pair<double, double> ReadPair(const std::string& AOption,
                                   const std::string& AText,
                                   char ASeparator,
                                   const std::string& AForm);
/// "WIDTHxHEIGHT" in metres: the size of a floor.
std::pair<double, double> ReadMetres(const std::string& AOption, const std::string& AText);
/// "WIDTHxHEIGHT" in pixels: the size of a picture.
std::pair<int, int> ReadPixels(const std::string& AOption, const std::string& AText);

/// Makes every option of a command and of its subcommands refuse a text without a character.
void RefuseEmptyTexts(CLI::App& ACommand);

}  // namespace Wayfence
