#pragma once

#include "Method.h"

namespace Korvex2::Bayer {

/// How far a pixel looks.
inline constexpr int kDirectionalFilterReach = 7;

/// Green along rows or along columns, decided afterwards by which of the two differences to red and
/// blue changes less. After D. Menon, S. Andriani and G. Calvagno, "Demosaicing with directional
/// filtering and a posteriori decision", IEEE Transactions on Image Processing, 2007.
extern const Method kDirectionalFilter;

/// The same for an instruction set; only where Highway is compiled in.
BlockFunctions DirectionalFilterSimd(InstructionSet set);

}  // namespace Korvex2::Bayer
