// Frames at the limit of 4 GiB - 1: the largest that fit convert, one row more is refused. Takes up
// to 8 GiB of memory, so it runs on request only: `./run huge`.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "ImageConverterARMStub.h"
#include "PixelFormats.h"
#include "support/Comparison.h"
#include "support/GuardedMemory.h"
#include "vorbayer.h"

namespace Korvex2::Test {
namespace {

// 4 GiB - 1 holds 39768 rows of 36000 RGB8 pixels, and no row more.
constexpr unsigned kCols = 36000;
constexpr unsigned kMostRows = 39768;
constexpr unsigned kGigapixelRows = 36112;  // 1.3 gigapixels

constexpr std::size_t kMiB = std::size_t{1} << 20;

/// The most memory that the process ever had, in bytes.
std::size_t PeakResident() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stoull(line.substr(6)) * 1024;
  }
  return 0;
}

class Huge : public testing::Test {
 protected:
  // The mark of the highest water is set anew for each test.
  void SetUp() override { std::ofstream("/proc/self/clear_refs") << "5"; }
};

Image Frame(unsigned rows, PixelFormat format, BayerTileFormat tile = NONE) {
  Image image;
  const unsigned stride = kCols * Image::DetermineBitsPerPixel(format) / 8;
  EXPECT_EQ(image.SetDimensions(rows, kCols, stride, format, tile).GetType(), VORERROR_OK);
  std::mt19937_64 random(rows);
  const std::size_t size = image.GetDataSize();
  for (std::size_t at = 0; at + 8 <= size; at += 8) {
    const std::uint64_t word = random();
    std::memcpy(image.GetData() + at, &word, 8);
  }
  return image;
}

/// All of a picture, in strips, against the oracle.
void ExpectOraclesPicture(const Image& source, const Image& picture) {
  constexpr unsigned kStrip = 400;
  Reference::Converter oracle;
  for (unsigned top = 0; top < source.GetRows(); top += kStrip) {
    const unsigned rows = std::min(kStrip, source.GetRows() - top);
    Reference::Frame strip;
    strip.Shape(rows, kCols, source.GetStride(), source.GetPixelFormat(), 0);
    const std::size_t from = std::size_t{top} * source.GetStride();
    std::memcpy(strip.data, source.GetData() + from, std::size_t{rows} * source.GetStride());
    Reference::Frame expected;
    ASSERT_EQ(oracle.Convert(&strip, picture.GetPixelFormat(), &expected).code, Reference::kOk);
    const std::size_t at = std::size_t{top} * picture.GetStride();
    ASSERT_EQ(
        std::memcmp(picture.GetData() + at, expected.data, std::size_t{rows} * picture.GetStride()),
        0)
        << "rows from " << top;
  }
}

void ExpectPeak(const Image& source, const Image& picture) {
  const std::size_t images = std::size_t{source.GetDataSize()} + picture.GetDataSize();
  const std::size_t peak = PeakResident();
  std::cout << "source and picture " << images / kMiB << " MiB, at most resident " << peak / kMiB
            << " MiB\n";
  EXPECT_LE(peak, images + 64 * kMiB);
}

void ExpectConverts(unsigned rows, PixelFormat from, PixelFormat to) {
  const Image source = Frame(rows, from);
  Image picture;
  ASSERT_EQ(ImageConverter().Convert(&source, to, &picture).GetType(), VORERROR_OK);
  ExpectPeak(source, picture);
  ExpectOraclesPicture(source, picture);
}

TEST_F(Huge, A1300MegapixelRgbFrameConvertsToBgr) {
  ExpectConverts(kGigapixelRows, PIXEL_FORMAT_RGB8, PIXEL_FORMAT_BGR);
}

TEST_F(Huge, A1300MegapixelRgbFrameConvertsToYuv422) {
  ExpectConverts(kGigapixelRows, PIXEL_FORMAT_RGB8, PIXEL_FORMAT_422YUV8);
}

TEST_F(Huge, TheLargestGreyFrameThatFitsAsColourConvertsThroughAChain) {
  ExpectConverts(kMostRows, PIXEL_FORMAT_MONO8, PIXEL_FORMAT_BGR);
}

