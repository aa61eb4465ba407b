#include "processing/Engine.h"

#include "PixelFormats.h"
#include "io/Raster.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"

namespace Korvex2::Tool {
namespace {

constexpr EngineMethod kMethods[] = {
    {"nearest", BAYER_METHOD_NEAREST_NEIGHBOR},
    {"edge", BAYER_METHOD_EDGE_SENSING},
    {"hq_linear", BAYER_METHOD_HQLINEAR},
    {"directional", BAYER_METHOD_DIRECTIONAL_FILTER},
    {"weighted", BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER},
    {"rigorous", BAYER_METHOD_RIGOROUS},
};

BayerPattern PatternOf(BayerTileFormat tile) {
  switch (tile) {
    case RGGB:
      return BAYER_PATTERN_RGGB;
    case GRBG:
      return BAYER_PATTERN_GRBG;
    case GBRG:
      return BAYER_PATTERN_GBRG;
    case BGGR:
      return BAYER_PATTERN_BGGR;
    default:
      throw Failure("a mosaic needs a tile");
  }
}

}  // namespace

std::span<const EngineMethod> EngineMethods() {
  return kMethods;
}

Image NewPictureOf(const Image& mosaic) {
  const bool deep = IsDeep(mosaic.GetPixelFormat());
  return NewImage(mosaic.GetCols(), mosaic.GetRows(),
                  *FindPixelFormat(deep ? PIXEL_FORMAT_RGB16 : PIXEL_FORMAT_RGB8), NONE);
}

void Demosaic(const Image& mosaic, const EngineMethod& method, Image& picture) {
  const bool deep = IsDeep(mosaic.GetPixelFormat());
  const BayerError error =
      bayerToColor(deep ? BAYER_PIXEL_FORMAT_RAW16 : BAYER_PIXEL_FORMAT_RAW8, mosaic.GetData(),
                   static_cast<int>(mosaic.GetRows()), static_cast<int>(mosaic.GetCols()),
                   deep ? BAYER_PIXEL_FORMAT_RGB16 : BAYER_PIXEL_FORMAT_RGB8, picture.GetData(),
                   method.method, PatternOf(mosaic.GetBayerTileFormat()));
  if (error != beOK) {
    throw Failure("the method {} failed with engine error {}", method.name,
                  static_cast<int>(error));
  }
}

}  // namespace Korvex2::Tool
