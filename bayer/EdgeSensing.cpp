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
Sample InRange(int value) {
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
Sample GreenAtColour(const Sample* const* mosaic, int x) {
  const Sample* const row = mosaic[0];
  const Directional along(row[x - 1], row[x + 1], row[x - 2], row[x], row[x + 2]);
  const Directional across(mosaic[-1][x], mosaic[1][x], mosaic[-2][x], row[x], mosaic[2][x]);
  const int eighths = along.change < across.change   ? 2 * along.quarters
                      : across.change < along.change ? 2 * across.quarters
                                                     : along.quarters + across.quarters;
  return InRange<Sample>((eighths + 4) >> 3);
}

// The mosaic with green at every place.
template <typename Sample>
class Rows {
 public:
  explicit Rows(const Block<Sample>& block)
      : m_block(block),
        m_stride(EdgeSensingScratchStride(block.cols, sizeof(Sample))),
        m_green(static_cast<Sample*>(block.scratch) + m_stride * kEdgeSensingScratchMargin +
                kVectorBytes / static_cast<int>(sizeof(Sample))) {}

  bool IsGreen(int y, int x) const {
    return ((y ^ x ^ m_block.redRow ^ m_block.redColumn) & 1) != 0;
  }
  bool IsRedRow(int y) const { return (y & 1) == m_block.redRow; }
  Sample SampleAt(int y, int x) const { return m_block.mosaic[y][x]; }
  Sample& GreenAt(int y, int x) const { return m_green[y * m_stride + x]; }
  int DifferenceAt(int y, int x) const { return SampleAt(y, x) - GreenAt(y, x); }

  Sample Beside(int y, int x) const {
    return WithMean<1>(y, x, DifferenceAt(y, x - 1) + DifferenceAt(y, x + 1));
  }
  Sample AboveBelow(int y, int x) const {
    return WithMean<1>(y, x, DifferenceAt(y - 1, x) + DifferenceAt(y + 1, x));
  }
  Sample Diagonal(int y, int x) const {
    return WithMean<2>(y, x,
                       DifferenceAt(y - 1, x - 1) + DifferenceAt(y - 1, x + 1) +
                           DifferenceAt(y + 1, x - 1) + DifferenceAt(y + 1, x + 1));
  }

 private:
  // Green plus the mean of 2^shift differences.
  template <int shift>
  Sample WithMean(int y, int x, int sum) const {
    return InRange<Sample>(GreenAt(y, x) + ((sum + (1 << (shift - 1))) >> shift));
  }

  const Block<Sample>& m_block;
  const std::ptrdiff_t m_stride;
  Sample* const m_green;
};

template <typename Sample>
void EdgeSensing(const Block<Sample>& block) {
  const Rows<Sample> rows(block);
  for (int y = -1; y < block.rows + 1; ++y) {
    for (int x = -1; x < block.cols + 1; ++x) {
      rows.GreenAt(y, x) =
          rows.IsGreen(y, x) ? rows.SampleAt(y, x) : GreenAtColour(block.mosaic + y, x);
    }
  }
  for (int y = 0; y < block.rows; ++y) {
    const std::ptrdiff_t offset = y * block.stride;
    Sample* const own = (rows.IsRedRow(y) ? block.red : block.blue) + offset;
    Sample* const opposite = (rows.IsRedRow(y) ? block.blue : block.red) + offset;
    Sample* const green = block.green + offset;
    for (int x = 0; x < block.cols; ++x) {
      green[x] = rows.GreenAt(y, x);
      own[x] = rows.IsGreen(y, x) ? rows.Beside(y, x) : rows.SampleAt(y, x);
      opposite[x] = rows.IsGreen(y, x) ? rows.AboveBelow(y, x) : rows.Diagonal(y, x);
    }
  }
}

std::size_t ScratchBytes(int rows, int cols, int sampleBytes) {
  return static_cast<std::size_t>(rows + 2 * kEdgeSensingScratchMargin) *
         static_cast<std::size_t>(EdgeSensingScratchStride(cols, sampleBytes) * sampleBytes);
}

BlockFunctions Functions([[maybe_unused]] InstructionSet set) {
#if KORVEX2_WITH_HIGHWAY
  if (set != InstructionSet::Plain) return EdgeSensingSimd(set);
#endif
  return {EdgeSensing<std::uint8_t>, EdgeSensing<std::uint16_t>};
}

}  // namespace

const Method kEdgeSensing = {.margin = 3,
                             .blockRows = 8,
                             .blockCols = 8192,
                             .scratchBytes = ScratchBytes,
                             .functions = Functions};

}  // namespace Korvex2::Bayer
