#include <gtest/gtest.h>

#include "support/Bytes.h"

namespace Korvex2::Test {
namespace {

std::uint8_t GreyOf(std::uint8_t v) {
  return Converted("ConvertRGBToY8", {v, v, v}, 1, 1)[0];
}

TEST(GreyAndColour, GreyThroughRgbToY8LosesOneFor65Values) {
  int lost = 0;
  for (unsigned v = 0; v < 256; ++v) {
    const std::uint8_t y = GreyOf(static_cast<std::uint8_t>(v));
    EXPECT_TRUE(y == v || y + 1U == v);
    if (y != v) ++lost;
  }
  EXPECT_EQ(lost, 65);
  EXPECT_EQ(GreyOf(1), 0);
  EXPECT_EQ(GreyOf(2), 1);
  EXPECT_EQ(GreyOf(128), 127);
  EXPECT_EQ(GreyOf(254), 253);
  EXPECT_EQ(GreyOf(0), 0);
  EXPECT_EQ(GreyOf(3), 3);
  EXPECT_EQ(GreyOf(100), 100);
  EXPECT_EQ(GreyOf(255), 255);
}

TEST(GreyAndColour, Rgb16ToY16LosesOneForManyEqualChannels) {
  EXPECT_EQ(Converted("ConvertRGB16ToY16", Words({1, 1, 1}), 1, 2), Words({0}));
  EXPECT_EQ(Converted("ConvertRGB16ToY16", Words({128, 128, 128}), 1, 2), Words({127}));
  EXPECT_EQ(Converted("ConvertRGB16ToY16", Words({0, 0, 0}), 1, 2), Words({0}));
  // The flag is not read: samples are words of the host.
  EXPECT_EQ(Converted("ConvertRGB16ToY16", Words({0x1234, 0x4321, 0xFFFF}), 1, 2, true),
            Converted("ConvertRGB16ToY16", Words({0x1234, 0x4321, 0xFFFF}), 1, 2, false));
}

TEST(GreyAndColour, RgbToRgb16RepeatsTheByteInEitherByteOrder) {
  for (const bool flag : {false, true}) {
    EXPECT_EQ(Converted("ConvertRGBToRGB16", {0x80, 0xFF, 0x01}, 1, 6, flag),
              Words({0x8080, 0xFFFF, 0x0101}));
  }
}

TEST(GreyAndColour, Rgb16ToRgbKeepsTheHighByteThatTheFlagNames) {
  EXPECT_EQ(Converted("ConvertRGB16ToRGB", {0x34, 0x12, 0x78, 0x56, 0xFF, 0x9A}, 1, 3, true),
            (Bytes{0x12, 0x56, 0x9A}));
  EXPECT_EQ(Converted("ConvertRGB16ToRGB", {0x12, 0x34, 0x56, 0x78, 0x9A, 0xFF}, 1, 3, false),
            (Bytes{0x12, 0x56, 0x9A}));
}

TEST(GreyAndColour, Y16ToRgb16CopiesTheSampleOrSwapsItsBytes) {
  EXPECT_EQ(Converted("ConvertY16ToRGB16", {0x34, 0x12}, 1, 6, true),
            (Bytes{0x34, 0x12, 0x34, 0x12, 0x34, 0x12}));
  EXPECT_EQ(Converted("ConvertY16ToRGB16", {0x34, 0x12}, 1, 6, false),
            (Bytes{0x12, 0x34, 0x12, 0x34, 0x12, 0x34}));
}

TEST(GreyAndColour, Y16ToRgbu16AlwaysWritesAlpha65535) {
  EXPECT_EQ(Converted("ConvertY16ToRGBU16", {0x34, 0x12}, 1, 8, true),
            (Bytes{0x34, 0x12, 0x34, 0x12, 0x34, 0x12, 0xFF, 0xFF}));
  EXPECT_EQ(Converted("ConvertY16ToRGBU16", {0x34, 0x12}, 1, 8, false),
            (Bytes{0x12, 0x34, 0x12, 0x34, 0x12, 0x34, 0xFF, 0xFF}));
}

TEST(GreyAndColour, Y8ToRgbCopiesTheByteIntoAllThreeChannels) {
  EXPECT_EQ(Converted("ConvertY8ToRGB", {7, 200}, 2, 6), (Bytes{7, 7, 7, 200, 200, 200}));
}

TEST(GreyAndColour, NullDestinationOrSourceBufferIsRefusedAndNothingWritten) {
  Bytes bytes(6, 0xEE);
  const LentImage nowhere(1, 1, PIXEL_FORMAT_MONO8, nullptr, 0);
  const LentImage from(1, 1, PIXEL_FORMAT_MONO8, bytes.data(), bytes.size());
  LentImage to(1, 1, PIXEL_FORMAT_RGB8, bytes.data(), bytes.size());
  EXPECT_EQ(Probe().ConvertY8ToRGB(&nowhere, &to).GetType(), VORERROR_INVALID_PARAMETER);
  EXPECT_EQ(Probe().ConvertY8ToRGB(&from, nullptr).GetType(), VORERROR_INVALID_PARAMETER);
  EXPECT_EQ(bytes, Bytes(6, 0xEE));
}

}  // namespace
}  // namespace Korvex2::Test
