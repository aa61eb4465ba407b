#pragma once

/// @file
/// The version of the library.

#include "Korvex2Export.h"

namespace Korvex2 {

/// "major.minor.patch" of the library that runs, which may be newer than the headers compiled with.
KORVEX2_API const char* GetVersion() noexcept;

}  // namespace Korvex2
