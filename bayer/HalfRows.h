#pragma once

/// Scratch memory of methods that take rows apart into even and odd columns.

#include <cstddef>

namespace Korvex2::Bayer {

/// Columns kept to the left of a block; see LinedRing for why 16 more than a multiple of 32.
inline constexpr int kHalfRowsMargin = 48;

/// Columns from one row to the next.
constexpr std::ptrdiff_t halfRowsStride(int cols) {
  return (cols + 31) / 32 * 32 + 128;
}

}  // namespace Korvex2::Bayer
