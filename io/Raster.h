#pragma once

/// A picture as the picture files hold it, and its way into and out of an Image.

#include <cstdint>
#include <optional>
#include <string>

#include "Image.h"
#include "PixelFormats.h"
#include "io/File.h"
#include "io/Levels.h"

namespace Korvex2::Io {

/// Rows from the top, no padding; channels grey, grey alpha, R G B, or R G B alpha; 16-bit samples
/// high byte first, as PNG and PNM store them. A file that says that it holds a mosaic sets the
/// tile.
struct Raster {
  /// Memory for a picture of this shape; a Failure for one that no Image can hold.
  Raster(std::uint32_t width, std::uint32_t height, unsigned channels, unsigned bytesPerSample);

  std::size_t RowSize() const { return std::size_t{width} * channels * bytesPerSample; }
  unsigned char* Row(std::size_t y) { return bytes.data.get() + y * RowSize(); }
  const unsigned char* Row(std::size_t y) const { return bytes.data.get() + y * RowSize(); }

  std::uint32_t width;
  std::uint32_t height;
  unsigned channels;
  unsigned bytesPerSample;
  Bytes bytes;
  BayerTileFormat tile = NONE;
  std::optional<SensorLevels> levels;  ///< of a camera's raw file
};

/// Memory for the picture that a file announces; a Failure that names the file where no Image can
/// hold it.
Raster NewRaster(const std::string& path, std::uint32_t width, std::uint32_t height,
                 unsigned channels, unsigned bytesPerSample);

/// How many channels a picture file needs for a format, losslessly; 0 when none can hold it.
unsigned RasterChannels(PixelFormat format);

/// The picture as an image. `wanted` names its format, or is null for the format that its samples
/// suggest: mono8, mono16, rgb8, rgbu, rgb16, bgru16, or raw16 for a mosaic. Grey with alpha is
/// grey where every pixel is opaque and colour with alpha otherwise. `tile` is that of a mosaic.
/// `path` is for the message when the samples do not fit.
Image ToImage(Raster raster, const PixelFormatInfo* wanted, BayerTileFormat tile,
              const std::string& path);

/// The image as a picture: blue-first formats reordered, mosaics as grey.
Raster ToRaster(const Image& image);

/// A new image of the format, rows without padding; a Failure when it cannot be made.
Image NewImage(std::uint32_t width, std::uint32_t height, const PixelFormatInfo& format,
               BayerTileFormat tile);

}  // namespace Korvex2::Io
