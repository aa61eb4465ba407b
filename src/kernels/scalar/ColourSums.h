#pragma once

#include <cstdint>

namespace Korvex2::Kernels::Scalar {

/// BT.601 luma in double precision, truncated: (0.299 R + 0.587 G) + 0.114 B. The order of the sums
/// decides the last bit: a grey of v comes out as v - 1 for 65 of the 256 bytes.
constexpr std::uint32_t Luma(double red, double green, double blue) {
  return static_cast<std::uint32_t>((red * 0.299 + green * 0.587) + blue * 0.114);
}

/// BT.601 chroma of blue and of red, offset by 128, not truncated yet.
constexpr double ChromaU(double red, double green, double blue) {
  return ((red * -0.169 + green * -0.331) + blue * 0.5) + 128.0;
}
constexpr double ChromaV(double red, double green, double blue) {
  return ((red * 0.5 + green * -0.419) + blue * -0.081) + 128.0;
}

}  // namespace Korvex2::Kernels::Scalar
