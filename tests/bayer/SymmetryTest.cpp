/// Flipping or transposing the mosaic, with the pattern that goes with it, does the same to the
/// picture. So roundings and ties favour no side, and nothing shifts.

#include <gtest/gtest.h>

#include "TestPictures.h"

namespace Korvex2::Bayer {
namespace {

enum class Turn { kLeftRight, kUpDown, kTranspose };

template <typename Raster>
Raster Turned(const Raster& raster, Turn turn) {
  const bool transpose = turn == Turn::kTranspose;
  Raster result(transpose ? raster.cols : raster.rows, transpose ? raster.rows : raster.cols);
  for (int y = 0; y < raster.rows; ++y) {
    for (int x = 0; x < raster.cols; ++x) {
      const int toY = transpose ? x : turn == Turn::kUpDown ? raster.rows - 1 - y : y;
      const int toX = transpose ? y : turn == Turn::kLeftRight ? raster.cols - 1 - x : x;
      result.at(toY, toX) = raster.at(y, x);
    }
  }
  return result;
}

// The pattern whose top-left tile is the turned one.
BayerPattern Turned(BayerPattern pattern, Turn turn) {
  const int row = pattern >> 1;
  const int column = pattern & 1;
  const int toRow = turn == Turn::kTranspose ? column : turn == Turn::kUpDown ? 1 - row : row;
  const int toColumn = turn == Turn::kTranspose   ? row
                       : turn == Turn::kLeftRight ? 1 - column
                                                  : column;
  return kAllPatterns[toRow * 2 + toColumn];
}

class SymmetryTest : public testing::TestWithParam<BayerMethod> {
 protected:
  static void Check(const Mosaic& mosaic, Call call) {
    const Picture straight = Demosaiced(mosaic, call);
    for (const Turn turn : {Turn::kLeftRight, Turn::kUpDown, Turn::kTranspose}) {
      Call turnedCall = call;
      turnedCall.pattern = Turned(call.pattern, turn);
      EXPECT_EQ(Demosaiced(Turned(mosaic, turn), turnedCall), Turned(straight, turn))
          << mosaic.rows << 'x' << mosaic.cols << " pattern " << call.pattern << " turn "
          << static_cast<int>(turn);
    }
  }
};

TEST_P(SymmetryTest, EightBits) {
  // Few values give many ties.
  for (const std::uint16_t most : {std::uint16_t{2}, std::uint16_t{20}, std::uint16_t{255}}) {
    for (const BayerPattern pattern : kAllPatterns) {
      Check(RandomMosaic(22, 46, most, 41), {.method = GetParam(), .pattern = pattern});
      Check(RandomMosaic(2, 6, most, 42), {.method = GetParam(), .pattern = pattern});
    }
  }
}

TEST_P(SymmetryTest, SixteenBits) {
  for (const std::uint16_t most : {std::uint16_t{2}, std::uint16_t{999}, std::uint16_t{65535}}) {
    for (const BayerPattern pattern : kAllPatterns) {
      Check(RandomMosaic(22, 46, most, 43), {.method = GetParam(),
                                             .pattern = pattern,
                                             .input = BAYER_PIXEL_FORMAT_RAW16,
                                             .output = BAYER_PIXEL_FORMAT_RGB16});
    }
  }
}

TEST_P(SymmetryTest, Scenes) {
  for (const BayerPattern pattern : kAllPatterns) {
    Check(MosaicOf(Scene(40, 64, 44), pattern), {.method = GetParam(), .pattern = pattern});
  }
}

// Nearest neighbour tells the two greens apart by their rows, so it cannot be transposed.
INSTANTIATE_TEST_SUITE_P(Each, SymmetryTest,
                         testing::ValuesIn(std::begin(kAllMethods) + 1, std::end(kAllMethods)),
                         [](const auto& info) { return MethodName(info.param); });

}  // namespace
}  // namespace Korvex2::Bayer