TEST_F(Huge, OneRowMoreIsRefused) {
  const Image source = Frame(kMostRows + 1, PIXEL_FORMAT_MONO8);
  Image picture;
  const Error error = ImageConverter().Convert(&source, PIXEL_FORMAT_BGR, &picture);
  ASSERT_EQ(error.GetType(), VORERROR_FAILED);
  ASSERT_NE(error.GetCause(), nullptr);
  EXPECT_EQ(error.GetCause()->GetType(), VORERROR_INVALID_PARAMETER);
  EXPECT_EQ(picture.GetData(), nullptr);
  EXPECT_LE(PeakResident(), source.GetDataSize() + 64 * kMiB);
}

// The stride of 33,554,434 pixels of 64 bits goes through single precision and falls short by two
// pixels: all others are written, and nothing past the buffer.
TEST_F(Huge, ARowWhoseStrideFallsShortFillsAnExactBuffer) {
  constexpr unsigned kLong = 33554434;
  constexpr std::size_t kExact = 268435456;
  static_assert(kExact + 16 == std::size_t{8} * kLong);
  ASSERT_EQ(PackedStride(kLong, 64), kExact);
  Image source;
  ASSERT_EQ(source.SetDimensions(1, kLong, kLong, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
  std::mt19937 random(1);
  std::generate_n(source.GetData(), kLong, [&] { return static_cast<unsigned char>(random()); });
  GuardedMemory memory(kExact);
  unsigned char* const bytes = memory.AtEnd(kExact);
  Image picture(bytes, kExact);
  ASSERT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_BGRU16, &picture).GetType(),
            VORERROR_OK);
  ASSERT_EQ(picture.GetDataSize(), kExact);
  for (std::size_t i = 0; i < kExact; ++i) {
    const unsigned expected = i % 8 < 6 ? source.GetData()[i / 8] : 255;
    ASSERT_EQ(unsigned{bytes[i]}, expected) << i;
  }

  // And back: the two pixels that are missing are black.
  Image grey;
  ASSERT_EQ(ImageConverter().Convert(&picture, PIXEL_FORMAT_RGB8, &grey).GetType(), VORERROR_OK);
  for (std::size_t i = 0; i < std::size_t{3} * kLong; ++i) {
    const unsigned expected = i / 3 < kExact / 8 ? source.GetData()[i / 3] : 0;
    ASSERT_EQ(unsigned{grey.GetData()[i]}, expected) << i;
  }
}

// Strips of the mosaic with a margin of whole tiles give the same picture inside.
TEST_F(Huge, A1300MegapixelMosaicBecomesColour) {
  Image mosaic = Frame(kGigapixelRows, PIXEL_FORMAT_RAW8, GRBG);
  mosaic.SetColorProcessing(HQ_LINEAR);
  Image picture;
  ASSERT_EQ(ImageConverter().Convert(&mosaic, PIXEL_FORMAT_RGB8, &picture).GetType(), VORERROR_OK);
  ExpectPeak(mosaic, picture);
  constexpr unsigned kStrip = 500;
  constexpr unsigned kMargin = 4;
  std::vector<unsigned char> strip(std::size_t{3} * kCols * (kStrip + 2 * kMargin));
  for (unsigned top = 0; top < kGigapixelRows; top += kStrip) {
    const unsigned end = std::min(top + kStrip, kGigapixelRows);
    const unsigned from = top < kMargin ? 0 : top - kMargin;
    const unsigned to = std::min(end + kMargin, kGigapixelRows);
    ASSERT_EQ(bayerToColor(BAYER_PIXEL_FORMAT_RAW8, mosaic.GetData() + std::size_t{from} * kCols,
                           static_cast<int>(to - from), kCols, BAYER_PIXEL_FORMAT_RGB8,
                           strip.data(), BAYER_METHOD_HQLINEAR, BAYER_PATTERN_GRBG),
              beOK);
    const std::size_t row = std::size_t{3} * kCols;
    ASSERT_EQ(std::memcmp(picture.GetData() + top * row, strip.data() + (top - from) * row,
                          (end - top) * row),
              0)
        << "rows from " << top;
  }
}

}  // namespace
}  // namespace Korvex2::Test
