#pragma once

#include "cli/Program.h"

namespace Korvex2::Tool {

/// Reads a command line into the fields of the program's options, and answers the subcommand that
/// it asks for; nullptr where it asked for help or the version, which are on stdout then. A wrong
/// one is a UsageFailure that names the help to see.
const Command* Parse(const Program& program, int argc, const char* const* argv);

}  // namespace Korvex2::Tool
