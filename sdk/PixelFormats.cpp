#include "PixelFormats.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "SameName.h"

namespace Korvex2 {
namespace {

// A kernel completes a step of 2 or 4 pixels once it has begun it, reading and writing past the
// last pixel of an odd run. reach is the longest step of any kernel that reads or writes the
// format.
#define FORMAT(name, enumerator, bits, pixels, bytes, reach, convertible, layout, aliases) \
  {PIXEL_FORMAT_##enumerator,                                                              \
   name,                                                                                   \
   "PIXEL_FORMAT_" #enumerator,                                                            \
   aliases,                                                                                \
   bits,                                                                                   \
   pixels,                                                                                 \
   bytes,                                                                                  \
   reach,                                                                                  \
   convertible,                                                                            \
   layout},

// clang-format off
constexpr PixelFormatInfo kFormats[] = {
//     name           enumerator    bits  group of  group  reach  convert-  layout of a group                              aliases
//                                        pixels    bytes         ible
FORMAT("mono8",       MONO8,        8,    1,        1,     2,     true,     "Y",                                           "y8 grey gray gray8 Mono8")
FORMAT("mono12",      MONO12,       12,   2,        3,     2,     true,     "Y0[11:4] Y1[3:0]Y0[3:0] Y1[11:4]",            "y12 Mono12Packed")
FORMAT("mono16",      MONO16,       16,   1,        2,     2,     true,     "Y(16)",                                       "y16 gray16 gray16le GRAY16_LE Mono16")
FORMAT("rgb8",        RGB8,         24,   1,        3,     4,     true,     "R G B",                                       "rgb rgb24 RGB3 PIXEL_FORMAT_RGB")
FORMAT("rgbu",        RGBU,         32,   1,        4,     1,     true,     "R G B A",                                     "rgba rgba8 RGBa8")
FORMAT("rgb16",       RGB16,        48,   1,        6,     1,     true,     "R(16) G(16) B(16)",                           "rgb48 rgb48le RGB6")
FORMAT("bgr",         BGR,          24,   1,        3,     1,     true,     "B G R",                                       "bgr8 bgr24 BGR3")
FORMAT("bgru",        BGRU,         32,   1,        4,     1,     true,     "B G R A",                                     "bgra bgra8 BGRa8 AR24")
FORMAT("bgr16",       BGR16,        48,   1,        6,     1,     true,     "B(16) G(16) R(16)",                           "bgr48 bgr48le BGR6")
FORMAT("bgru16",      BGRU16,       64,   1,        8,     1,     true,     "B(16) G(16) R(16) A(16)",                     "bgra16 BGRa16 bgra64 bgra64le BGRA64_LE")
FORMAT("yuv411",      411YUV8,      12,   4,        6,     4,     true,     "U Y0 Y1 V Y2 Y3",                             "411yuv8 IYU1 uyyvyy411 YUV411_8_UYYVYY")
FORMAT("yuv422",      422YUV8,      16,   2,        4,     2,     true,     "U Y0 V Y1",                                   "422yuv8 UYVY uyvy422 YUV422_8_UYVY")
FORMAT("yuv444",      444YUV8,      24,   1,        3,     1,     true,     "U Y V",                                       "444yuv8 IYU2 YUV8_UYV")
FORMAT("raw8",        RAW8,         8,    1,        1,     2,     true,     "mosaic",                                      "bayer8 BayerRG8 BayerGR8 BayerGB8 BayerBG8 RGGB GRBG GBRG BGGR BA81 bayer_rggb8 bayer_grbg8 bayer_gbrg8 bayer_bggr8")
FORMAT("raw12",       RAW12,        12,   2,        3,     2,     true,     "P0[11:4] P1[3:0]P0[3:0] P1[11:4], mosaic",    "bayer12 BayerRG12Packed BayerGR12Packed BayerGB12Packed BayerBG12Packed")
FORMAT("raw16",       RAW16,        16,   1,        2,     2,     true,     "mosaic(16)",                                  "bayer16 BayerRG16 BayerGR16 BayerGB16 BayerBG16 RG16 GR16 GB16 BYR2 rggb16le grbg16le gbrg16le bggr16le bayer_rggb16le bayer_grbg16le bayer_gbrg16le bayer_bggr16le")
FORMAT("s_mono16",    S_MONO16,     16,   1,        2,     1,     false,    "Y(16, signed)",                               "Mono16s")
FORMAT("s_rgb16",     S_RGB16,      48,   1,        6,     1,     false,    "R(16, signed) G(16, signed) B(16, signed)",   "RGB16s")
FORMAT("yuv422_jpeg", 422YUV8_JPEG, 16,   1,        2,     1,     false,    "compressed stream",                           "422yuv8_jpeg")
};
// clang-format on
#undef FORMAT

bool ListsName(std::string_view list, std::string_view name) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(' '), list.size());
    if (SameName(list.substr(0, end), name)) {
      return true;
    }
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

// Sizes that 64 bits do not hold are this one, so that none wraps around to a small one.
constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

constexpr std::uint64_t RoundUp(std::uint64_t value, std::uint64_t step) {
  return value > kMost - step ? kMost : (value + step - 1) / step * step;
}

}  // namespace

ArrayView<PixelFormatInfo> PixelFormats() noexcept {
  return kFormats;
}

const PixelFormatInfo* FindPixelFormat(PixelFormat format) noexcept {
  const auto* row = std::ranges::find(kFormats, format, &PixelFormatInfo::format);
  return row == std::end(kFormats) ? nullptr : row;
}

const PixelFormatInfo* FindPixelFormat(std::string_view name) noexcept {
  for (const PixelFormatInfo& row : kFormats) {
    if (SameName(row.name, name) || SameName(row.enumerator, name) ||
        ListsName(row.aliases, name)) {
      return &row;
    }
  }
  return nullptr;
}

std::uint64_t PackedSize(const PixelFormatInfo& format, std::uint64_t pixels) noexcept {
  return pixels > (kMost - 7) / format.bitsPerPixel ? kMost
                                                    : (pixels * format.bitsPerPixel + 7) / 8;
}

std::uint64_t GroupedSize(const PixelFormatInfo& format, std::uint64_t pixels) noexcept {
  const std::uint64_t groups = RoundUp(pixels, format.pixelsPerGroup) / format.pixelsPerGroup;
  return groups > kMost / format.bytesPerGroup ? kMost : groups * format.bytesPerGroup;
}

std::uint64_t ReachedSize(const PixelFormatInfo& format, std::uint64_t pixels) noexcept {
  return PackedSize(format, RoundUp(pixels, format.pixelsPerReach));
}

std::uint32_t PackedStride(std::uint32_t cols, std::uint32_t bitsPerPixel) noexcept {
  const auto product = static_cast<std::uint32_t>(std::uint64_t{cols} * bitsPerPixel);  // wraps
  const float bits = static_cast<float>(product);
  return static_cast<std::uint32_t>(std::ceil(static_cast<double>(bits / 8.0F)));
}

}  // namespace Korvex2
