// Depth of grey and raw samples: 8 bits, 12 packed, 16. Nothing is rounded.
//
// Two 12-bit pixels P0 and P1 share three bytes:
//
//     byte 0   P0[11:4]
//     byte 1   P1[3:0] P0[3:0]
//     byte 2   P1[11:4]

#include "kernels/scalar/Scalar.h"

namespace Korvex2::Kernels::Scalar {

void ConvertY8ToY12(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; i += 2) {
    const unsigned a = src[0];
    const unsigned b = src[1];
    dst[0] = static_cast<std::uint8_t>(a);
    dst[2] = static_cast<std::uint8_t>(b);
    dst[1] = static_cast<std::uint8_t>((b << 4) | (a & 0x0F));
    src += 2;
    dst += 3;
  }
}

void ConvertY8ToY16(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::uint8_t sample = src[i];
    dst[2 * i] = sample;
    dst[2 * i + 1] = sample;
  }
}

void ConvertY12ToY8(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; i += 2) {
    const std::uint8_t first = src[0];
    const std::uint8_t second = src[2];
    dst[0] = first;
    dst[1] = second;
    src += 3;
    dst += 2;
  }
}

// On little-endian hosts the nibbles of byte 1 are read the other way round from how the writers
// above and below place them. Frames have been stored by both; the difference stays.
void ConvertY12ToY16(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags flags) {
  for (std::size_t i = 0; i < pixels; i += 2) {
    const std::uint8_t high0 = src[0];
    const std::uint8_t lows = src[1];
    const std::uint8_t high1 = src[2];
    const auto upper = static_cast<std::uint8_t>(lows & 0xF0);
    const auto lower = static_cast<std::uint8_t>(lows << 4);
    dst[0] = flags.littleEndian ? upper : lower;
    dst[1] = high0;
    dst[2] = flags.littleEndian ? lower : upper;
    dst[3] = high1;
    src += 3;
    dst += 4;
  }
}

void ConvertY16ToY8(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; ++i) {
    dst[i] = src[2 * i + 1];
  }
}

void ConvertY16ToY12(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  for (std::size_t i = 0; i < pixels; i += 2) {
    const unsigned low0 = src[0];
    const std::uint8_t high0 = src[1];
    const unsigned low1 = src[2];
    const std::uint8_t high1 = src[3];
    dst[0] = high0;
    dst[2] = high1;
    dst[1] = static_cast<std::uint8_t>((low0 >> 4) | (low1 & 0xF0));
    src += 4;
    dst += 3;
  }
}

}  // namespace Korvex2::Kernels::Scalar
