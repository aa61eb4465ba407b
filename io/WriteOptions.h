#pragma once

/// What a file can say beside its pictures.

#include <cstdint>

namespace Korvex2::Io {

/// Frames a second, as a fraction.
struct FrameRate {
  std::uint32_t frames = 25;
  std::uint32_t seconds = 1;
};

struct WriteOptions {
  FrameRate rate;  ///< of video
};

}  // namespace Korvex2::Io
