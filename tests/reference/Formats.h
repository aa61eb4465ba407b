#pragma once

/// The oracle's own knowledge of pixel formats: values and sizes, independent of the library's.

#include <cstddef>
#include <cstdint>
#include <span>

namespace Reference {

using Format = std::uint32_t;

// clang-format off
inline constexpr Format UNSPECIFIED = 0,
                        MONO8   = 0x80000000, YUV411  = 0x40000000, YUV422  = 0x20000000,
                        YUV444  = 0x10000000, RGB8    = 0x08000000, MONO16  = 0x04000000,
                        RGB16   = 0x02000000, S_MONO16 = 0x01000000, S_RGB16 = 0x00800000,
                        RAW8    = 0x00400000, RAW16   = 0x00200000, MONO12  = 0x00100000,
                        RAW12   = 0x00080000, BGR     = 0x80000008, BGRU    = 0x40000008,
                        RGBU    = 0x40000002, BGR16   = 0x02000001, BGRU16  = 0x02000002,
                        YUV422_JPEG = 0x40000001;
// clang-format on

struct FormatRow {
  Format value;
  const char* name;
  unsigned bits;
  /// A kernel that reads or writes this format may complete a group of so many pixels.
  unsigned reach;
  /// Source and target of conversions; the others are only copied.
  bool convertible;
};

std::span<const FormatRow> Formats();

/// Null for a value that is no format.
const FormatRow* FindFormat(Format format);

/// 0 for a value that is no format.
unsigned BitsPerPixel(Format format);

/// "?" for a value that is no format.
const char* FormatName(Format format);

bool IsRaw(Format format);

/// Bytes of a row as destinations and temporaries are shaped, its rounding through single precision
/// included.
std::uint32_t RowBytes(std::uint32_t cols, unsigned bits);

/// Bytes that must stand behind an image of this shape: its rows, and its packed pixels with a
/// begun group completed.
std::uint64_t BufferBytes(std::uint32_t rows, std::uint32_t cols, std::uint32_t stride,
                          Format format);

/// Bytes of them that hold pixels: the last group of packed pixels whole, or the rows if these are
/// padded.
std::uint64_t FrameBytes(std::uint32_t rows, std::uint32_t cols, std::uint32_t stride,
                         Format format);

}  // namespace Reference
