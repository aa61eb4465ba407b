#pragma once

#include "Method.h"

namespace Korvex2::Bayer {

/// The 5x5 linear filters of H. Malvar, L. He and R. Cutler, "High-quality linear interpolation for
/// demosaicing of Bayer-patterned color images", ICASSP 2004.
extern const Method kHqLinear;

/// The vector versions; only where Highway is compiled in.
BlockFunctions HqLinearSimd(InstructionSet set);

}  // namespace Korvex2::Bayer
