#include "EdgeSensing.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace Korvex2::Bayer {
namespace {

// 1. Green at a red or blue sample c, from the samples
//
//                    c3
//                    g2
//             c1 g1  c  g1 c1       (1: along the row, 2 and 3: along the column)
//                    g2
//                    c3
//
//    along the row:     (left + right) / 2 + (2c - c left - c right) / 4
//    along the column:  the same upwards and downwards
//
//    whichever has the smaller |left - right| + |2c - c left - c right|, the mean of both if they
//    are equal; rounded to the nearest, brought into range.
//
// 2. Red and blue: the mean of their difference to green at the two or four nearest places,
//    added to green; rounded to the nearest, brought into range.
//
//    beside: (c - G) left and right    above and below: likewise    diagonally: all four

template <typename Sample>
Sample inRange(int value) {
  return static_cast<Sample>(std::clamp(value, 0, int{std::numeric_limits<Sample>::max()}));
}

// An estimate of green along one direction, in quarters, and how much the mosaic changes along it.
struct Directional {
  int quarters;
  int change;

  Directional(int greenBefore, int greenAfter, int colourBefore, int colour, int colourAfter) {
    const int curve = 2 * colour - colourBefore - colourAfter;
    quarters = 2 * (greenBefore + greenAfter) + curve;
    change = std::abs(greenBefore - greenAfter) + std::abs(curve);
  }
};

template <typename Sample>
Sample greenAtColour(const Sample* const* mosaic, int x) {
  const Sample* const row = mosaic[0];
  const Directional along(row[x - 1], row[x + 1], row[x - 2], row[x], row[x + 2]);
  const Directional across(mosaic[-1][x], mosaic[1][x], mosaic[-2][x], row[x], mosaic[2][x]);
  const int eighths = along.change < across.change   ? 2 * along.quarters
                      : across.change < along.change ? 2 * across.quarters
                                                     : along.quarters + across.quarters;
  return inRange<Sample>((eighths + 4) >> 3);
}

// The mosaic with green at every place.
template <typename Sample>
class Rows {
 public:
  explicit Rows(const Block<Sample>& block)
      : block_(block),
        stride_(edgeSensingScratchStride(block.cols, sizeof(Sample))),
        green_(static_cast<Sample*>(block.scratch) + stride_ * kEdgeSensingScratchMargin +
               kVectorBytes / static_cast<int>(sizeof(Sample))) {}

  bool isGreen(int y, int x) const { return ((y ^ x ^ block_.redRow ^ block_.redColumn) & 1) != 0; }
  bool isRedRow(int y) const { return (y & 1) == block_.redRow; }
  Sample sample(int y, int x) const { return block_.mosaic[y][x]; }
  Sample& green(int y, int x) const { return green_[y * stride_ + x]; }
  int difference(int y, int x) const { return sample(y, x) - green(y, x); }

  Sample beside(int y, int x) const {
    return withMean<1>(y, x, difference(y, x - 1) + difference(y, x + 1));
  }
  Sample aboveBelow(int y, int x) const {
    return withMean<1>(y, x, difference(y - 1, x) + difference(y + 1, x));
  }
  Sample diagonal(int y, int x) const {
    return withMean<2>(y, x,
                       difference(y - 1, x - 1) + difference(y - 1, x + 1) +
                           difference(y + 1, x - 1) + difference(y + 1, x + 1));
  }

 private:
  // Green plus the mean of 2^shift differences.
  template <int shift>
  Sample withMean(int y, int x, int sum) const {
    return inRange<Sample>(green(y, x) + ((sum + (1 << (shift - 1))) >> shift));
  }

  const Block<Sample>& block_;
  const std::ptrdiff_t stride_;
  Sample* const green_;
};

template <typename Sample>
void edgeSensing(const Block<Sample>& block) {
  const Rows<Sample> rows(block);
  for (int y = -1; y < block.rows + 1; ++y) {
    for (int x = -1; x < block.cols + 1; ++x) {
      rows.green(y, x) =
          rows.isGreen(y, x) ? rows.sample(y, x) : greenAtColour(block.mosaic + y, x);
    }
  }
  for (int y = 0; y < block.rows; ++y) {
    const std::ptrdiff_t offset = y * block.stride;
    Sample* const own = (rows.isRedRow(y) ? block.red : block.blue) + offset;
    Sample* const opposite = (rows.isRedRow(y) ? block.blue : block.red) + offset;
    Sample* const green = block.green + offset;
    for (int x = 0; x < block.cols; ++x) {
      green[x] = rows.green(y, x);
      own[x] = rows.isGreen(y, x) ? rows.beside(y, x) : rows.sample(y, x);
      opposite[x] = rows.isGreen(y, x) ? rows.aboveBelow(y, x) : rows.diagonal(y, x);
    }
  }
}

std::size_t scratchBytes(int rows, int cols, int sampleBytes) {
  return static_cast<std::size_t>(rows + 2 * kEdgeSensingScratchMargin) *
         static_cast<std::size_t>(edgeSensingScratchStride(cols, sampleBytes) * sampleBytes);
}

BlockFunctions functions([[maybe_unused]] Target target) {
#if KORVEX2_WITH_HIGHWAY
  if (target != Target::kPlain) return edgeSensingSimd(target);
#endif
  return {edgeSensing<std::uint8_t>, edgeSensing<std::uint16_t>};
}

}  // namespace

const Method kEdgeSensing = {.margin = 3,
                             .blockRows = 8,
                             .blockCols = 8192,
                             .scratchBytes = scratchBytes,
                             .functions = functions};

}  // namespace Korvex2::Bayer
