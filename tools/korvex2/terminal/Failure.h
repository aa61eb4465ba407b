#pragma once

/// How the tool gives up, and what it means to a shell: a Failure is exit code 1, a UsageFailure 2.
/// Of many frames a FatalFailure ends the run, since the others would fail as well.

#include "io/Failure.h"

namespace Korvex2::Tool {

// The tool speaks of files and failures in the words of the library that reads and writes them.
using namespace Io;

}  // namespace Korvex2::Tool
