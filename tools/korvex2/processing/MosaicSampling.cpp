#include "processing/MosaicSampling.h"

#include <array>
#include <cstring>

#include "io/Raster.h"
#include "processing/Converted.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"

namespace Korvex2::Tool {
namespace {

// Which channel of R G B each place of the 2x2 tile takes, in reading order.
std::array<unsigned, 4> ChannelsOf(BayerTileFormat tile) {
  switch (tile) {
    case RGGB:
      return {0, 1, 1, 2};
    case GRBG:
      return {1, 0, 2, 1};
    case GBRG:
      return {1, 2, 0, 1};
    case BGGR:
      return {2, 1, 1, 0};
    default:
      throw UsageFailure("a mosaic needs a tile: --tile rggb, grbg, gbrg or bggr");
  }
}

// Copies one sample of each pixel.
Image Sample(const Image& colour, BayerTileFormat tile, PixelFormat rawFormat) {
  const PixelFormatInfo& from = *FindPixelFormat(colour.GetPixelFormat());
  const PixelFormatInfo& to = *FindPixelFormat(rawFormat);
  const std::array<unsigned, 4> channels = ChannelsOf(tile);
  const std::size_t bytes = to.bytesPerGroup;
  const bool swap = IsLowByteFirst(from) != IsLowByteFirst(to);
  Image mosaic = NewImage(colour.GetCols(), colour.GetRows(), to, tile);
  const unsigned char* source = colour.GetData();
  unsigned char* destination = mosaic.GetData();
  for (unsigned y = 0; y < colour.GetRows(); ++y) {
    for (unsigned x = 0; x < colour.GetCols(); ++x) {
      const unsigned char* sample = source + channels[y % 2 * 2 + x % 2] * bytes;
      destination[0] = sample[swap ? 1 : 0];
      if (bytes == 2) {
        destination[1] = sample[swap ? 0 : 1];
      }
      source += 3 * bytes;
      destination += bytes;
    }
  }
  return mosaic;
}

}  // namespace

Image SampleMosaic(const Image& picture, BayerTileFormat tile, PixelFormat rawFormat) {
  if (IsRaw(picture.GetPixelFormat())) {
    throw Failure("the picture is a {} mosaic already", NameOf(picture.GetPixelFormat()));
  }
  const Image mosaic =
      IsDeep(picture.GetPixelFormat())
          ? Sample(Converted(picture, PIXEL_FORMAT_RGB16), tile, PIXEL_FORMAT_RAW16)
          : Sample(Converted(picture, PIXEL_FORMAT_RGB8), tile, PIXEL_FORMAT_RAW8);
  return Converted(mosaic, rawFormat);
}

}  // namespace Korvex2::Tool
