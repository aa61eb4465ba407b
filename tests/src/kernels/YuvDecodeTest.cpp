#include <gtest/gtest.h>

#include "support/Bytes.h"

namespace Korvex2::Test {
namespace {

Bytes Decoded(std::uint8_t u, std::uint8_t y, std::uint8_t v) {
  return Converted("ConvertYUV444ToRGB", {u, y, v}, 1, 3);
}

TEST(YuvDecode, ClampSaturates) {
  const Probe probe;
  EXPECT_EQ(probe.Clamp_8bit(256), 255);
  EXPECT_EQ(probe.Clamp_8bit(255), 255);
  EXPECT_EQ(probe.Clamp_8bit(0), 0);
  EXPECT_EQ(probe.Clamp_8bit(-1), 0);
  EXPECT_EQ(probe.Clamp_8bit(300), 255);
  for (int value = -32768; value <= 32767; ++value) {
    const int expected = value > 255 ? 255 : value < 0 ? 0 : value;
    ASSERT_EQ(probe.Clamp_8bit(static_cast<short>(value)), expected) << value;
  }
}

TEST(YuvDecode, NeutralChromaGivesGreyForEveryLuma) {
  for (unsigned y = 0; y < 256; ++y) {
    const auto luma = static_cast<std::uint8_t>(y);
    EXPECT_EQ(Decoded(128, luma, 128), (Bytes{luma, luma, luma}));
  }
}

TEST(YuvDecode, HighestValues) {
  EXPECT_EQ(Decoded(255, 255, 255), (Bytes{255, 121, 255}));
}

TEST(YuvDecode, LowestValues) {
  EXPECT_EQ(Decoded(0, 0, 0), (Bytes{0, 135, 0}));
}

TEST(YuvDecode, RoundTripOfPrimariesLosesOne) {
  EXPECT_EQ(Decoded(84, 76, 255), (Bytes{254, 1, 0}));
  EXPECT_EQ(Decoded(43, 149, 21), (Bytes{0, 254, 0}));
  EXPECT_EQ(Decoded(255, 29, 107), (Bytes{0, 1, 254}));
}

TEST(YuvDecode, NegativeTermsAreTruncatedTowardZero) {
  // dV = -1: -1.402 becomes -1, and 0.714 of it nothing.
  EXPECT_EQ(Decoded(128, 100, 127), (Bytes{99, 100, 100}));
}

TEST(YuvDecode, GroupsShareTheirChroma) {
  EXPECT_EQ(Converted("ConvertYUV422ToRGB", {128, 10, 127, 20}, 2, 6),
            (Bytes{9, 10, 10, 19, 20, 20}));
  EXPECT_EQ(Converted("ConvertYUV411ToRGB", {128, 10, 20, 127, 30, 40}, 4, 12),
            (Bytes{9, 10, 10, 19, 20, 20, 29, 30, 30, 39, 40, 40}));
}

/// 4:4:4 with an image whose buffer vanishes after so many questions for it: the first is that of
/// the test before the loop, the second takes the pointer, the further ones stand before a pixel
/// each.
int PixelsWritten(int questions, bool ofSource) {
  constexpr unsigned kPixels = 10;
  Bytes source(3 * kPixels, 128);
  Bytes destination(3 * kPixels, 0xEE);
  LentImage from(1, kPixels, PIXEL_FORMAT_444YUV8, source.data(), source.size());
  LentImage to(1, kPixels, PIXEL_FORMAT_RGB8, destination.data(), destination.size());
  (ofSource ? from : to).dataCallsUntilNull = questions;
  const Error error = Probe().ConvertYUV444ToRGB(&from, &to);
  EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER);
  EXPECT_STREQ(error.GetMessage(),
               "The source and or destination image pointer was NULL or contained a NULL buffer.");
  int written = 0;
  while (written < static_cast<int>(kPixels) &&
         destination[3U * static_cast<unsigned>(written)] == 128) {
    ++written;
  }
  for (std::size_t i = 3U * static_cast<unsigned>(written); i < destination.size(); ++i) {
    EXPECT_EQ(destination[i], 0xEE);
  }
  return written;
}

TEST(YuvDecode, Yuv444TestsForNullBeforeEveryPixel) {
  for (const bool ofSource : {true, false}) {
    EXPECT_EQ(PixelsWritten(0, ofSource), 0);
    for (int pixels = 0; pixels < 9; ++pixels) {
      EXPECT_EQ(PixelsWritten(2 + pixels, ofSource), pixels) << ofSource;
    }
  }
}

}  // namespace
}  // namespace Korvex2::Test
