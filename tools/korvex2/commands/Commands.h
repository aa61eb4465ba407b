#pragma once

/// The subcommands, one file each. Each function makes one, with the fields that its options fill.

#include <fmt/format.h>

#include <string>
#include <utility>

#include "cli/Program.h"
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

/// --cpu, for commands that convert; the value goes to ChooseInstructionSet.
inline Option CpuOption(std::string& name) {
  return {"--cpu", &name, kText, "Instruction set to use, one of 'korvex2 info'"};
}

Command BenchCommand(const Globals& globals);
Command ConvertCommand(const Globals& globals);
Command FormatsCommand();
Command RoutesCommand();
Command ChartCommand(const Globals& globals);
Command MosaicCommand(const Globals& globals);
Command DemosaicCompareCommand(const Globals& globals);
Command DiffCommand(const Globals& globals);
Command GuessCommand(const Globals& globals);
Command InfoCommand();

/// These two tell about the program, which lives as long as they do, all commands included.
Command CompletionsCommand(const Program& program);
Command ManCommand(const Program& program);

}  // namespace Korvex2::Tool
