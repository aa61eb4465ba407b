#pragma once

/// What makes a frame easier to look at. Never part of a conversion: it comes after, and only when
/// asked.

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "Image.h"

namespace Korvex2::Tool {

struct Area {
  std::uint32_t x, y, width, height;
};

/// Colours are multiplied by these, red first; or, for grey, by what makes their means equal
/// green's.
struct WhiteBalance {
  bool grey;
  std::array<double, 3> gains;
};

/// The samples at these percentiles become black and white.
struct Stretch {
  double low, high;
};

/// Applied in this order. Samples are numbers from 0 to 1 on the way and rounded once, at the end;
/// alpha stays.
struct Grade {
  std::optional<Area> crop;
  std::optional<WhiteBalance> whiteBalance;
  std::optional<Stretch> stretch;  ///< the same for all colours
  std::optional<double> gamma;     ///< the exponent is 1 / gamma

  bool Adjusts() const { return whiteBalance || stretch || gamma; }
};

/// From the texts of the options; a UsageFailure for one that makes no sense. Empty: not given.
std::optional<Area> ParseCrop(const std::string& text);
std::optional<WhiteBalance> ParseWhiteBalance(const std::string& text);
std::optional<Stretch> ParseStretch(const std::string& text);

/// A UsageFailure where frames of the format cannot be adjusted.
void RequireAdjustable(const Grade& grade, PixelFormat target);

/// The format to convert to before it is graded: the target, or its sibling of 16 bits where
/// the source has more than 8, since a dark frame has too few values in 8.
PixelFormat FormatBeforeGrading(const Grade& grade, PixelFormat source, PixelFormat target);

/// An image of that format, graded, in the target format.
Image Graded(Image image, const Grade& grade, PixelFormat target);

}  // namespace Korvex2::Tool
