#pragma once

/// @file
/// The table of pixel formats: names, sizes, layouts.

#include <cstdint>
#include <string_view>

#include "ArrayView.h"
#include "Korvex2Defs.h"
#include "Korvex2Export.h"

namespace Korvex2 {

/// What the samples of a format are.
enum class PixelFamily : std::uint8_t {
  Grey,   ///< luma alone
  Rgb,    ///< red, green, blue, perhaps alpha, in whatever order
  Yuv,    ///< luma and two chroma channels, which pixels may share
  Raw,    ///< a Bayer mosaic: one colour a pixel, which the tile tells
  Stream  ///< compressed
};

/// How the bits of samples lie in bytes.
enum class SampleOrder : std::uint8_t {
  Bytes,     ///< a byte each
  Packed,    ///< two samples of 12 bits in three bytes
  LowFirst,  ///< words of 16 bits, the low byte first on every host
  Host       ///< words of 16 bits in the byte order of the host
};

/// One row of the table, Formats.def. All strings are static.
struct PixelFormatInfo {
  PixelFormat format;           ///< its value
  std::string_view name;        ///< short name: "mono12", "bgru16", "yuv422", "raw8"
  std::string_view enumerator;  ///< "PIXEL_FORMAT_MONO12"
  std::string_view aliases;  ///< other names, separated by spaces: GenICam PFNC, FourCC, V4L2 ...
  PixelFamily family;        ///< what the samples are
  std::uint32_t bitsPerSample;  ///< 8, 12 or 16
  bool isSigned;                ///< whether samples are below zero too
  SampleOrder order;            ///< how the bits of samples lie in bytes
  std::string_view samples;     ///< a letter for each sample of a group: "BGRA", "UYVY", "M" mosaic
  std::uint32_t bitsPerPixel;   ///< chroma that pixels share counted in: 16 for yuv422
  std::uint32_t pixelsPerGroup;  ///< pixels that share whole bytes: 1, 2 or 4
  std::uint32_t bytesPerGroup;   ///< the whole bytes that they share
  std::uint32_t pixelsPerReach;  ///< kernels may touch the run rounded up to this many pixels
  bool convertible;              ///< whether the converter reads and writes it
  std::string_view layout;       ///< the bytes of one group in order

  /// Whether it is a Bayer mosaic.
  constexpr bool IsRaw() const noexcept { return family == PixelFamily::Raw; }
  /// Whether a sample has more than 8 bits.
  constexpr bool IsDeep() const noexcept { return bitsPerSample > 8; }
  /// Whether blue comes before red.
  constexpr bool IsBlueFirst() const noexcept { return samples.substr(0, 1) == "B"; }
  /// Samples of a pixel, alpha included; 0 where pixels share bytes, and of a stream.
  constexpr std::uint32_t Channels() const noexcept {
    return pixelsPerGroup == 1 ? static_cast<std::uint32_t>(samples.size()) : 0;
  }
};

/// Every format that the library knows by name, convertible ones first.
KORVEX2_API ArrayView<PixelFormatInfo> PixelFormats() noexcept;

/// The row of a format, or null for a value that names none.
KORVEX2_API const PixelFormatInfo* FindPixelFormat(PixelFormat format) noexcept;

/// The row with this name, enumerator or alias; case is ignored. Null when there is none.
KORVEX2_API const PixelFormatInfo* FindPixelFormat(std::string_view name) noexcept;

/// Whether the low byte of a word comes first on this host, in a format of 16 bits a sample.
KORVEX2_API bool IsLowByteFirst(const PixelFormatInfo& format) noexcept;

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
