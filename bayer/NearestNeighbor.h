#pragma once

#include "Method.h"

namespace Korvex2::Bayer {

/// Every 2x2 tile is one colour, except that each row has its own green.
extern const Method kNearestNeighbor;

/// The vector versions; only where Highway is compiled in.
BlockFunctions NearestNeighborSimd(InstructionSet set);

}  // namespace Korvex2::Bayer
