#pragma once

/// The samples of a frame, channel by channel.

#include <cstdint>
#include <vector>

#include "Image.h"
#include "PixelFormats.h"

namespace Korvex2::Tool {

/// One channel, its samples in the order of the pixels.
struct Plane {
  char channel;                   ///< Y, U, V, R, G, B, A, or M for a mosaic
  std::uint32_t pixelsPerSample;  ///< 2 or 4 where neighbours share their chroma
  std::vector<std::uint16_t> samples;
};

/// The channels of `groups` groups of pixels, in the order of their bytes; none of a compressed
/// stream.
std::vector<Plane> PlanesOf(const PixelFormatInfo& format, const unsigned char* bytes,
                            std::size_t groups);

/// The channels of an image. Chroma that pixels share is there for each of them: every plane has
/// columns x rows samples.
std::vector<Plane> PixelPlanesOf(const Image& image);

}  // namespace Korvex2::Tool
