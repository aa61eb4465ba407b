#pragma once

#include "Method.h"

namespace Korvex2::Bayer {

/// Colour differences along rows and columns, blended by how little they change towards each side;
/// red and blue refined by the same weights. After I. Pekkucuksen and Y. Altunbasak, "Gradient
/// based threshold free color filter array interpolation", ICIP 2010.
extern const Method kWeightedDirectional;

/// The same for an instruction set; only where Highway is compiled in.
BlockFunctions WeightedDirectionalSimd(InstructionSet set);

}  // namespace Korvex2::Bayer
