#pragma once

/// @file
/// The table of pixel formats: names, sizes, layouts.

#include <cstdint>
#include <string_view>

#include "ArrayView.h"
#include "Korvex2Defs.h"
#include "Korvex2Export.h"

namespace Korvex2 {

/// One row of the table. All strings are static.
struct PixelFormatInfo {
  PixelFormat format;           ///< its value
  std::string_view name;        ///< short name: "mono12", "bgru16", "yuv422", "raw8"
  std::string_view enumerator;  ///< "PIXEL_FORMAT_MONO12"
  std::string_view aliases;    ///< other names, separated by spaces: GenICam PFNC, FourCC, V4L2 ...
  std::uint32_t bitsPerPixel;  ///< chroma that pixels share counted in: 16 for yuv422
  std::uint32_t pixelsPerGroup;  ///< pixels that share whole bytes: 1, 2 or 4
  std::uint32_t bytesPerGroup;   ///< the whole bytes that they share
  std::uint32_t pixelsPerReach;  ///< kernels may touch the run rounded up to this many pixels
  bool convertible;              ///< whether the converter reads and writes it
  std::string_view layout;       ///< the bytes of one group in order
};

/// Every format that the library knows by name, convertible ones first.
KORVEX2_API ArrayView<PixelFormatInfo> PixelFormats() noexcept;

/// The row of a format, or null for a value that names none.
KORVEX2_API const PixelFormatInfo* FindPixelFormat(PixelFormat format) noexcept;

/// The row with this name, enumerator or alias; case is ignored. Null when there is none.
KORVEX2_API const PixelFormatInfo* FindPixelFormat(std::string_view name) noexcept;

/// Bytes of `pixels` tightly packed pixels, a begun one counted whole; at most 2^64 - 1.
KORVEX2_API std::uint64_t PackedSize(const PixelFormatInfo& format, std::uint64_t pixels) noexcept;

/// Bytes of `pixels` tightly packed pixels with the last group whole: what a frame keeps. An odd
/// run of 4:2:2 or 4:1:1 has the V of its last pixels there.
KORVEX2_API std::uint64_t GroupedSize(const PixelFormatInfo& format, std::uint64_t pixels) noexcept;

/// Bytes that a kernel may touch for a run of `pixels`: the run rounded up to pixelsPerReach.
KORVEX2_API std::uint64_t ReachedSize(const PixelFormatInfo& format, std::uint64_t pixels) noexcept;

/// Bytes of a row of `cols` pixels of `bitsPerPixel` bits, as the converter shapes destinations and
/// temporaries: ceil(float(cols * bits) / 8). The product wraps at 32 bits and passes through
/// single precision, so beyond 16,777,216 bits a row the stride follows the rounding of the float
/// and can fall short of the packed row; Image allots the packed size regardless.
KORVEX2_API std::uint32_t PackedStride(std::uint32_t cols, std::uint32_t bitsPerPixel) noexcept;

}  // namespace Korvex2
