#pragma once

/// Instruction sets as values, so that a test or a user can ask for each in turn.

#include <cstdint>
#include <span>

/// Marks what libkorvex2 takes out of libvorbayer, where all of this lies: under a version of its own
/// among the exported symbols, which only libraries of one release share.
#define KORVEX2_SIMD_API __attribute__((visibility("default")))

namespace Korvex2::Simd {

/// kPlain is C++ without vectors and exists everywhere; other values are Highway's target bits.
enum class Target : std::int64_t { kPlain = 0 };
constexpr int kMostTargets = 16;

/// All instruction sets that were compiled and that this machine has, kPlain first, then the best
/// one and so on down; at most kMostTargets. The list never changes. Takes no memory.
KORVEX2_SIMD_API std::span<const Target> availableTargets() noexcept;

/// "plain", "AVX2", ...
KORVEX2_SIMD_API const char* targetName(Target target) noexcept;

/// The one in use: the best of this machine, unless the environment variable KORVEX2_CPU named
/// another one when it was first asked for, or setActiveTarget chose since. Thread-safe.
KORVEX2_SIMD_API Target activeTarget() noexcept;
KORVEX2_SIMD_API void setActiveTarget(Target target) noexcept;

}  // namespace Korvex2::Simd
