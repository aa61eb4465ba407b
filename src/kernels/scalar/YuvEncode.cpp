// RGB into packed YUV: BT.601, full range, chroma offset by 128.

#include <array>

#include "kernels/scalar/ColourSums.h"
#include "kernels/scalar/Scalar.h"

namespace Korvex2::Kernels::Scalar {
namespace {

struct Yuv {
  std::uint8_t y, u, v;
};

Yuv Encode(const std::uint8_t* rgb) {
  const double red = rgb[0];
  const double green = rgb[1];
  const double blue = rgb[2];
  return {static_cast<std::uint8_t>(Luma(red, green, blue)),
          static_cast<std::uint8_t>(ChromaU(red, green, blue)),
          static_cast<std::uint8_t>(ChromaV(red, green, blue))};
}

template <std::size_t Pixels>
std::array<Yuv, Pixels> EncodeGroup(const std::uint8_t* rgb) {
  std::array<Yuv, Pixels> group;
  for (std::size_t i = 0; i < Pixels; ++i) {
    group[i] = Encode(rgb + 3 * i);
  }
  return group;
}

// The chroma of a group is the mean of chroma values that were truncated already, truncated again.
template <std::size_t Pixels>
std::uint8_t Mean(const std::array<Yuv, Pixels>& group, std::uint8_t Yuv::*channel) {
  unsigned sum = 0;
  for (const Yuv& pixel : group) {
    sum += pixel.*channel;
  }
  return static_cast<std::uint8_t>(sum / Pixels);
}

}  // namespace

void ConvertRGBToYUV444(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const Yuv pixel = Encode(src);
    dst[0] = pixel.u;
    dst[1] = pixel.y;
    dst[2] = pixel.v;
    src += 3;
    dst += 3;
  }
}

void ConvertRGBToYUV422(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; i += 2) {
    const auto group = EncodeGroup<2>(src);
    dst[0] = Mean(group, &Yuv::u);
    dst[1] = group[0].y;
    dst[2] = Mean(group, &Yuv::v);
    dst[3] = group[1].y;
    src += 6;
    dst += 4;
  }
}

void ConvertRGBToYUV411(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; i += 4) {
    const auto group = EncodeGroup<4>(src);
    dst[0] = Mean(group, &Yuv::u);
    dst[1] = group[0].y;
    dst[2] = group[1].y;
    dst[3] = Mean(group, &Yuv::v);
    dst[4] = group[2].y;
    dst[5] = group[3].y;
    src += 12;
    dst += 6;
  }
}

}  // namespace Korvex2::Kernels::Scalar
