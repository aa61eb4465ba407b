#pragma once

#include "Method.h"

namespace Korvex2::Bayer {

/// How far a pixel looks, and how many rows of floats are kept at a time.
inline constexpr int kRigorousReach = 42;
inline constexpr int kRigorousRows = 1185;

/// Residual interpolation along rows and columns, refined where the colours follow each other; red
/// and blue by guided upsampling from green. After D. Kiku, Y. Monno, M. Tanaka and M. Okutomi,
/// "Residual interpolation for color image demosaicking", ICIP 2013, and its successors with
/// minimised Laplacian (2014) and iteration (W. Ye and K.-K. Ma, 2015).
extern const Method kRigorous;

/// The same for an instruction set; only where Highway is compiled in.
BlockFunctions RigorousSimd(InstructionSet set);

}  // namespace Korvex2::Bayer
