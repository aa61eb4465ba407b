#pragma once

/// What the frames show, and the memory that they lie in.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "Image.h"
#include "Peers.h"

namespace Korvex2::Bench {

/// Scene: areas, edges, gradients and a little noise, in colours. Noise: every sample random.
/// Grey: the scene with equal channels, whose sums are all exact multiples.
enum class Content { Scene, Noise, Grey };

/// A source and a destination for one conversion, side by side in the arena.
struct Slice {
  Image source;       ///< filled
  Image destination;  ///< shaped as the conversion shapes it, so that it is a reused one
};

/// Bytes that a frame occupies, the last group completed.
std::size_t BytesOf(PixelFormat format, std::size_t pixels);

/// The length of a memcpy that reads and writes as many bytes in all as a conversion does: half of
/// input plus output.
std::size_t CopiedBytes(PixelFormat source, PixelFormat target, std::size_t pixels);

/// Slices that together occupy at least `bytes`, one at least, all with the same picture. They are
/// valid until the next call, which uses the same memory. Both buffers hold CopiedBytes.
std::vector<Slice> MakeSlices(PixelFormat source, PixelFormat target, FrameSize size,
                              std::size_t bytes, Content content);

}  // namespace Korvex2::Bench
