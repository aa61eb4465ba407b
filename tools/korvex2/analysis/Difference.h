#pragma once

/// Where and how far two images of one format and size differ.

#include <cstdint>
#include <optional>
#include <vector>

#include "Image.h"

namespace Korvex2::Tool {

struct ChannelDifference {
  char channel;                ///< as in Plane
  double psnr;                 ///< dB; infinite for equal channels
  std::optional<double> ssim;  ///< nothing where a side is shorter than the window
  std::uint32_t largest;       ///< the largest absolute difference of two samples
  std::uint64_t differing;     ///< how many pixels differ in the channel
};

struct Place {
  std::uint32_t x, y;
  std::vector<std::uint16_t> first, second;  ///< the samples there, a channel each
};

struct Difference {
  std::vector<ChannelDifference> channels;
  double psnr;                 ///< of all samples of all channels
  std::optional<double> ssim;  ///< the mean over the channels
  std::uint64_t differing;     ///< how many pixels differ in any channel
  std::optional<Place> at;     ///< the first pixel that differs, in reading order

  bool IsNone() const { return !at; }
};

/// Pixel by pixel; chroma that pixels share counts for each of them.
Difference Compare(const Image& first, const Image& second);

/// A picture in rgb8 of the absolute differences times `amplify`, black where the images are equal
/// and nowhere else: grey and mosaics in grey, colours in their channels with that of alpha on all
/// three, YUV as the colours that it stands for.
Image DrawDifference(const Image& first, const Image& second, double amplify);

}  // namespace Korvex2::Tool
