#include <gtest/gtest.h>

#include "support/Bytes.h"

namespace Korvex2::Test {
namespace {

/// U, Y, V of one pixel.
Bytes Encoded(std::uint8_t r, std::uint8_t g, std::uint8_t b) {
  return Converted("ConvertRGBToYUV444", {r, g, b}, 1, 3);
}

TEST(YuvEncode, BlackWhiteAndGreyHaveNoChroma) {
  EXPECT_EQ(Encoded(0, 0, 0), (Bytes{128, 0, 128}));
  EXPECT_EQ(Encoded(255, 255, 255), (Bytes{128, 255, 128}));
  EXPECT_EQ(Encoded(128, 128, 128), (Bytes{128, 127, 128}));
}

TEST(YuvEncode, PrimariesAreTruncatedNotRounded) {
  EXPECT_EQ(Encoded(255, 0, 0), (Bytes{84, 76, 255}));
  EXPECT_EQ(Encoded(0, 255, 0), (Bytes{43, 149, 21}));
  EXPECT_EQ(Encoded(0, 0, 255), (Bytes{255, 29, 107}));
}

TEST(YuvEncode, GreyLosesOneExactlyWhereRgbToY8Does) {
  int lost = 0;
  for (unsigned v = 0; v < 256; ++v) {
    const auto grey = static_cast<std::uint8_t>(v);
    const std::uint8_t y = Encoded(grey, grey, grey)[1];
    EXPECT_EQ(y, Converted("ConvertRGBToY8", {grey, grey, grey}, 1, 1)[0]);
    EXPECT_TRUE(y == v || y + 1U == v) << v;
    if (y != v) ++lost;
  }
  EXPECT_EQ(lost, 65);
  EXPECT_EQ(Encoded(1, 1, 1)[1], 0);
  EXPECT_EQ(Encoded(128, 128, 128)[1], 127);
}

/// A pixel whose U has the wanted value: from blue to yellow it falls by one a step.
Bytes WithU(std::uint8_t u) {
  for (unsigned step = 0; step < 256; ++step) {
    const auto yellow = static_cast<std::uint8_t>(step);
    const auto blue = static_cast<std::uint8_t>(255 - step);
    if (Encoded(yellow, yellow, blue)[0] == u) return {yellow, yellow, blue};
  }
  ADD_FAILURE() << "no pixel has U " << unsigned{u};
  return {0, 0, 0};
}

TEST(YuvEncode, ChromaOfTwoPixelsIsTheFloorOfTheirMean) {
  Bytes source = WithU(100);
  const Bytes second = WithU(101);
  source.insert(source.end(), second.begin(), second.end());
  EXPECT_EQ(Converted("ConvertRGBToYUV422", source, 2, 4)[0], 100);
}

TEST(YuvEncode, ChromaOfFourPixelsIsTheFloorOfTheirMean) {
  Bytes source;
  for (const std::uint8_t u : Bytes{10, 10, 10, 11}) {
    const Bytes pixel = WithU(u);
    source.insert(source.end(), pixel.begin(), pixel.end());
  }
  EXPECT_EQ(Converted("ConvertRGBToYUV411", source, 4, 6)[0], 10);
}

TEST(YuvEncode, OrdersTheBytesOfAGroup) {
  const Bytes source{255, 0, 0, 0, 0, 0, 255, 255, 255, 0, 0, 0};
  const Bytes two = Converted("ConvertRGBToYUV422", source, 2, 4);
  EXPECT_EQ(two, (Bytes{(84 + 128) / 2, 76, (255 + 128) / 2, 0}));
  const Bytes four = Converted("ConvertRGBToYUV411", source, 4, 6);
  EXPECT_EQ(four, (Bytes{(84 + 3 * 128) / 4, 76, 0, (255 + 3 * 128) / 4, 255, 0}));
}

TEST(YuvEncode, NoPixelsWriteNothing) {
  for (const char* routine : {"ConvertRGBToYUV444", "ConvertRGBToYUV422", "ConvertRGBToYUV411"}) {
    EXPECT_EQ(Converted(routine, Bytes(12, 9), 0, 6), Bytes(6, 0)) << routine;
  }
}

}  // namespace
}  // namespace Korvex2::Test
