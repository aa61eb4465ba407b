#include "io/Headerless.h"

#include <algorithm>

#include "io/Failure.h"
#include "io/Raster.h"

namespace Korvex2::Io {
namespace {

struct Size {
  std::uint32_t width;
  std::uint32_t height;
};

// Frame sizes of common sensors and video modes.
constexpr Size kCommonSizes[] = {
    {160, 120},   {320, 240},   {352, 288},   {640, 480},   {659, 494},   {720, 480},
    {720, 576},   {768, 512},   {768, 576},   {780, 580},   {800, 600},   {960, 540},
    {1024, 768},  {1032, 776},  {1280, 720},  {1280, 960},  {1280, 1024}, {1288, 964},
    {1384, 1032}, {1392, 1040}, {1440, 1080}, {1600, 1200}, {1624, 1224}, {1920, 1080},
    {1920, 1200}, {1936, 1216}, {2048, 1088}, {2048, 1536}, {2048, 2048}, {2448, 2048},
    {2560, 1440}, {2592, 1944}, {3072, 2048}, {3840, 2160}, {4000, 3000}, {4096, 2160},
    {4096, 3000}, {4096, 4096}, {5472, 3648},
};

// Some writers end a file with the last byte that a begun group needs for its first pixel.
bool Fits(const PixelFormatInfo& format, Size size, std::uint64_t fileSize) {
  const std::uint64_t pixels = std::uint64_t{size.width} * size.height;
  return fileSize == GroupedSize(format, pixels) || fileSize == PackedSize(format, pixels);
}

std::string FormatsOfSize(Size size, std::uint64_t fileSize) {
  std::string names;
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (format.convertible && Fits(format, size, fileSize)) {
      names += names.empty() ? "" : ", ";
      names += format.name;
    }
  }
  return names;
}

[[noreturn]] void FailForSize(const InputFile& file, const PixelFormatInfo& format, Size size) {
  std::string advice;
  const std::string formats = FormatsOfSize(size, file.size());
  if (!formats.empty()) {
    advice += fmt::format("; at that size it would be {}", formats);
  }
  const std::string sizes = CommonSizes(format, file.size());
  if (!sizes.empty()) {
    advice += fmt::format("; as {} it would be {}", format.name, sizes);
  }
  const std::uint64_t frame = GroupedSize(format, std::uint64_t{size.width} * size.height);
  if (file.goesOn()) {
    throw Failure(
        "{} has more than the {} bytes of {} x {} pixels of {}; 'korvex2 convert --frames "
        "all' takes one frame after the other",
        file.path(), frame, size.width, size.height, format.name);
  }
  if (file.size() > frame && file.size() % frame == 0) {
    advice +=
        fmt::format("; 'korvex2 convert --frames all' takes it as {} frames", file.size() / frame);
  }
  throw Failure("{} has {} bytes, and {} x {} pixels of {} have {}{}", file.path(), file.size(),
                size.width, size.height, format.name, frame, advice);
}

}  // namespace

void RequireFrame(const PixelFormatInfo& format, std::uint32_t width, std::uint32_t height) {
  const unsigned stride = PackedStride(width, format.bitsPerPixel);
  const Error error = Image::CheckDimensions(height, width, stride, format.format);
  if (error != VORERROR_OK) {
    throw Failure("no frame of {} x {} {}: {}", width, height, format.name, error.GetMessage());
  }
}

std::string CommonSizes(const PixelFormatInfo& format, std::uint64_t size) {
  std::string sizes;
  for (const Size& common : kCommonSizes) {
    if (Fits(format, common, size)) {
      sizes += fmt::format("{}{} x {}", sizes.empty() ? "" : " or ", common.width, common.height);
    }
  }
  return sizes;
}

bool IsCommonSize(std::uint32_t width, std::uint32_t height) {
  return std::ranges::any_of(
      kCommonSizes, [&](const Size& size) { return size.width == width && size.height == height; });
}

Image ReadHeaderless(const InputFile& file, const PixelFormatInfo& format, std::uint32_t width,
                     std::uint32_t height, BayerTileFormat tile) {
  if (file.goesOn() || !Fits(format, {width, height}, file.size())) {
    FailForSize(file, format, {width, height});
  }
  Image image = NewImage(width, height, format, tile);
  file.ReadInto(image.GetData());
  return image;
}

void WriteHeaderless(const Image& image, OutputFile& file, const WriteOptions& /*options*/) {
  const PixelFormatInfo& format = *FindPixelFormat(image.GetPixelFormat());
  const std::uint64_t size = HeaderlessSize(format, image.GetCols(), image.GetRows());
  file.Write(image.GetData(), static_cast<std::size_t>(size));
}

std::uint64_t HeaderlessSize(const PixelFormatInfo& format, std::uint32_t cols, std::uint32_t rows,
                             const WriteOptions& /*options*/) {
  return GroupedSize(format, std::uint64_t{cols} * rows);
}

}  // namespace Korvex2::Io
