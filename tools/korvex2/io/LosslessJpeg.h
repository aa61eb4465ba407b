#pragma once

/// What a stream of lossless JPEG says of itself, which is how cameras compress mosaics.

#include <cstdint>
#include <optional>
#include <span>

namespace Korvex2::Tool {

struct LosslessJpeg {
  std::uint64_t samples = 0;  ///< lines x samples in a line x components
  std::uint64_t size = 0;     ///< bytes up to its end; 0 where that is missing
};

/// The stream that begins where `bytes` do; nothing where none does. Decodes no sample.
std::optional<LosslessJpeg> FindLosslessJpeg(std::span<const unsigned char> bytes);

}  // namespace Korvex2::Tool
