#include "PixelFormats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <string>

#include "reference/Formats.h"

namespace Korvex2::Test {
namespace {

std::string Upper(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return upper;
}

TEST(PixelFormats, ListEveryFormatOnceConvertibleOnesFirst) {
  EXPECT_EQ(PixelFormats().size(), Reference::Formats().size());
  std::set<PixelFormat> seen;
  bool convertible = true;
  for (const PixelFormatInfo& info : PixelFormats()) {
    EXPECT_TRUE(seen.insert(info.format).second) << info.name;
    EXPECT_TRUE(convertible || !info.convertible) << info.name;
    convertible = info.convertible;
  }
}

TEST(PixelFormats, AgreeWithTheOracleOnSizes) {
  for (const Reference::FormatRow& row : Reference::Formats()) {
    const PixelFormatInfo* info = FindPixelFormat(static_cast<PixelFormat>(row.value));
    ASSERT_NE(info, nullptr) << row.name;
    EXPECT_EQ(info->format, row.value);
    EXPECT_EQ(info->bitsPerPixel, row.bits) << row.name;
    EXPECT_EQ(info->convertible, row.convertible) << row.name;
    EXPECT_EQ(info->pixelsPerGroup * info->bitsPerPixel, info->bytesPerGroup * 8) << row.name;
    // The table may reach further than the kernels need, never less.
    EXPECT_GE(info->pixelsPerReach, row.reach) << row.name;
    EXPECT_EQ(info->pixelsPerReach % info->pixelsPerGroup, 0U) << row.name;
    EXPECT_FALSE(info->layout.empty()) << row.name;
    for (std::uint64_t pixels = 0; pixels < 20; ++pixels) {
      EXPECT_GE(PackedSize(*info, pixels) * 8, pixels * row.bits) << row.name;
      EXPECT_GE(ReachedSize(*info, pixels),
                Reference::BufferBytes(1, static_cast<std::uint32_t>(pixels), 0, row.value))
          << row.name;
    }
  }
}

struct Samples {
  PixelFormat format;
  PixelFamily family;
  unsigned bits;
  SampleOrder order;
  std::string_view samples;
  unsigned channels;
  bool blueFirst;
};

TEST(PixelFormats, TellTheirSamples) {
  // clang-format off
  const Samples kSamples[] = {
      {PIXEL_FORMAT_MONO8,          PixelFamily::Grey,   8,  SampleOrder::Bytes,    "Y",      1, false},
      {PIXEL_FORMAT_MONO12,         PixelFamily::Grey,   12, SampleOrder::Packed,   "YY",     0, false},
      {PIXEL_FORMAT_MONO16,         PixelFamily::Grey,   16, SampleOrder::LowFirst, "Y",      1, false},
      {PIXEL_FORMAT_RGB8,           PixelFamily::Rgb,    8,  SampleOrder::Bytes,    "RGB",    3, false},
      {PIXEL_FORMAT_RGBU,           PixelFamily::Rgb,    8,  SampleOrder::Bytes,    "RGBA",   4, false},
      {PIXEL_FORMAT_RGB16,          PixelFamily::Rgb,    16, SampleOrder::Host,     "RGB",    3, false},
      {PIXEL_FORMAT_BGR,            PixelFamily::Rgb,    8,  SampleOrder::Bytes,    "BGR",    3, true},
      {PIXEL_FORMAT_BGRU,           PixelFamily::Rgb,    8,  SampleOrder::Bytes,    "BGRA",   4, true},
      {PIXEL_FORMAT_BGR16,          PixelFamily::Rgb,    16, SampleOrder::Host,     "BGR",    3, true},
      {PIXEL_FORMAT_BGRU16,         PixelFamily::Rgb,    16, SampleOrder::Host,     "BGRA",   4, true},
      {PIXEL_FORMAT_411YUV8,        PixelFamily::Yuv,    8,  SampleOrder::Bytes,    "UYYVYY", 0, false},
      {PIXEL_FORMAT_422YUV8,        PixelFamily::Yuv,    8,  SampleOrder::Bytes,    "UYVY",   0, false},
      {PIXEL_FORMAT_444YUV8,        PixelFamily::Yuv,    8,  SampleOrder::Bytes,    "UYV",    3, false},
      {PIXEL_FORMAT_RAW8,           PixelFamily::Raw,    8,  SampleOrder::Bytes,    "M",      1, false},
      {PIXEL_FORMAT_RAW12,          PixelFamily::Raw,    12, SampleOrder::Packed,   "MM",     0, false},
      {PIXEL_FORMAT_RAW16,          PixelFamily::Raw,    16, SampleOrder::LowFirst, "M",      1, false},
      {PIXEL_FORMAT_S_MONO16,       PixelFamily::Grey,   16, SampleOrder::LowFirst, "Y",      1, false},
      {PIXEL_FORMAT_S_RGB16,        PixelFamily::Rgb,    16, SampleOrder::Host,     "RGB",    3, false},
      {PIXEL_FORMAT_422YUV8_JPEG,   PixelFamily::Stream, 8,  SampleOrder::Bytes,    "",       0, false},
  };
  // clang-format on
  EXPECT_EQ(std::size(kSamples), PixelFormats().size());
  for (const Samples& expected : kSamples) {
    const PixelFormatInfo& info = *FindPixelFormat(expected.format);
    EXPECT_EQ(info.family, expected.family) << info.name;
    EXPECT_EQ(info.bitsPerSample, expected.bits) << info.name;
    EXPECT_EQ(info.order, expected.order) << info.name;
    EXPECT_EQ(info.samples, expected.samples) << info.name;
    EXPECT_EQ(info.Channels(), expected.channels) << info.name;
    EXPECT_EQ(info.IsBlueFirst(), expected.blueFirst) << info.name;
    EXPECT_EQ(info.IsRaw(), Reference::IsRaw(expected.format)) << info.name;
    EXPECT_EQ(info.IsDeep(), expected.bits > 8) << info.name;
    EXPECT_EQ(info.isSigned, info.name.starts_with("s_")) << info.name;
  }
}

TEST(PixelFormats, ShowTheirLayouts) {
  const auto layout = [](PixelFormat format) { return FindPixelFormat(format)->layout; };
  EXPECT_EQ(layout(PIXEL_FORMAT_MONO8), "Y");
  EXPECT_EQ(layout(PIXEL_FORMAT_MONO12), "Y0[11:4] Y1[3:0]Y0[3:0] Y1[11:4]");
  EXPECT_EQ(layout(PIXEL_FORMAT_MONO16), "Y(16)");
  EXPECT_EQ(layout(PIXEL_FORMAT_RGBU), "R G B A");
  EXPECT_EQ(layout(PIXEL_FORMAT_BGR16), "B(16) G(16) R(16)");
  EXPECT_EQ(layout(PIXEL_FORMAT_411YUV8), "U Y0 Y1 V Y2 Y3");
  EXPECT_EQ(layout(PIXEL_FORMAT_422YUV8), "U Y0 V Y1");
  EXPECT_EQ(layout(PIXEL_FORMAT_444YUV8), "U Y V");
  EXPECT_EQ(layout(PIXEL_FORMAT_RAW8), "mosaic");
  EXPECT_EQ(layout(PIXEL_FORMAT_RAW12), "P0[11:4] P1[3:0]P0[3:0] P1[11:4], mosaic");
  EXPECT_EQ(layout(PIXEL_FORMAT_RAW16), "mosaic(16)");
  EXPECT_EQ(layout(PIXEL_FORMAT_S_RGB16), "R(16, signed) G(16, signed) B(16, signed)");
  EXPECT_EQ(layout(PIXEL_FORMAT_422YUV8_JPEG), "compressed stream");
}

TEST(PixelFormats, StoreTheLowByteFirstWhereTheRowOrTheHostSaysSo) {
  const std::uint16_t word = 1;
  const bool littleEndian = *reinterpret_cast<const unsigned char*>(&word) == 1;
  EXPECT_TRUE(IsLowByteFirst(*FindPixelFormat(PIXEL_FORMAT_MONO16)));
  EXPECT_TRUE(IsLowByteFirst(*FindPixelFormat(PIXEL_FORMAT_RAW16)));
  EXPECT_EQ(IsLowByteFirst(*FindPixelFormat(PIXEL_FORMAT_BGRU16)), littleEndian);
}

TEST(PixelFormats, NamesAreCounted) {
  EXPECT_EQ(NUM_PIXEL_FORMATS, 20);
}

TEST(PixelFormats, PackedSizeIsTheBytesBegunAndReachedSizeTheGroupsBegun) {
  const PixelFormatInfo& mono12 = *FindPixelFormat(PIXEL_FORMAT_MONO12);
  EXPECT_EQ(PackedSize(mono12, 2), 3U);
  EXPECT_EQ(ReachedSize(mono12, 1), 3U);
  EXPECT_EQ(ReachedSize(mono12, 3), 6U);
  const PixelFormatInfo& rgb = *FindPixelFormat(PIXEL_FORMAT_RGB8);
  EXPECT_EQ(PackedSize(rgb, 5), 15U);
  EXPECT_EQ(ReachedSize(rgb, 5), 24U);
  const PixelFormatInfo& yuv411 = *FindPixelFormat(PIXEL_FORMAT_411YUV8);
  EXPECT_EQ(ReachedSize(yuv411, 1), 6U);
  const PixelFormatInfo& bgru16 = *FindPixelFormat(PIXEL_FORMAT_BGRU16);
  EXPECT_EQ(PackedSize(bgru16, 0xFFFFFFFFU), 8ULL * 0xFFFFFFFFU);
}

TEST(PixelFormats, SizesOfMoreThan64BitsAreTheLargest) {
  constexpr std::uint64_t kMost = 0xFFFFFFFFFFFFFFFFU;
  constexpr std::uint64_t kPixels = std::uint64_t{1} << 61;  // 2^64 bytes of bgru16
  const PixelFormatInfo& bgru16 = *FindPixelFormat(PIXEL_FORMAT_BGRU16);
  EXPECT_EQ(PackedSize(bgru16, kPixels), kMost);
  EXPECT_EQ(GroupedSize(bgru16, kPixels), kMost);
  EXPECT_EQ(ReachedSize(bgru16, kPixels), kMost);
  for (const PixelFormatInfo& format : PixelFormats()) {
    EXPECT_GE(GroupedSize(format, kMost), kMost / 2) << format.name;
    EXPECT_EQ(ReachedSize(format, kMost), kMost) << format.name;
  }
}

TEST(PixelFormats, AreFoundByNameEnumeratorAndAliasInAnyCase) {
  std::set<std::string> taken;
  for (const PixelFormatInfo& info : PixelFormats()) {
    std::vector<std::string> names{std::string(info.name), std::string(info.enumerator)};
    std::istringstream aliases{std::string(info.aliases)};
    for (std::string alias; aliases >> alias;) names.push_back(alias);
    std::set<std::string> own;
    for (const std::string& name : names) {
      ASSERT_EQ(FindPixelFormat(name), &info) << name;
      ASSERT_EQ(FindPixelFormat(Upper(name)), &info) << name;
      own.insert(Upper(name));
    }
    for (const std::string& name : own) EXPECT_TRUE(taken.insert(name).second) << name;
  }
  EXPECT_EQ(FindPixelFormat("Mono12Packed")->format, PIXEL_FORMAT_MONO12);
  EXPECT_EQ(FindPixelFormat("BGRa8")->format, PIXEL_FORMAT_BGRU);
  EXPECT_EQ(FindPixelFormat("uyvy")->format, PIXEL_FORMAT_422YUV8);
  EXPECT_EQ(FindPixelFormat("PIXEL_FORMAT_RAW12")->format, PIXEL_FORMAT_RAW12);
}

TEST(PixelFormats, AreNotFoundByWhatIsNoName) {
  for (const std::string_view name : {"", " ", "mono", "mono8 ", "mono8 mono12", "PIXEL_FORMAT_"}) {
    EXPECT_EQ(FindPixelFormat(name), nullptr) << '"' << name << '"';
  }
  EXPECT_EQ(FindPixelFormat(UNSPECIFIED_PIXEL_FORMAT), nullptr);
  EXPECT_EQ(FindPixelFormat(static_cast<PixelFormat>(77)), nullptr);
}

TEST(PackedStride, IsTheOraclesForEverydayAndForHugeRows) {
  EXPECT_EQ(PackedStride(641, 12), 962U);
  EXPECT_EQ(PackedStride(641, 24), 1923U);
  EXPECT_EQ(PackedStride(5, 24), 15U);
  EXPECT_EQ(PackedStride(4, 32), 16U);
  EXPECT_EQ(PackedStride(3, 16), 6U);
  for (const unsigned bits : {0U, 8U, 12U, 16U, 24U, 32U, 48U, 64U}) {
    for (std::uint32_t cols = 0; cols < 5000; ++cols) {
      ASSERT_EQ(PackedStride(cols, bits), Reference::RowBytes(cols, bits)) << cols << ' ' << bits;
    }
    for (std::uint64_t cols = 5000; cols <= 0xFFFFFFFF; cols += cols / 1000 + 1) {
      const auto c = static_cast<std::uint32_t>(cols);
      ASSERT_EQ(PackedStride(c, bits), Reference::RowBytes(c, bits)) << c << ' ' << bits;
    }
  }
}

TEST(PackedStride, FollowsTheRoundingToSinglePrecisionAndTheWrapping) {
  EXPECT_EQ(PackedStride(5592407, 24), 16777220U);  // packed: 16777221
  EXPECT_EQ(PackedStride(5592407, 12), 8388610U);   // packed: 8388611
  EXPECT_EQ(PackedStride(0x10000001, 16), 2U);      // 2^32 + 16 bits
  EXPECT_EQ(PackedStride(0xFFFFFFFF, 8), 0x20000000U);
}

}  // namespace
}  // namespace Korvex2::Test
