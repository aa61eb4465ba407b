#include "Frames.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>

#include "ImageConverterARMStub.h"
#include "PixelFormats.h"
#include "Utilities.h"

namespace Korvex2::Bench {
namespace {

constexpr std::size_t kPage = 4096;

std::size_t WholePages(std::size_t bytes) {
  return (bytes + kPage - 1) / kPage * kPage;
}

void Expect(const Error& error) {
  if (error != VORERROR_OK) throw std::runtime_error(error.GetMessage());
}

// Memory that grows and is never given back: faulting pages in takes longer than most conversions.
// It is that of an Image, so that pages are as large as those of frames.
std::uint8_t* Arena(std::size_t bytes) {
  static Image memory;
  const auto pages = static_cast<unsigned>(WholePages(bytes) / kPage + 1);
  if (memory.GetRows() < pages) {
    memory = Image();
    Expect(memory.SetDimensions(pages, kPage, kPage, PIXEL_FORMAT_MONO8, NONE));
  }
  void* begin = memory.GetData();
  std::size_t room = memory.GetDataSize();
  return static_cast<std::uint8_t*>(std::align(kPage, bytes, begin, room));
}

void Shape(Image& image, PixelFormat format, FrameSize size) {
  const unsigned stride = PackedStride(size.cols, Image::DetermineBitsPerPixel(format));
  const bool raw = FindPixelFormat(format)->IsRaw();
  Expect(image.SetDimensions(size.rows, size.cols, stride, format, raw ? RGGB : NONE));
}

std::uint16_t Sample(Content content, unsigned x, unsigned y, unsigned channel,
                     std::uint32_t random) {
  if (content == Content::Noise) return static_cast<std::uint16_t>(random);
  const unsigned c = content == Content::Grey ? 0 : channel;
  const unsigned area = (x / 37 + y / 53 + c) % 3 * 14000;
  return static_cast<std::uint16_t>(area + x * (3 + c) % 12000 + y * (5 + 2 * c) % 16000 +
                                    random % 2048);
}

Image Scene(FrameSize size, Content content) {
  Image scene;
  Shape(scene, PIXEL_FORMAT_RGB16, size);
  std::mt19937 random(1);
  unsigned char* out = scene.GetData();
  for (unsigned y = 0; y < size.rows; ++y) {
    for (unsigned x = 0; x < size.cols; ++x) {
      auto noise = static_cast<std::uint32_t>(random());
      for (unsigned channel = 0; channel < 3; ++channel, out += 2) {
        if (channel > 0 && content != Content::Grey) noise = static_cast<std::uint32_t>(random());
        const std::uint16_t sample = Sample(content, x, y, channel, noise);
        std::memcpy(out, &sample, 2);
      }
    }
  }
  return scene;
}

// The scene seen through red, green, green, blue.
Image Mosaic(const Image& scene) {
  Image mosaic;
  Shape(mosaic, PIXEL_FORMAT_RAW16, {scene.GetCols(), scene.GetRows()});
  const unsigned char* in = scene.GetData();
  unsigned char* out = mosaic.GetData();
  for (unsigned y = 0; y < scene.GetRows(); ++y) {
    for (unsigned x = 0; x < scene.GetCols(); ++x, in += 6, out += 2) {
      std::memcpy(out, in + std::size_t{2} * (x % 2 + y % 2), 2);
    }
  }
  return mosaic;
}

// Whole rows of the picture, few enough to be made quickly; a frame repeats them.
Image Patch(PixelFormat format, FrameSize size, Content content) {
  constexpr unsigned kMostPixels = 1U << 20;
  const unsigned rows = std::min(size.rows, std::max(kMostPixels / size.cols & ~1U, 2U));
  static Image scene;
  static Content shown = Content::Scene;
  if (scene.GetCols() != size.cols || scene.GetRows() != rows || shown != content) {
    scene = Scene({size.cols, rows}, content);
    shown = content;
  }
  const bool raw = FindPixelFormat(format)->IsRaw();
  Image patch;
  const Image truth = raw ? Mosaic(scene) : scene;
  Expect(ImageConverter().Convert(&truth, format, &patch));
  return patch;
}

void Repeat(const Image& patch, Image& frame) {
  const std::size_t whole =
      BytesOf(frame.GetPixelFormat(), std::size_t{frame.GetCols()} * frame.GetRows());
  const std::size_t part =
      BytesOf(patch.GetPixelFormat(), std::size_t{patch.GetCols()} * patch.GetRows());
  for (std::size_t done = 0; done < whole; done += part) {
    std::memcpy(frame.GetData() + done, patch.GetData(), std::min(part, whole - done));
  }
}

}  // namespace

std::size_t BytesOf(PixelFormat format, std::size_t pixels) {
  return static_cast<std::size_t>(GroupedSize(*FindPixelFormat(format), pixels));
}

std::size_t CopiedBytes(PixelFormat source, PixelFormat target, std::size_t pixels) {
  return (BytesOf(source, pixels) + BytesOf(target, pixels)) / 2;
}

std::vector<Slice> MakeSlices(PixelFormat source, PixelFormat target, FrameSize size,
                              std::size_t bytes, Content content) {
  const std::size_t pixels = size.Pixels();
  const std::size_t copied = CopiedBytes(source, target, pixels);
  const auto room = [&](PixelFormat format) {
    const auto reached = static_cast<std::size_t>(ReachedSize(*FindPixelFormat(format), pixels));
    return WholePages(std::max(reached, copied));
  };
  const std::size_t sourceRoom = room(source);
  const std::size_t destinationRoom = room(target);
  const std::size_t each = sourceRoom + destinationRoom;
  const std::size_t count = std::max<std::size_t>(1, (bytes + each - 1) / each);

  const Image patch = Patch(source, size, content);
  std::uint8_t* memory = Arena(count * each);
  std::vector<Slice> slices;
  for (std::size_t i = 0; i < count; ++i, memory += each) {
    Slice slice{Image(memory, sourceRoom), Image(memory + sourceRoom, destinationRoom)};
    Shape(slice.source, source, size);
    Shape(slice.destination, target, size);
    Repeat(patch, slice.source);
    slices.push_back(std::move(slice));
  }
  return slices;
}

}  // namespace Korvex2::Bench
