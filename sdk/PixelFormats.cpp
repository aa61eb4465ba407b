#include "PixelFormats.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include "SameName.h"

namespace Korvex2 {
namespace {

// The bytes of a group as text: "U Y0 V Y1", "B(16) G(16) R(16)".
struct LayoutText {
  std::array<char, 64> chars{};
  std::size_t size = 0;

  constexpr void Append(std::string_view text) {
    for (const char c : text) {
      chars.at(size++) = c;
    }
  }
  constexpr void Append(char c) { Append(std::string_view(&c, 1)); }
  constexpr operator std::string_view() const { return {chars.data(), size}; }
};

// Bits 11 to 4 of both samples about the byte that holds both low halves.
constexpr LayoutText PackedLayout(char sample) {
  LayoutText text;
  for (const std::string_view bits : {"0[11:4] ", "1[3:0]", "0[3:0] ", "1[11:4]"}) {
    text.Append(sample);
    text.Append(bits);
  }
  return text;
}

constexpr LayoutText LayoutOf(PixelFamily family, std::uint32_t bits, bool isSigned,
                              SampleOrder order, std::string_view samples) {
  const bool isRaw = family == PixelFamily::Raw;
  LayoutText text;
  if (family == PixelFamily::Stream) {
    text.Append("compressed stream");
    return text;
  }
  if (order == SampleOrder::Packed) {
    text = PackedLayout(isRaw ? 'P' : samples[0]);
    text.Append(isRaw ? ", mosaic" : "");
    return text;
  }
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const std::string_view before = samples.substr(0, i);
    text.Append(i == 0 ? "" : " ");
    text.Append(isRaw ? "mosaic" : samples.substr(i, 1));
    if (std::ranges::count(samples, samples[i]) > 1) {
      text.Append(static_cast<char>('0' + std::ranges::count(before, samples[i])));
    }
    if (bits > 8) {
      text.Append(isSigned ? "(16, signed)" : "(16)");
    }
  }
  return text;
}

enum Sign : bool { Unsigned, Signed };

#define KORVEX2_COPIED_FORMAT(enumerator, value, name, family, bits, sign, order, samples, ...) \
  constexpr LayoutText kLayout##enumerator =                                                    \
      LayoutOf(PixelFamily::family, bits, sign, SampleOrder::order, samples);
#define KORVEX2_FORMAT(enumerator, value, name, routine, ...) \
  KORVEX2_COPIED_FORMAT(enumerator, value, name, __VA_ARGS__)
#include "Formats.def"

#define ROW(convertible, enumerator, name, family, bits, sign, order, samples, bitsPerPixel, \
            pixels, bytes, reach, note, aliases)                                             \
  {PIXEL_FORMAT_##enumerator,                                                                \
   name,                                                                                     \
   "PIXEL_FORMAT_" #enumerator,                                                              \
   aliases,                                                                                  \
   PixelFamily::family,                                                                      \
   bits,                                                                                     \
   sign,                                                                                     \
   SampleOrder::order,                                                                       \
   samples,                                                                                  \
   bitsPerPixel,                                                                             \
   pixels,                                                                                   \
   bytes,                                                                                    \
   reach,                                                                                    \
   convertible,                                                                              \
   kLayout##enumerator},

constexpr PixelFormatInfo kFormats[] = {
#define KORVEX2_FORMAT(enumerator, value, name, routine, ...) \
  ROW(true, enumerator, name, __VA_ARGS__)
#define KORVEX2_COPIED_FORMAT(enumerator, value, name, ...) \
  ROW(false, enumerator, name, __VA_ARGS__)
#include "Formats.def"
};
#undef ROW

// What a row says in two ways, it says alike.
constexpr bool IsConsistent(const PixelFormatInfo& row) {
  const std::uint32_t bits = 8 * row.bytesPerGroup;
  const bool isStream = row.family == PixelFamily::Stream;
  const std::uint32_t bitsOfOrder = row.order == SampleOrder::Bytes    ? 8
                                    : row.order == SampleOrder::Packed ? 12
                                                                       : 16;
  return bits == row.bitsPerPixel * row.pixelsPerGroup && row.bitsPerSample == bitsOfOrder &&
         (isStream || bits == row.bitsPerSample * row.samples.size()) &&
         row.pixelsPerReach % row.pixelsPerGroup == 0;
}
static_assert(std::ranges::all_of(kFormats, IsConsistent));

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

bool IsLowByteFirst(const PixelFormatInfo& format) noexcept {
  return format.order == SampleOrder::LowFirst || std::endian::native == std::endian::little;
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
