#pragma once

/// @file
/// The enumerations that describe a frame.

#include <cstdint>

namespace Korvex2 {

/// How the pixels of a frame are laid out. docs/formats.md draws each layout byte by byte.
///
/// Grey and raw samples of 16 bits are stored low byte first; those of colour formats are words of
/// the host, which is the same thing on every target but big-endian ones.
enum PixelFormat : std::uint32_t {
  PIXEL_FORMAT_MONO8 = 0x80000000,         ///< 8 bits of grey
  PIXEL_FORMAT_411YUV8 = 0x40000000,       ///< U Y0 Y1 V Y2 Y3: 4 pixels in 6 bytes
  PIXEL_FORMAT_422YUV8 = 0x20000000,       ///< U Y0 V Y1: 2 pixels in 4 bytes
  PIXEL_FORMAT_444YUV8 = 0x10000000,       ///< U Y V: 1 pixel in 3 bytes
  PIXEL_FORMAT_RGB8 = 0x8000000,           ///< R G B, 8 bits each
  PIXEL_FORMAT_MONO16 = 0x4000000,         ///< 16 bits of grey
  PIXEL_FORMAT_RGB16 = 0x2000000,          ///< R G B, 16 bits each
  PIXEL_FORMAT_S_MONO16 = 0x1000000,       ///< 16 bits of grey, signed; copied, never converted
  PIXEL_FORMAT_S_RGB16 = 0x800000,         ///< R G B, 16 bits each, signed; copied, never converted
  PIXEL_FORMAT_RAW8 = 0x400000,            ///< Bayer mosaic, 8 bits
  PIXEL_FORMAT_RAW16 = 0x200000,           ///< Bayer mosaic, 16 bits
  PIXEL_FORMAT_MONO12 = 0x100000,          ///< grey, 2 pixels packed in 3 bytes
  PIXEL_FORMAT_RAW12 = 0x80000,            ///< Bayer mosaic, 2 pixels packed in 3 bytes
  PIXEL_FORMAT_BGR = 0x80000008,           ///< B G R, 8 bits each
  PIXEL_FORMAT_BGRU = 0x40000008,          ///< B G R alpha, 8 bits each
  PIXEL_FORMAT_RGB = PIXEL_FORMAT_RGB8,    ///< another name of PIXEL_FORMAT_RGB8
  PIXEL_FORMAT_RGBU = 0x40000002,          ///< R G B alpha, 8 bits each
  PIXEL_FORMAT_BGR16 = 0x2000001,          ///< B G R, 16 bits each
  PIXEL_FORMAT_BGRU16 = 0x2000002,         ///< B G R alpha, 16 bits each
  PIXEL_FORMAT_422YUV8_JPEG = 0x40000001,  ///< compressed stream; copied, never converted
  NUM_PIXEL_FORMATS = 20,                  ///< how many names the enumeration gives to formats
  UNSPECIFIED_PIXEL_FORMAT = 0             ///< no format
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
