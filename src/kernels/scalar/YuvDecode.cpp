// Packed YUV into RGB: BT.601, full range. Chroma terms are truncated toward zero before they meet
// the luma, so an encoded colour does not come back exactly.

#include "kernels/scalar/Clamp.h"
#include "kernels/scalar/Scalar.h"

namespace Korvex2::Kernels::Scalar {
namespace {

struct Chroma {
  std::int16_t rv, guv, bu;
};

Chroma ChromaTerms(std::uint8_t u, std::uint8_t v) {
  const double du = u - 128;
  const double dv = v - 128;
  return {static_cast<std::int16_t>(dv * 1.402),
          static_cast<std::int16_t>((du * 0.344) + (dv * 0.714)),
          static_cast<std::int16_t>(du * 1.772)};
}

void PutPixel(std::uint8_t y, Chroma chroma, std::uint8_t* rgb) {
  rgb[0] = Clamp(static_cast<std::int16_t>(y + chroma.rv));
  rgb[1] = Clamp(static_cast<std::int16_t>(y - chroma.guv));
  rgb[2] = Clamp(static_cast<std::int16_t>(y + chroma.bu));
}

}  // namespace

void ConvertYUV444ToRGB(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::uint8_t y = src[1];
    PutPixel(y, ChromaTerms(src[0], src[2]), dst);
    src += 3;
    dst += 3;
  }
}

void ConvertYUV422ToRGB(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; i += 2) {
    const std::uint8_t y[] = {src[1], src[3]};
    const Chroma chroma = ChromaTerms(src[0], src[2]);
    PutPixel(y[0], chroma, dst);
    PutPixel(y[1], chroma, dst + 3);
    src += 4;
    dst += 6;
  }
}

void ConvertYUV411ToRGB(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; i += 4) {
    const std::uint8_t y[] = {src[1], src[2], src[4], src[5]};
    const Chroma chroma = ChromaTerms(src[0], src[3]);
    for (int k = 0; k < 4; ++k) {
      PutPixel(y[k], chroma, dst + 3 * k);
    }
    src += 6;
    dst += 12;
  }
}

}  // namespace Korvex2::Kernels::Scalar
