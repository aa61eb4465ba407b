#pragma once

/// Vector kernels, by family. Each answers null for a routine that it has no kernel for. The target
/// is one of Simd::availableTargets() other than kPlain.

#include "kernels/Kernels.h"
#include "simd/Target.h"

namespace Korvex2::kernels::simd {

FastKernel Moves(Simd::Target target, Routine routine);
FastKernel Packed12(Simd::Target target, Routine routine);
FastKernel Encodes(Simd::Target target, Routine routine);
FastKernel Decodes(Simd::Target target, Routine routine);

}  // namespace Korvex2::kernels::simd
