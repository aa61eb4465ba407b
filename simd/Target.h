#pragma once

/// Instruction sets as values, so that a test or a user can ask for each in turn.

#include <cstdint>
#include <vector>

namespace Korvex2::Simd {

/// kPlain is C++ without vectors and exists everywhere; other values are Highway's target bits.
enum class Target : std::int64_t { kPlain = 0 };

/// All instruction sets that were compiled and that this machine has, kPlain first, then the best one
/// and so on down. The list never changes.
const std::vector<Target>& availableTargets();

/// "plain", "AVX2", ...
const char* targetName(Target target);

/// The one in use: the best of this machine, unless the environment variable KORVEX2_CPU named
/// another one when it was first asked for, or setActiveTarget chose since. Thread-safe.
Target activeTarget();
void setActiveTarget(Target target);

}  // namespace Korvex2::Simd
