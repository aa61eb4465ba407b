#pragma once

/// The pixel kernels: plain functions on runs of pixels.
///
/// A kernel reads `pixels` packed pixels from src and writes as many to dst. It works in the steps
/// that Routines.def gives and completes the last one: beyond that it touches nothing. The
/// runs may overlap, or be one; the result is then what the one-step-at-a-time loop gives.
/// Kernels know neither Image nor Error, allocate nothing and keep no state.

#include <cstddef>
#include <cstdint>

#include "Routine.h"

namespace Korvex2::Kernels {

/// What a kernel needs to know of the machine.
struct Flags {
  bool littleEndian;  ///< byte order of the 16-bit samples that are handled bytewise
};

using Kernel = void (*)(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                        Flags flags);

/// The plain loop of a routine of kind Kernel; null for every other routine.
Kernel Find(Routine routine) noexcept;

/// A vector kernel. Converts the first pixels of a run, as many as fill whole vectors and always a
/// multiple of four, and answers how many they were. The runs must not overlap; samples are in the
/// byte order of the host. It touches no byte beyond the pixels that it converts.
using FastKernel = std::size_t (*)(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels);

/// The vector kernel that does the whole work of a routine, a chain perhaps; null where there is
/// none for this machine.
FastKernel FindFast(Routine routine) noexcept;

}  // namespace Korvex2::Kernels
