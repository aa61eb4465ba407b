#include "analysis/Planes.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "terminal/Names.h"

namespace Korvex2::Tool {
namespace {

// A letter for each sample of a group.
struct Layout {
  PixelFormat format;
  unsigned depth;
  std::string_view letters;
};

constexpr Layout kLayouts[] = {
    {PIXEL_FORMAT_MONO8, 8, "Y"},        {PIXEL_FORMAT_MONO12, 12, "YY"},
    {PIXEL_FORMAT_MONO16, 16, "Y"},      {PIXEL_FORMAT_RGB8, 8, "RGB"},
    {PIXEL_FORMAT_RGBU, 8, "RGBA"},      {PIXEL_FORMAT_RGB16, 16, "RGB"},
    {PIXEL_FORMAT_BGR, 8, "BGR"},        {PIXEL_FORMAT_BGRU, 8, "BGRA"},
    {PIXEL_FORMAT_BGR16, 16, "BGR"},     {PIXEL_FORMAT_BGRU16, 16, "BGRA"},
    {PIXEL_FORMAT_411YUV8, 8, "UYYVYY"}, {PIXEL_FORMAT_422YUV8, 8, "UYVY"},
    {PIXEL_FORMAT_444YUV8, 8, "UYV"},    {PIXEL_FORMAT_RAW8, 8, "M"},
    {PIXEL_FORMAT_RAW12, 12, "MM"},      {PIXEL_FORMAT_RAW16, 16, "M"},
};

const Layout* Find(PixelFormat format) {
  const auto* row = std::ranges::find(kLayouts, format, &Layout::format);
  return row == std::end(kLayouts) ? nullptr : row;
}

// Two samples in three bytes: high bits, both low nibbles with the first one low, high bits.
std::uint16_t PackedAt(const unsigned char* bytes, std::size_t index) {
  const unsigned char* pair = bytes + index / 2 * 3;
  const unsigned nibbles = pair[1];
  const unsigned high = index % 2 == 0 ? pair[0] : pair[2];
  const unsigned low = index % 2 == 0 ? nibbles & 15U : nibbles >> 4U;
  return static_cast<std::uint16_t>(high << 4U | low);
}

// Grey and mosaic words have the low byte first on every host, those of colours the host's order.
std::uint16_t WordAt(const unsigned char* bytes, std::size_t index, bool isColour) {
  const unsigned char* word = bytes + 2 * index;
  std::uint16_t value;
  std::memcpy(&value, word, sizeof value);
  return isColour ? value : static_cast<std::uint16_t>(word[1] << 8U | word[0]);
}

std::uint16_t SampleAt(const Layout& layout, const unsigned char* bytes, std::size_t index) {
  switch (layout.depth) {
    case 8:
      return bytes[index];
    case 12:
      return PackedAt(bytes, index);
    default:
      return WordAt(bytes, index, layout.letters.size() > 1);
  }
}

Plane PlaneOf(const Layout& layout, char channel, std::uint32_t pixelsPerGroup,
              const unsigned char* bytes, std::size_t groups) {
  const auto perGroup = std::ranges::count(layout.letters, channel);
  Plane plane{channel, pixelsPerGroup / static_cast<std::uint32_t>(perGroup), {}};
  plane.samples.reserve(groups * static_cast<std::size_t>(perGroup));
  const std::size_t size = layout.letters.size();
  for (std::size_t group = 0; group < groups; ++group) {
    for (std::size_t place = 0; place < size; ++place) {
      if (layout.letters[place] == channel) {
        plane.samples.push_back(SampleAt(layout, bytes, group * size + place));
      }
    }
  }
  return plane;
}

std::vector<std::uint16_t> ForEachPixel(const Plane& plane, std::size_t pixels) {
  std::vector<std::uint16_t> samples(pixels);
  for (std::size_t i = 0; i < pixels; ++i) {
    samples[i] = plane.samples[i / plane.pixelsPerSample];
  }
  return samples;
}

}  // namespace

unsigned DepthOf(PixelFormat format) {
  const Layout* layout = Find(format);
  return layout == nullptr ? 0 : layout->depth;
}

std::vector<Plane> PlanesOf(const PixelFormatInfo& format, const unsigned char* bytes,
                            std::size_t groups) {
  const Layout* layout = Find(format.format);
  std::vector<Plane> planes;
  if (layout == nullptr) {
    return planes;
  }
  for (std::size_t place = 0; place < layout->letters.size(); ++place) {
    const char channel = layout->letters[place];
    if (layout->letters.find(channel) == place) {
      planes.push_back(PlaneOf(*layout, channel, format.pixelsPerGroup, bytes, groups));
    }
  }
  return planes;
}

std::vector<Plane> PixelPlanesOf(const Image& image) {
  const PixelFormatInfo& format = *FindPixelFormat(image.GetPixelFormat());
  const std::size_t pixels = std::size_t{image.GetRows()} * image.GetCols();
  const std::size_t groups = (pixels + format.pixelsPerGroup - 1) / format.pixelsPerGroup;
  std::vector<Plane> planes = PlanesOf(format, image.GetData(), groups);
  for (Plane& plane : planes) {
    plane.samples = ForEachPixel(plane, pixels);
    plane.pixelsPerSample = 1;
  }
  return planes;
}

}  // namespace Korvex2::Tool
