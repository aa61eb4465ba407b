#pragma once

/// What a stream of lossless JPEG says of itself, which is how cameras compress mosaics.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Korvex2::Io {

struct LosslessJpeg {
  std::uint64_t lines = 0;
  std::uint64_t columns = 0;     ///< in each component of a line
  std::uint64_t components = 0;  ///< 1 to 4
  std::uint64_t size = 0;        ///< bytes up to its end; 0 where that is missing

  std::uint64_t SamplesOfLine() const { return columns * components; }
  std::uint64_t Samples() const { return lines * SamplesOfLine(); }
};

/// The stream that begins where `bytes` do; nothing where none does, or none with samples. Decodes
/// no sample. Some cameras write a `gap` of bytes behind the frame header of a single component.
std::optional<LosslessJpeg> FindLosslessJpeg(std::span<const unsigned char> bytes,
                                             std::size_t gap = 0);

}  // namespace Korvex2::Io
