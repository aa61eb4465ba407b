#pragma once

/// @file
/// The enumerations that describe a frame.

#include <cstdint>

namespace Korvex2 {

/// How the pixels of a frame are laid out. docs/formats.md draws each layout byte by byte.
///
/// Grey and raw samples of 16 bits are stored low byte first; those of colour formats are words of
/// the host, which is the same thing on every target but big-endian ones.
/// Formats.def says which there are: PIXEL_FORMAT_MONO8, PIXEL_FORMAT_MONO12 and so on, a row each.
enum PixelFormat : std::uint32_t {
#define KORVEX2_FORMAT(enumerator, value, ...) PIXEL_FORMAT_##enumerator = value,
#define KORVEX2_COPIED_FORMAT(enumerator, value, ...) PIXEL_FORMAT_##enumerator = value,
#include "Formats.def"
  PIXEL_FORMAT_RGB = PIXEL_FORMAT_RGB8,  ///< another name of PIXEL_FORMAT_RGB8
  /// how many names the enumeration gives to formats
  NUM_PIXEL_FORMATS = 1
#define KORVEX2_FORMAT(...) +1
#define KORVEX2_COPIED_FORMAT(...) +1
#include "Formats.def"
  ,
  UNSPECIFIED_PIXEL_FORMAT = 0  ///< no format
};

/// The colours of the top-left 2x2 tile of a Bayer mosaic, in reading order.
///
///     RGGB   GRBG   GBRG   BGGR
///     R G    G R    G B    B G
///     G B    B G    R G    G R
enum BayerTileFormat {
  NONE = 0,                     ///< no mosaic: the samples are grey
  RGGB = 1,                     ///< red top left, blue bottom right
  GRBG = 2,                     ///< red top right, blue bottom left
  GBRG = 3,                     ///< blue top right, red bottom left
  BGGR = 4,                     ///< blue top left, red bottom right
  BT_FORCE_32BITS = 0x7fffffff  ///< fixes the width, no tile
};

/// How a Bayer mosaic is turned into colour. docs/demosaicing.md compares the methods.
enum ColorProcessingAlgorithm {
  DEFAULT = 0,              ///< whatever Image::GetDefaultColorProcessing() answers
  NO_COLOR_PROCESSING = 1,  ///< show the mosaic as grey
  NEAREST_NEIGHBOR = 2,     ///< the tile's own red and blue: as fast as can be, for previews
  EDGE_SENSING = 3,         ///< along the edge instead of across it
  HQ_LINEAR = 4,            ///< linear filters of 5x5: predictable, fast, the usual choice
  RIGOROUS = 5,             ///< the best picture, and the slowest
  IPP = 6,                  ///< refused by the converter
  DIRECTIONAL_FILTER = 7,   ///< rows or columns, decided per pixel: better, slower
  WEIGHTED_DIRECTIONAL_FILTER = 8,                      ///< refused by the converter
  COLOR_PROCESSING_ALGORITHM_FORCE_32BITS = 0x7fffffff  ///< fixes the width, no method
};

}  // namespace Korvex2
