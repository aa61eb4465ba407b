#pragma once

/// How close a picture comes to the true one. Images are both rgb8 or both rgb16, of the same size.

#include <cstdint>
#include <span>
#include <string>

#include "Image.h"

namespace Korvex2::Tool {

/// So many pixels at each side do not count: methods differ in what they make of borders.
inline constexpr std::uint32_t kQualityBorder = 10;

/// The smallest side that leaves room for one window of the structural similarity.
inline constexpr std::uint32_t kSmallestForQuality = 2 * kQualityBorder + 12;

/// Colour peak signal-to-noise ratio in dB: 10 log10(peak^2 / mean squared error over all samples
/// of all channels); infinite for equal pictures.
double Cpsnr(const Image& truth, const Image& picture);

/// Peak signal-to-noise ratio in dB of `count` samples whose squared errors have this sum.
double Psnr(double squaredErrors, double count, double peak);

/// With two decimals, or "inf".
std::string Decibels(double value);

/// Mean structural similarity after Z. Wang, A. Bovik, H. Sheikh and E. Simoncelli, "Image quality
/// assessment: from error visibility to structural similarity" (2004): Gaussian window of 11 x 11
/// pixels with sigma 1.5, K1 = 0.01, K2 = 0.03, wherever the window lies inside; the mean over red,
/// green and blue. 1 for equal pictures.
double Ssim(const Image& truth, const Image& picture);

/// The same channel of two pictures, width x height samples each.
struct ChannelPair {
  std::span<const std::uint16_t> truth;
  std::span<const std::uint16_t> picture;
  std::size_t width;
  std::size_t height;
  double peak;  ///< the largest value that a sample can have
};

/// Sides of the window of the structural similarity.
inline constexpr std::size_t kSsimWindow = 11;

/// The same of a single channel, of all its pixels; both sides are at least kSsimWindow.
double Ssim(const ChannelPair& pair);

/// A rectangle of a picture.
struct Area {
  std::uint32_t x, y, width, height;
};

/// Where, on a grid of 8 pixels, a square of `side` pixels has the largest mean squared error; of a
/// picture that is smaller, the part that there is.
Area WorstArea(const Image& truth, const Image& picture, std::uint32_t side);

}  // namespace Korvex2::Tool
