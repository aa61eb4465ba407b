#pragma once

/// The whole command line as data.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Options.h"

namespace Korvex2::Tool {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;  ///< the command line is wrong

/// A subcommand.
struct Command {
  std::string_view name;
  std::string_view help;  ///< a phrase without a full stop
  std::vector<Option> positionals = {};
  std::vector<Option> options = {};
  std::string notes = {};    ///< what --help ends with: details, examples; empty: the program's
  std::function<int()> run;  ///< answers the exit code; the fields were filled before
};

/// The program: options that may stand before and after its subcommand, of which there is one.
struct Program {
  std::string_view name;
  std::string_view help;  ///< a sentence
  std::string version;    ///< what --version prints
  std::vector<Option> options;
  std::vector<Command> commands;
  std::string notes;
};

/// Options that the program and, the first, each subcommand have besides theirs.
inline const Option kHelpOption{"-h,--help", {}, kFlag, "Print this help message and exit"};
inline const Option kVersionOption{
    "--version", {}, kFlag, "Display program version information and exit"};

}  // namespace Korvex2::Tool
