#pragma once

/// Instruction sets as values, so that a test can ask for each in turn.

#include <cstdint>
#include <vector>

namespace Korvex2::Bayer {

/// kPlain is C++ without vectors and exists everywhere; other values are Highway's target bits.
enum class Target : std::int64_t { kPlain = 0 };

/// The best instruction set of this machine.
Target bestTarget();

/// All instruction sets that were compiled and that this machine has; kPlain is the first.
std::vector<Target> availableTargets();

/// "plain", "AVX2", ...
const char* targetName(Target target);

}  // namespace Korvex2::Bayer
