#pragma once

/// The inverse of demosaicing: what a sensor behind a colour filter array sees of a picture.

#include "Image.h"
#include "PixelFormats.h"

namespace Korvex2::Tool {

/// A mosaic of the picture in raw8, raw12 or raw16: of each pixel the one channel that the tile
/// has there. Any convertible picture; grey ones have that grey everywhere.
Image SampleMosaic(const Image& picture, BayerTileFormat tile, PixelFormat rawFormat);

}  // namespace Korvex2::Tool
