#include "io/Raster.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "io/Failure.h"
#include "io/Names.h"

namespace Korvex2::Io {
namespace {

std::uint32_t BytesPerSample(const PixelFormatInfo& format) {
  return format.bitsPerSample / 8;
}

// Whether a picture file holds the samples of a format as they are: whole pixels of grey, colours
// or a mosaic.
bool IsOfPictures(const PixelFormatInfo& format) {
  return format.convertible && format.Channels() != 0 && format.family != PixelFamily::Yuv;
}

const PixelFormatInfo* Find(PixelFormat format) {
  const PixelFormatInfo* info = FindPixelFormat(format);
  return info != nullptr && IsOfPictures(*info) ? info : nullptr;
}

bool SameShape(const PixelFormatInfo& format, const Raster& raster) {
  return IsOfPictures(format) && format.Channels() == raster.channels &&
         BytesPerSample(format) == raster.bytesPerSample;
}

// The first format of a shape is the one in which such a file is read. RGBA of 16 bits has no
// format of its own order.
const PixelFormatInfo& Natural(const Raster& raster) {
  if (raster.tile != NONE) {
    return *Find(PIXEL_FORMAT_RAW16);
  }
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (SameShape(format, raster)) {
      return format;
    }
  }
  throw Failure("pictures of {} channels are not supported", raster.channels);
}

// Words of picture files have the high byte first.
bool SwapsBytes(const PixelFormatInfo& format) {
  return BytesPerSample(format) == 2 && IsLowByteFirst(format);
}

// The same operation leads from file to image and back: each half is its own inverse.
void Rearrange(const PixelFormatInfo& format, const unsigned char* source, std::size_t pixels,
               unsigned char* destination) {
  const std::size_t sampleSize = BytesPerSample(format);
  const std::size_t pixelSize = format.bytesPerGroup;
  if (!format.IsBlueFirst() && !SwapsBytes(format)) {
    std::memcpy(destination, source, pixels * pixelSize);
    return;
  }
  std::size_t from[8];  // which byte of a pixel goes to which place
  for (std::size_t i = 0; i < pixelSize; ++i) {
    std::size_t channel = i / sampleSize;
    if (format.IsBlueFirst() && channel < 3) {
      channel = 2 - channel;
    }
    const std::size_t byte = i % sampleSize;
    from[i] = channel * sampleSize + (SwapsBytes(format) ? 1 - byte : byte);
  }
  for (std::size_t n = 0; n < pixels; ++n) {
    for (std::size_t i = 0; i < pixelSize; ++i) {
      destination[i] = source[from[i]];
    }
    source += pixelSize;
    destination += pixelSize;
  }
}

bool IsOpaque(const Raster& raster) {
  const unsigned char* pixel = raster.Row(0);
  const std::size_t size = raster.bytesPerSample;
  for (std::size_t n = std::size_t{raster.width} * raster.height; n > 0; --n, pixel += 2 * size) {
    if (!std::all_of(pixel + size, pixel + 2 * size, [](unsigned char c) { return c == 0xff; })) {
      return false;
    }
  }
  return true;
}

// No pixel format is grey with alpha.
Raster WithoutGreyAlpha(const Raster& raster, const std::string& path) {
  Raster result =
      NewRaster(path, raster.width, raster.height, IsOpaque(raster) ? 1 : 4, raster.bytesPerSample);
  const std::size_t size = raster.bytesPerSample;
  const unsigned char* source = raster.Row(0);
  unsigned char* destination = result.Row(0);
  for (std::size_t n = std::size_t{raster.width} * raster.height; n > 0; --n, source += 2 * size) {
    for (unsigned channel = 0; channel < result.channels; ++channel, destination += size) {
      std::memcpy(destination, source + (channel == 3 ? size : 0), size);
    }
  }
  return result;
}

std::string NamesOfShape(const Raster& raster) {
  std::string names;
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (SameShape(format, raster)) {
      names += names.empty() ? "" : " or ";
      names += format.name;
    }
  }
  return names;
}

// Why no Image holds a picture of this shape; nothing where one does.
std::string Obstacle(std::uint32_t width, std::uint32_t height, unsigned pixelSize) {
  constexpr std::uint64_t kLimit = std::numeric_limits<std::uint32_t>::max();
  if (width == 0 || height == 0) {
    return fmt::format("a picture of {} x {} pixels is empty; both sides must be at least 1", width,
                       height);
  }
  if (std::uint64_t{width} * height > kLimit / pixelSize) {
    return fmt::format(
        "a picture of {} x {} pixels of {} bytes is too large; a frame has at most {} bytes", width,
        height, pixelSize, kLimit);
  }
  return {};
}

std::size_t CheckedSize(std::uint32_t width, std::uint32_t height, unsigned pixelSize) {
  const std::string obstacle = Obstacle(width, height, pixelSize);
  if (!obstacle.empty()) {
    throw Failure("{}", obstacle);
  }
  return std::size_t{width} * height * pixelSize;
}

}  // namespace

Raster::Raster(std::uint32_t columns, std::uint32_t rows, unsigned channelCount,
               unsigned sampleSize)
    : width(columns),
      height(rows),
      channels(channelCount),
      bytesPerSample(sampleSize),
      bytes(CheckedSize(columns, rows, channelCount * sampleSize)) {}

Raster NewRaster(const std::string& path, std::uint32_t width, std::uint32_t height,
                 unsigned channels, unsigned bytesPerSample) {
  const std::string obstacle = Obstacle(width, height, channels * bytesPerSample);
  if (!obstacle.empty()) {
    throw Failure("{} cannot be read: {}", path, obstacle);
  }
  return {width, height, channels, bytesPerSample};
}

unsigned RasterChannels(PixelFormat format) {
  const PixelFormatInfo* info = Find(format);
  return info == nullptr ? 0 : info->Channels();
}

Image NewImage(std::uint32_t width, std::uint32_t height, const PixelFormatInfo& format,
               BayerTileFormat tile) {
  Image image;
  const Error error = image.SetDimensions(height, width, PackedStride(width, format.bitsPerPixel),
                                          format.format, tile);
  if (error != VORERROR_OK) {
    throw Failure("no frame of {} x {} {}: {}", width, height, format.name, error.GetMessage());
  }
  return image;
}

Image ToImage(Raster raster, const PixelFormatInfo* wanted, BayerTileFormat tile,
              const std::string& path) {
  if (raster.channels == 2) {
    raster = WithoutGreyAlpha(raster, path);
  }
  const PixelFormatInfo& format = wanted == nullptr ? Natural(raster) : *wanted;
  if (!SameShape(format, raster)) {
    throw Failure("{} does not hold {}; its samples can be taken as {}", path, format.name,
                  NamesOfShape(raster));
  }
  Image image = NewImage(raster.width, raster.height, format, tile);
  Rearrange(format, raster.Row(0), std::size_t{raster.width} * raster.height, image.GetData());
  return image;
}

Raster ToRaster(const Image& image) {
  const PixelFormatInfo* format = Find(image.GetPixelFormat());
  if (format == nullptr) {
    throw Failure("{} is no format of picture files", NameOf(image.GetPixelFormat()));
  }
  Raster raster(image.GetCols(), image.GetRows(), format->Channels(), BytesPerSample(*format));
  Rearrange(*format, image.GetData(), std::size_t{raster.width} * raster.height, raster.Row(0));
  return raster;
}

}  // namespace Korvex2::Io
