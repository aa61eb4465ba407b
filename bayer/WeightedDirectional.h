#pragma once

#include <cstdint>
#include <type_traits>

#include "Method.h"

namespace Korvex2::Bayer {

/// Colour differences along rows and columns, blended by how little they change towards each side;
/// red and blue refined by the same weights. After I. Pekkucuksen and Y. Altunbasak, "Gradient
/// based threshold free color filter array interpolation", ICIP 2010.
extern const Method kWeightedDirectional;

/// How far the method looks.
inline constexpr int kWeightedDirectionalReach = 7;

/// Holds all sums of differences: at most 9 * 8 * 255 in size for samples of 8 bits and 257 times
/// as much for 16 bits, which still is exact as a float.
template <typename Sample>
using WeightedDirectionalInt = std::conditional_t<sizeof(Sample) == 1, std::int16_t, std::int32_t>;

/// The same for an instruction set; only where Highway is compiled in.
BlockFunctions WeightedDirectionalSimd(InstructionSet set);

}  // namespace Korvex2::Bayer
