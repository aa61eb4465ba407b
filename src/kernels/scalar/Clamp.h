#pragma once

#include <cstdint>

namespace Korvex2::Kernels::Scalar {

/// Saturates to a byte.
inline std::uint8_t Clamp(std::int16_t value) {
  if (value > 255) {
    return 255;
  }
  return value < 0 ? std::uint8_t{0} : static_cast<std::uint8_t>(value);
}

}  // namespace Korvex2::Kernels::Scalar
