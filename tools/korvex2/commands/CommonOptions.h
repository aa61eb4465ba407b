#pragma once

/// Values that options of several subcommands take.

#include "cli/Options.h"

namespace Korvex2::Tool {

/// Rows, or pixels a row.
inline constexpr WholeNumber kSide{1, 0xffffffff};

/// The names of the formats that convert; ParseFormat knows more.
Words FormatWords();

/// What ParseTile and ParseMethod know.
Words TileWords();
Words MethodWords();

}  // namespace Korvex2::Tool
