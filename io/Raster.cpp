#include "io/Raster.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <utility>

#include "io/Failure.h"
#include "io/Names.h"

namespace Korvex2::Io {
namespace {

enum class Order { Stored, BlueFirst };

struct Correspondence {
  PixelFormat format;
  unsigned channels;
  unsigned bytesPerSample;
  Order order;
};

// The formats whose samples a picture file holds as they are. The first row of a shape is the
// format in which such a file is read. RGBA of 16 bits has no format of its own order.
constexpr Correspondence kCorrespondences[] = {
    // clang-format off
    {PIXEL_FORMAT_MONO8,  1, 1, Order::Stored},
    {PIXEL_FORMAT_RAW8,   1, 1, Order::Stored},
    {PIXEL_FORMAT_MONO16, 1, 2, Order::Stored},
    {PIXEL_FORMAT_RAW16,  1, 2, Order::Stored},
    {PIXEL_FORMAT_RGB8,   3, 1, Order::Stored},
    {PIXEL_FORMAT_BGR,    3, 1, Order::BlueFirst},
    {PIXEL_FORMAT_RGB16,  3, 2, Order::Stored},
    {PIXEL_FORMAT_BGR16,  3, 2, Order::BlueFirst},
    {PIXEL_FORMAT_RGBU,   4, 1, Order::Stored},
    {PIXEL_FORMAT_BGRU,   4, 1, Order::BlueFirst},
    {PIXEL_FORMAT_BGRU16, 4, 2, Order::BlueFirst},
    // clang-format on
};

const Correspondence* Find(PixelFormat format) {
  for (const Correspondence& row : kCorrespondences) {
    if (row.format == format) {
      return &row;
    }
  }
  return nullptr;
}

bool SameShape(const Correspondence& row, const Raster& raster) {
  return row.channels == raster.channels && row.bytesPerSample == raster.bytesPerSample;
}

const Correspondence& Natural(const Raster& raster) {
  if (raster.tile != NONE) {
    return *Find(PIXEL_FORMAT_RAW16);
  }
  for (const Correspondence& row : kCorrespondences) {
    if (SameShape(row, raster)) {
      return row;
    }
  }
  throw Failure("pictures of {} channels are not supported", raster.channels);
}

// Grey and mosaic words are stored low byte first on every host, the words of colours in the host's
// order: so the converter has them.
bool SwapsBytes(const Correspondence& row) {
  return row.bytesPerSample == 2 &&
         (row.channels == 1 || std::endian::native == std::endian::little);
}

// The same operation leads from file to image and back: each half is its own inverse.
void Rearrange(const Correspondence& row, const unsigned char* source, std::size_t pixels,
               unsigned char* destination) {
  const std::size_t pixelSize = std::size_t{row.channels} * row.bytesPerSample;
  if (row.order == Order::Stored && !SwapsBytes(row)) {
    std::memcpy(destination, source, pixels * pixelSize);
    return;
  }
  std::size_t from[8];  // which byte of a pixel goes to which place
  for (std::size_t i = 0; i < pixelSize; ++i) {
    std::size_t channel = i / row.bytesPerSample;
    if (row.order == Order::BlueFirst && channel < 3) {
      channel = 2 - channel;
    }
    const std::size_t byte = i % row.bytesPerSample;
    from[i] = channel * row.bytesPerSample + (SwapsBytes(row) ? 1 - byte : byte);
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
  for (const Correspondence& row : kCorrespondences) {
    if (SameShape(row, raster)) {
      names += names.empty() ? "" : " or ";
      names += NameOf(row.format);
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
  const Correspondence* row = Find(format);
  return row == nullptr ? 0 : row->channels;
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
  const Correspondence* row = wanted == nullptr ? &Natural(raster) : Find(wanted->format);
  if (row == nullptr || !SameShape(*row, raster)) {
    throw Failure("{} does not hold {}; its samples can be taken as {}", path, wanted->name,
                  NamesOfShape(raster));
  }
  Image image = NewImage(raster.width, raster.height, *FindPixelFormat(row->format), tile);
  Rearrange(*row, raster.Row(0), std::size_t{raster.width} * raster.height, image.GetData());
  return image;
}

Raster ToRaster(const Image& image) {
  const Correspondence* row = Find(image.GetPixelFormat());
  if (row == nullptr) {
    throw Failure("{} is no format of picture files", NameOf(image.GetPixelFormat()));
  }
  Raster raster(image.GetCols(), image.GetRows(), row->channels, row->bytesPerSample);
  Rearrange(*row, image.GetData(), std::size_t{raster.width} * raster.height, raster.Row(0));
  return raster;
}

}  // namespace Korvex2::Io
