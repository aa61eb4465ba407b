#include "analysis/Planes.h"

#include <algorithm>

namespace Korvex2::Tool {
namespace {

// Two samples in three bytes: high bits, both low nibbles with the first one low, high bits.
std::uint16_t PackedAt(const unsigned char* bytes, std::size_t index) {
  const unsigned char* pair = bytes + index / 2 * 3;
  const unsigned nibbles = pair[1];
  const unsigned high = index % 2 == 0 ? pair[0] : pair[2];
  const unsigned low = index % 2 == 0 ? nibbles & 15U : nibbles >> 4U;
  return static_cast<std::uint16_t>(high << 4U | low);
}

std::uint16_t WordAt(const unsigned char* bytes, std::size_t index, bool isLowByteFirst) {
  const unsigned char* word = bytes + 2 * index;
  const unsigned low = word[isLowByteFirst ? 0 : 1];
  const unsigned high = word[isLowByteFirst ? 1 : 0];
  return static_cast<std::uint16_t>(high << 8U | low);
}

std::uint16_t SampleAt(SampleOrder order, bool isLowByteFirst, const unsigned char* bytes,
                       std::size_t index) {
  switch (order) {
    case SampleOrder::Bytes:
      return bytes[index];
    case SampleOrder::Packed:
      return PackedAt(bytes, index);
    case SampleOrder::LowFirst:
    case SampleOrder::Host:
      break;
  }
  return WordAt(bytes, index, isLowByteFirst);
}

Plane PlaneOf(const PixelFormatInfo& format, char channel, const unsigned char* bytes,
              std::size_t groups) {
  const auto perGroup = std::ranges::count(format.samples, channel);
  Plane plane{channel, format.pixelsPerGroup / static_cast<std::uint32_t>(perGroup), {}};
  plane.samples.reserve(groups * static_cast<std::size_t>(perGroup));
  const std::size_t size = format.samples.size();
  const bool isLowByteFirst = IsLowByteFirst(format);
  for (std::size_t group = 0; group < groups; ++group) {
    for (std::size_t place = 0; place < size; ++place) {
      if (format.samples[place] == channel) {
        plane.samples.push_back(
            SampleAt(format.order, isLowByteFirst, bytes, group * size + place));
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

std::vector<Plane> PlanesOf(const PixelFormatInfo& format, const unsigned char* bytes,
                            std::size_t groups) {
  std::vector<Plane> planes;
  for (std::size_t place = 0; place < format.samples.size(); ++place) {
    const char channel = format.samples[place];
    if (format.samples.find(channel) == place) {
      planes.push_back(PlaneOf(format, channel, bytes, groups));
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
