#pragma once

/// The plain loop of every kernel, one step of pixels at a time: what the others are measured
/// against, and what runs where nothing faster can.

#include "kernels/Kernels.h"

namespace Korvex2::Kernels::Scalar {

#define KORVEX2_KERNEL(routine, ...) \
  void routine(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags flags);
#include "Routines.def"

}  // namespace Korvex2::Kernels::Scalar
