#pragma once

/// Reading the caller's mosaic: any columns of any row, mirrored about the edge samples.

#include <cstddef>
#include <cstdint>

namespace Korvex2::Bayer {

/// The place within 0 .. size - 1 that stands for `position`, mirrored about the first and the last
/// sample as often as it takes. Keeps the parity, hence the colour.
std::ptrdiff_t Mirrored(std::ptrdiff_t position, std::ptrdiff_t size);

/// Reads columns [from, to) of a row of `cols` samples, mirrored, into out[0] and following.
/// The type of `out` and the bytes of a sample choose the conversion: 8-bit samples that go to 16
/// bits are multiplied by 257, 16-bit samples are stored low byte first.
void LoadRow8(const unsigned char* row, std::ptrdiff_t cols, std::ptrdiff_t from, std::ptrdiff_t to,
              std::uint8_t* out);
void LoadRow8(const unsigned char* row, std::ptrdiff_t cols, std::ptrdiff_t from, std::ptrdiff_t to,
              std::uint16_t* out);
void LoadRow16(const unsigned char* row, std::ptrdiff_t cols, std::ptrdiff_t from,
               std::ptrdiff_t to, std::uint16_t* out);

}  // namespace Korvex2::Bayer
