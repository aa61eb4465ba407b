#include "reference/Formats.h"

#include <algorithm>
#include <cmath>

namespace Reference {
namespace {

// clang-format off
constexpr FormatRow kFormats[] = {
    // value      name           bits reach convertible
    {MONO8,       "MONO8",        8,  2,    true},   // packed to 12 bits in pairs
    {MONO12,      "MONO12",      12,  2,    true},
    {MONO16,      "MONO16",      16,  2,    true},   // packed to 12 bits in pairs
    {RGB8,        "RGB8",        24,  4,    true},   // encoded to 4:1:1 in fours
    {RGBU,        "RGBU",        32,  1,    true},
    {RGB16,       "RGB16",       48,  1,    true},
    {BGR,         "BGR",         24,  1,    true},
    {BGRU,        "BGRU",        32,  1,    true},
    {BGR16,       "BGR16",       48,  1,    true},
    {BGRU16,      "BGRU16",      64,  1,    true},
    {YUV411,      "YUV411",      12,  4,    true},
    {YUV422,      "YUV422",      16,  2,    true},
    {YUV444,      "YUV444",      24,  1,    true},
    {RAW8,        "RAW8",         8,  2,    true},
    {RAW12,       "RAW12",       12,  2,    true},
    {RAW16,       "RAW16",       16,  2,    true},
    {S_MONO16,    "S_MONO16",    16,  1,    false},
    {S_RGB16,     "S_RGB16",     48,  1,    false},
    {YUV422_JPEG, "YUV422_JPEG", 16,  1,    false},
};
// clang-format on

}  // namespace

std::span<const FormatRow> Formats() {
  return kFormats;
}

const FormatRow* FindFormat(Format format) {
  for (const FormatRow& row : kFormats) {
    if (row.value == format) return &row;
  }
  return nullptr;
}

unsigned BitsPerPixel(Format format) {
  const FormatRow* row = FindFormat(format);
  return row != nullptr ? row->bits : 0;
}

const char* FormatName(Format format) {
  const FormatRow* row = FindFormat(format);
  return row != nullptr ? row->name : "?";
}

bool IsRaw(Format format) {
  return format == RAW8 || format == RAW12 || format == RAW16;
}

std::uint32_t RowBytes(std::uint32_t cols, unsigned bits) {
  const std::uint32_t product = cols * bits;
  const float inSingle = static_cast<float>(product);
  const float bytes = inSingle / 8.0F;
  return static_cast<std::uint32_t>(std::ceil(static_cast<double>(bytes)));
}

std::uint64_t BufferBytes(std::uint32_t rows, std::uint32_t cols, std::uint32_t stride,
                          Format format) {
  const FormatRow* row = FindFormat(format);
  const std::uint64_t strided = static_cast<std::uint64_t>(rows) * stride;
  if (row == nullptr) return strided;
  const std::uint64_t pixels = static_cast<std::uint64_t>(rows) * cols;
  const std::uint64_t reached = (pixels + row->reach - 1) / row->reach * row->reach;
  return std::max(strided, (reached * row->bits + 7) / 8);
}

std::uint64_t FrameBytes(std::uint32_t rows, std::uint32_t cols, std::uint32_t stride,
                         Format format) {
  const FormatRow* row = FindFormat(format);
  const std::uint64_t strided = static_cast<std::uint64_t>(rows) * stride;
  if (row == nullptr) return strided;
  const std::uint64_t group = format == YUV411                                          ? 4
                              : format == YUV422 || format == MONO12 || format == RAW12 ? 2
                                                                                        : 1;
  const std::uint64_t pixels = static_cast<std::uint64_t>(rows) * cols;
  const std::uint64_t packed = (pixels + group - 1) / group * group * row->bits / 8;
  return stride > RowBytes(cols, row->bits) ? std::max(packed, strided) : packed;
}

}  // namespace Reference
