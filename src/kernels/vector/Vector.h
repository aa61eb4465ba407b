#pragma once

/// Vector kernels, by family. Each answers null for a routine that it has no kernel for. The set
/// is one of Simd::AvailableInstructionSets() other than Plain.

#include "kernels/Kernels.h"
#include "simd/InstructionSet.h"

namespace Korvex2::Kernels::Vector {

FastKernel Moves(Simd::InstructionSet set, Routine routine);
FastKernel Packed12(Simd::InstructionSet set, Routine routine);
FastKernel Encodes(Simd::InstructionSet set, Routine routine);
FastKernel Decodes(Simd::InstructionSet set, Routine routine);

}  // namespace Korvex2::Kernels::Vector
