#include "analysis/Difference.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "analysis/Planes.h"
#include "analysis/Quality.h"
#include "io/Raster.h"
#include "processing/Converted.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

double PeakOf(const Image& image) {
  return (1U << FindPixelFormat(image.GetPixelFormat())->bitsPerSample) - 1;
}

unsigned Distance(std::uint16_t a, std::uint16_t b) {
  return static_cast<unsigned>(std::abs(a - b));
}

double SquaredErrors(const Plane& first, const Plane& second) {
  double sum = 0;
  for (std::size_t i = 0; i < first.samples.size(); ++i) {
    const double distance = Distance(first.samples[i], second.samples[i]);
    sum += distance * distance;
  }
  return sum;
}

std::optional<double> SsimOf(const ChannelPair& pair) {
  return std::min(pair.width, pair.height) < kSsimWindow ? std::nullopt : std::optional(Ssim(pair));
}

ChannelDifference CompareChannel(const Plane& first, const Plane& second, const Image& image) {
  const double peak = PeakOf(image);
  ChannelDifference result{first.channel, 0, {}, 0, 0};
  for (std::size_t i = 0; i < first.samples.size(); ++i) {
    const unsigned distance = Distance(first.samples[i], second.samples[i]);
    result.largest = std::max(result.largest, distance);
    result.differing += distance == 0 ? 0 : 1;
  }
  result.psnr = Psnr(SquaredErrors(first, second), static_cast<double>(first.samples.size()), peak);
  result.ssim = SsimOf({first.samples, second.samples, image.GetCols(), image.GetRows(), peak});
  return result;
}

bool DiffersAt(const std::vector<Plane>& first, const std::vector<Plane>& second, std::size_t i) {
  for (std::size_t c = 0; c < first.size(); ++c) {
    if (first[c].samples[i] != second[c].samples[i]) {
      return true;
    }
  }
  return false;
}

std::vector<std::uint16_t> SamplesAt(const std::vector<Plane>& planes, std::size_t i) {
  std::vector<std::uint16_t> samples;
  for (const Plane& plane : planes) {
    samples.push_back(plane.samples[i]);
  }
  return samples;
}

std::optional<double> MeanSsim(const std::vector<ChannelDifference>& channels) {
  double sum = 0;
  for (const ChannelDifference& channel : channels) {
    if (!channel.ssim) {
      return std::nullopt;
    }
    sum += *channel.ssim;
  }
  return sum / static_cast<double>(channels.size());
}

bool IsYuv(PixelFormat format) {
  return format == PIXEL_FORMAT_411YUV8 || format == PIXEL_FORMAT_422YUV8 ||
         format == PIXEL_FORMAT_444YUV8;
}

// Which of the places of R, G and B in the picture a channel is drawn in.
std::string_view PlacesOf(char channel) {
  switch (channel) {
    case 'R':
      return "R";
    case 'G':
      return "G";
    case 'B':
      return "B";
    default:
      return "RGB";
  }
}

// Rounded up, so that no difference vanishes.
unsigned char Brightness(unsigned distance, double amplify, double peak) {
  return static_cast<unsigned char>(std::min(255.0, std::ceil(distance * amplify * 255 / peak)));
}

void DrawChannel(const Plane& first, const Plane& second, double amplify, double peak,
                 unsigned char* picture) {
  constexpr std::string_view kOrder = "RGB";
  for (std::size_t i = 0; i < first.samples.size(); ++i) {
    const unsigned char value =
        Brightness(Distance(first.samples[i], second.samples[i]), amplify, peak);
    for (const char place : PlacesOf(first.channel)) {
      unsigned char& sample = picture[3 * i + kOrder.find(place)];
      sample = std::max(sample, value);
    }
  }
}

}  // namespace

Difference Compare(const Image& first, const Image& second) {
  const std::vector<Plane> a = PixelPlanesOf(first);
  const std::vector<Plane> b = PixelPlanesOf(second);
  const std::size_t pixels = a.front().samples.size();
  Difference result{{}, 0, {}, 0, {}};
  double squaredErrors = 0;
  for (std::size_t c = 0; c < a.size(); ++c) {
    result.channels.push_back(CompareChannel(a[c], b[c], first));
    squaredErrors += SquaredErrors(a[c], b[c]);
  }
  result.psnr = Psnr(squaredErrors, static_cast<double>(pixels) * static_cast<double>(a.size()),
                     PeakOf(first));
  result.ssim = MeanSsim(result.channels);
  for (std::size_t i = 0; i < pixels; ++i) {
    if (!DiffersAt(a, b, i)) {
      continue;
    }
    ++result.differing;
    if (!result.at) {
      result.at = {static_cast<std::uint32_t>(i % first.GetCols()),
                   static_cast<std::uint32_t>(i / first.GetCols()), SamplesAt(a, i),
                   SamplesAt(b, i)};
    }
  }
  return result;
}

Image DrawDifference(const Image& first, const Image& second, double amplify) {
  if (IsYuv(first.GetPixelFormat())) {
    return DrawDifference(Converted(first, PIXEL_FORMAT_RGB8), Converted(second, PIXEL_FORMAT_RGB8),
                          amplify);
  }
  const std::vector<Plane> a = PixelPlanesOf(first);
  const std::vector<Plane> b = PixelPlanesOf(second);
  Image picture =
      NewImage(first.GetCols(), first.GetRows(), *FindPixelFormat(PIXEL_FORMAT_RGB8), NONE);
  for (std::size_t c = 0; c < a.size(); ++c) {
    DrawChannel(a[c], b[c], amplify, PeakOf(first), picture.GetData());
  }
  return picture;
}

}  // namespace Korvex2::Tool
