#pragma once

/// Scratch memory of the methods that compute in rows of floats.

#include <cstddef>

namespace Korvex2::Bayer {

/// Columns kept on either side of a block; a multiple of a vector.
inline constexpr int kFloatMargin = 64;

/// Floats from one row to the next.
constexpr std::ptrdiff_t FloatStride(int cols) {
  constexpr std::ptrdiff_t kStep = 16;
  return (cols + kStep - 1) / kStep * kStep + 2 * kFloatMargin + kStep;
}

constexpr std::size_t FloatRowsBytes(int rows, int cols) {
  return static_cast<std::size_t>(rows) * static_cast<std::size_t>(FloatStride(cols)) *
         sizeof(float);
}

}  // namespace Korvex2::Bayer
