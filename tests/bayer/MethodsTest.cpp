/// What the methods promise: of all, and of each by name.

#include <gtest/gtest.h>

#include <algorithm>

#include "TestPictures.h"
#include "support/Walk.h"

namespace Korvex2::Bayer {
namespace {

using Test::Walk;

constexpr int kGreen = 1;

std::size_t ChannelAt(BayerPattern pattern, int y, int x) {
  return static_cast<std::size_t>(ColourAt(pattern, y, x));
}

class EachMethod : public testing::TestWithParam<BayerMethod> {};

TEST_P(EachMethod, ConstantsStayConstant) {
  Walk walk;
  for (const auto& [rows, cols] : {std::pair{2, 2}, {2, 40}, {40, 2}, {18, 70}}) {
    for (const int value : {0, 1, 2, 127, 128, 254, 255, 4095, 65534, 65535}) {
      Mosaic mosaic(rows, cols);
      std::ranges::fill(mosaic.samples, static_cast<std::uint16_t>(value));
      for (const BayerPattern pattern : kAllPatterns) {
        if (!walk.Takes()) continue;
        Call call{.method = GetParam(), .pattern = pattern};
        const auto expect = [&](int channel) {
          const auto same = static_cast<std::uint16_t>(channel);
          const Picture picture = Demosaiced(mosaic, call);
          EXPECT_TRUE(std::ranges::all_of(picture.pixels,
                                          [same](const Rgb& pixel) {
                                            return pixel == Rgb{same, same, same};
                                          }))
              << rows << 'x' << cols << " of " << value;
        };
        call.input = BAYER_PIXEL_FORMAT_RAW16;
        call.output = BAYER_PIXEL_FORMAT_RGB16;
        expect(value);
        call.output = BAYER_PIXEL_FORMAT_RGB8;
        expect(value >> 8);
        if (value > 255) continue;
        call.input = BAYER_PIXEL_FORMAT_RAW8;
        expect(value);
        call.output = BAYER_PIXEL_FORMAT_RGB16;
        expect(value * 257);
      }
    }
  }
}

TEST_P(EachMethod, KeepsTheSamples) {
  for (const auto& [rows, cols] : {std::pair{2, 2}, {4, 6}, {18, 70}}) {
    for (const BayerPattern pattern : kAllPatterns) {
      for (const bool deep : {false, true}) {
        const Mosaic mosaic = RandomMosaic(rows, cols, deep ? 65535 : 255, 11);
        const Picture picture = Demosaiced(
            mosaic, {.method = GetParam(),
                     .pattern = pattern,
                     .input = deep ? BAYER_PIXEL_FORMAT_RAW16 : BAYER_PIXEL_FORMAT_RAW8,
                     .output = deep ? BAYER_PIXEL_FORMAT_BGR16 : BAYER_PIXEL_FORMAT_BGR8});
        for (int y = 0; y < rows; ++y) {
          for (int x = 0; x < cols; ++x) {
            ASSERT_EQ(picture.at(y, x)[ChannelAt(pattern, y, x)], mosaic.at(y, x))
                << y << ',' << x << " pattern " << pattern;
          }
        }
      }
    }
  }
}

// The centre of gravity of a bright tile's surplus stays in the tile's middle, whatever its colour.
TEST_P(EachMethod, ImpulsesDoNotShift) {
  constexpr int kSize = 40;
  constexpr int kTile = 20;
  for (const BayerPattern pattern : kAllPatterns) {
    Mosaic mosaic(kSize, kSize);
    std::ranges::fill(mosaic.samples, std::uint16_t{10000});
    for (int i = 0; i < 4; ++i) mosaic.at(kTile + i / 2, kTile + i % 2) = 50000;
    const Picture picture = Demosaiced(mosaic, {.method = GetParam(),
                                                .pattern = pattern,
                                                .input = BAYER_PIXEL_FORMAT_RAW16,
                                                .output = BAYER_PIXEL_FORMAT_RGB16});
    double sum = 0;
    double sumY = 0;
    double sumX = 0;
    for (int y = 0; y < kSize; ++y) {
      for (int x = 0; x < kSize; ++x) {
        for (const int channel : picture.at(y, x)) {
          sum += channel - 10000;
          sumY += y * (channel - 10000.0);
          sumX += x * (channel - 10000.0);
        }
      }
    }
    EXPECT_NEAR(sumY / sum, kTile + 0.5, 0.02) << pattern;
    EXPECT_NEAR(sumX / sum, kTile + 0.5, 0.02) << pattern;
  }
}

TEST_P(EachMethod, TwoByTwoHasTheTilesColours) {
  Mosaic mosaic(2, 2);
  mosaic.samples = {200, 100, 100, 50};
  const Picture picture = Demosaiced(mosaic, {.method = GetParam()});
  for (const Rgb& pixel : picture.pixels) EXPECT_EQ(pixel, (Rgb{200, 100, 50}));
}

INSTANTIATE_TEST_SUITE_P(Each, EachMethod, testing::ValuesIn(kAllMethods),
                         [](const auto& info) { return MethodName(info.param); });

// ------------------------------------------------------------------------------------ HQ linear

TEST(HqLinear, RampsStayLinearInside) {
  constexpr int kSteps[][2] = {{3, 0}, {0, 3}, {2, 1}, {-2, 1}, {-1, -3}};
  for (const auto& [stepY, stepX] : kSteps) {
    Mosaic mosaic(24, 30);
    for (int y = 0; y < mosaic.rows; ++y) {
      for (int x = 0; x < mosaic.cols; ++x) {
        mosaic.at(y, x) = static_cast<std::uint16_t>(127 + stepY * (y - 12) + stepX * (x - 15));
      }
    }
    for (const BayerPattern pattern : kAllPatterns) {
      const Picture picture =
          Demosaiced(mosaic, {.method = BAYER_METHOD_HQLINEAR, .pattern = pattern});
      for (int y = 2; y < mosaic.rows - 2; ++y) {
        for (int x = 2; x < mosaic.cols - 2; ++x) {
          const std::uint16_t value = mosaic.at(y, x);
          EXPECT_EQ(picture.at(y, x), (Rgb{value, value, value})) << y << ',' << x;
        }
      }
    }
  }
}

// ---------------------------------------------------------------------------------- edge sensing

// Vertical stripes: green follows the stripes, not the change across them.
TEST(EdgeSensing, GreenFollowsTheEdge) {
  Mosaic mosaic(16, 16);
  for (int y = 0; y < 16; ++y) {
    for (int x = 0; x < 16; ++x) mosaic.at(y, x) = x < 8 ? 20 : 200;
  }
  for (const BayerPattern pattern : kAllPatterns) {
    const Picture picture =
        Demosaiced(mosaic, {.method = BAYER_METHOD_EDGE_SENSING, .pattern = pattern});
    for (int y = 0; y < 16; ++y) {
      for (int x = 0; x < 16; ++x) {
        EXPECT_EQ(picture.at(y, x)[kGreen], mosaic.at(y, x)) << y << ',' << x;
      }
    }
  }
}

TEST(EdgeSensing, GreenIsHamiltonAndAdams) {
  // Around a red sample at (4, 4): beside 40 and 60, above and below 52 and 54, red 100 with 90 and
  // 80 two columns away, 96 and 98 two rows away.
  Mosaic mosaic(8, 8);
  std::ranges::fill(mosaic.samples, std::uint16_t{50});
  mosaic.at(4, 4) = 100;
  mosaic.at(4, 3) = 40;
  mosaic.at(4, 5) = 60;
  mosaic.at(3, 4) = 52;
  mosaic.at(5, 4) = 54;
  mosaic.at(4, 2) = 90;
  mosaic.at(4, 6) = 80;
  mosaic.at(2, 4) = 96;
  mosaic.at(6, 4) = 98;
  const Call call{.method = BAYER_METHOD_EDGE_SENSING};
  // Across: (52 + 54) / 2 + (200 - 96 - 98) / 4 = 54.5, the change 2 + 6 is the smaller one.
  EXPECT_EQ(Demosaiced(mosaic, call).at(4, 4)[kGreen], 55);
  // Along: (49 + 50) / 2 + (200 - 98 - 97) / 4 = 50.75, the change 1 + 5.
  mosaic.at(4, 3) = 49;
  mosaic.at(4, 5) = 50;
  mosaic.at(4, 2) = 98;
  mosaic.at(4, 6) = 97;
  EXPECT_EQ(Demosaiced(mosaic, call).at(4, 4)[kGreen], 51);
  // Equal changes, 2 + 6 each: the mean of 54.5 and (49 + 51) / 2 + 6 / 4 = 51.5.
  mosaic.at(4, 5) = 51;
  mosaic.at(4, 2) = 97;
  EXPECT_EQ(Demosaiced(mosaic, call).at(4, 4)[kGreen], 53);
}

// Colours that differ from green by a constant come out exactly.
TEST(EdgeSensing, ConstantDifferencesAreExact) {
  Picture picture(20, 30);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const int green = 90 + 4 * x - 2 * y;
      picture.at(y, x) = {static_cast<std::uint16_t>(green + 30), static_cast<std::uint16_t>(green),
                          static_cast<std::uint16_t>(green - 25)};
    }
  }
  for (const BayerPattern pattern : kAllPatterns) {
    const Picture result = Demosaiced(MosaicOf(picture, pattern),
                                      {.method = BAYER_METHOD_EDGE_SENSING, .pattern = pattern});
    for (int y = 3; y < picture.rows - 3; ++y) {
      for (int x = 3; x < picture.cols - 3; ++x) EXPECT_EQ(result.at(y, x), picture.at(y, x));
    }
  }
}

}  // namespace
}  // namespace Korvex2::Bayer
