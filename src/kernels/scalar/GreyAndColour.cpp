// Grey into colour, colour into grey, and colour between 8 and 16 bits.

#include "kernels/scalar/ColourSums.h"
#include "kernels/scalar/Scalar.h"
#include "kernels/scalar/Word.h"

namespace Korvex2::Kernels::Scalar {
namespace {

// Writes each 16-bit grey sample to three colour channels, and an opaque alpha where there is one.
// The sample's bytes are copied as they stand on little-endian hosts and swapped on others.
template <int Channels>
void SpreadGrey16(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags flags) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::uint8_t first = src[flags.littleEndian ? 0 : 1];
    const std::uint8_t second = src[flags.littleEndian ? 1 : 0];
    for (int channel = 0; channel < 3; ++channel) {
      dst[2 * channel] = first;
      dst[2 * channel + 1] = second;
    }
    if constexpr (Channels == 4) {
      dst[6] = 0xFF;
      dst[7] = 0xFF;
    }
    src += 2;
    dst += 2 * Channels;
  }
}

}  // namespace

void ConvertY8ToRGB(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::uint8_t grey = src[i];
    dst[3 * i] = grey;
    dst[3 * i + 1] = grey;
    dst[3 * i + 2] = grey;
  }
}

void ConvertY16ToRGB16(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                       Flags flags) {
  SpreadGrey16<3>(src, dst, pixels, flags);
}

void ConvertY16ToRGBU16(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                        Flags flags) {
  SpreadGrey16<4>(src, dst, pixels, flags);
}

void ConvertRGBToY8(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; ++i) {
    dst[i] = static_cast<std::uint8_t>(Luma(src[3 * i], src[3 * i + 1], src[3 * i + 2]));
  }
}

void ConvertRGBToRGB16(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < 3 * pixels; ++i) {
    const std::uint8_t sample = src[i];
    dst[2 * i] = sample;
    dst[2 * i + 1] = sample;
  }
}

// Samples are words of the host, whatever the flag says. They pass through single precision, which
// holds 16 bits exactly.
void ConvertRGB16ToY16(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const double red = Load<std::uint16_t>(src + 6 * i);
    const double green = Load<std::uint16_t>(src + 6 * i + 2);
    const double blue = Load<std::uint16_t>(src + 6 * i + 4);
    Store(dst + 2 * i, static_cast<std::uint16_t>(Luma(red, green, blue)));
  }
}

void ConvertRGB16ToRGB(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                       Flags flags) {
  const std::size_t highByte = flags.littleEndian ? 1 : 0;
  for (std::size_t i = 0; i < 3 * pixels; ++i) {
    dst[i] = src[2 * i + highByte];
  }
}

}  // namespace Korvex2::Kernels::Scalar
