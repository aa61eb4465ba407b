#pragma once

namespace Korvex2::Tool {

/// Reads the command line, runs its subcommand, and turns whatever went wrong into one line on
/// stderr. Returns the exit code: 0 done, 1 failed, 2 the command line is wrong.
int RunCommandLine(int argc, char** argv) noexcept;

}  // namespace Korvex2::Tool
