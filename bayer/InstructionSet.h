#pragma once

/// The engine takes its instruction sets from simd/.

#include "simd/InstructionSet.h"

namespace Korvex2::Bayer {

using Simd::ActiveInstructionSet;
using Simd::AvailableInstructionSets;
using Simd::InstructionSet;
using Simd::InstructionSetName;

}  // namespace Korvex2::Bayer
