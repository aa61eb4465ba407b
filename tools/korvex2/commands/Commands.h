#pragma once

/// The subcommands, one file each. Each function adds its subcommand to the command line.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>

#include "terminal/Report.h"

namespace Korvex2::Tool {

/// What every subcommand obeys.
struct Globals {
  bool quiet = false;

  /// Tells the user on stdout in one line what was done, unless --quiet was given.
  template <typename... Args>
  void Say(fmt::format_string<Args...> format, Args&&... args) const {
    if (!quiet) {
      fmt::print("{}\n", OneLine(fmt::format(format, std::forward<Args>(args)...)));
    }
  }
};

/// A Failure unless all that was printed on stdout has arrived there.
void FlushStandardOutput();

/// Refuses what no comparison with a limit refuses.
inline std::string IsNumber(const std::string& value) {
  return std::isnan(std::strtod(value.c_str(), nullptr)) ? value + " is no number" : "";
}

/// Refuses an empty value, which would otherwise count as an option that was not given.
inline std::string NotEmpty(const std::string& value) {
  return value.empty() ? "a name is missing" : "";
}

/// --cpu, for commands that convert; the value goes to ChooseInstructionSet.
inline void AddCpuOption(CLI::App& command, std::string& name) {
  command.add_option("--cpu", name, "Instruction set to use, one of 'korvex2 info'")
      ->check(NotEmpty);
}

void AddBenchCommand(CLI::App& app, const Globals& globals);
void AddConvertCommand(CLI::App& app, const Globals& globals);
void AddFormatsCommand(CLI::App& app);
void AddRoutesCommand(CLI::App& app);
void AddChartCommand(CLI::App& app, const Globals& globals);
void AddMosaicCommand(CLI::App& app, const Globals& globals);
void AddDemosaicCompareCommand(CLI::App& app, const Globals& globals);
void AddDiffCommand(CLI::App& app, const Globals& globals);
void AddGuessCommand(CLI::App& app, const Globals& globals);
void AddInfoCommand(CLI::App& app);
void AddCompletionsCommand(CLI::App& app);
void AddManCommand(CLI::App& app);

}  // namespace Korvex2::Tool
