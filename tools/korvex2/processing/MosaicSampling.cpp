#include "processing/MosaicSampling.h"

#include <array>
#include <bit>
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

// Copies one sample of each pixel. Words of colours are in the host's order, those of mosaics have
// the low byte first.
Image Sample(const Image& colour, BayerTileFormat tile, PixelFormat rawFormat, std::size_t bytes) {
  const std::array<unsigned, 4> channels = ChannelsOf(tile);
  const bool swap = bytes == 2 && std::endian::native == std::endian::big;
  Image mosaic = NewImage(colour.GetCols(), colour.GetRows(), *FindPixelFormat(rawFormat), tile);
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

bool IsDeep(PixelFormat format) {
  const PixelFormatInfo& info = *FindPixelFormat(format);
  return format == PIXEL_FORMAT_MONO12 || format == PIXEL_FORMAT_MONO16 || info.bitsPerPixel >= 48;
}

}  // namespace

Image SampleMosaic(const Image& picture, BayerTileFormat tile, PixelFormat rawFormat) {
  if (IsRaw(picture.GetPixelFormat())) {
    throw Failure("the picture is a {} mosaic already", NameOf(picture.GetPixelFormat()));
  }
  const Image mosaic =
      IsDeep(picture.GetPixelFormat())
          ? Sample(Converted(picture, PIXEL_FORMAT_RGB16), tile, PIXEL_FORMAT_RAW16, 2)
          : Sample(Converted(picture, PIXEL_FORMAT_RGB8), tile, PIXEL_FORMAT_RAW8, 1);
  return Converted(mosaic, rawFormat);
}

}  // namespace Korvex2::Tool
