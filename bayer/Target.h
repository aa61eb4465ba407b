#pragma once

/// The engine takes its instruction sets from simd/.

#include "simd/Target.h"

namespace Korvex2::Bayer {

using Simd::activeTarget;
using Simd::availableTargets;
using Simd::Target;
using Simd::targetName;

}  // namespace Korvex2::Bayer
