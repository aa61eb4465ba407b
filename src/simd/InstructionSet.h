#pragma once

/// Instruction sets as values, so that a test or a user can ask for each in turn.

#include <cstdint>
#include <span>

/// Marks what libkorvex2 takes out of libvorbayer, where all of this lies. These symbols have a
/// version of their own, which only libraries of one release share.
#define KORVEX2_SIMD_API __attribute__((visibility("default")))

namespace Korvex2::Simd {

/// Plain is C++ without vectors and exists everywhere; other values are Highway's target bits.
enum class InstructionSet : std::int64_t { Plain = 0 };
constexpr int kMostInstructionSets = 16;

/// All instruction sets that were compiled and that this machine has, Plain first, then the best
/// one and so on down; at most kMostInstructionSets. The list never changes. Takes no memory.
KORVEX2_SIMD_API std::span<const InstructionSet> AvailableInstructionSets() noexcept;

/// "plain", "AVX2", ...
KORVEX2_SIMD_API const char* InstructionSetName(InstructionSet set) noexcept;

/// The one in use: the best of this machine, unless the environment variable KORVEX2_CPU named
/// another one when it was first asked for, or SetActiveInstructionSet chose since. Thread-safe.
KORVEX2_SIMD_API InstructionSet ActiveInstructionSet() noexcept;
KORVEX2_SIMD_API void SetActiveInstructionSet(InstructionSet set) noexcept;

}  // namespace Korvex2::Simd
