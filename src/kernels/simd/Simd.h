#pragma once

/// Vector kernels, by family. Each answers null for a routine that it has no kernel for.

#include "kernels/Kernels.h"

namespace Korvex2::kernels::simd {

FastKernel Moves(Routine routine);
FastKernel Colour(Routine routine);

}  // namespace Korvex2::kernels::simd
