#include "HqLinear.h"

#include <algorithm>
#include <limits>

namespace Korvex2::Bayer {
namespace {

// The filters in sixteenths, as they lie on the mosaic:
//
//   green at a        the other colour of the   the other colour of the   the opposite colour
//   red or blue       row at a green            column at a green         at a red or blue
//
//    .  . -2  .  .     .  .  1  .  .             .  . -2  .  .             .  . -3  .  .
//    .  .  4  .  .     . -2  . -2  .             . -2  8 -2  .             .  4  .  4  .
//   -2  4  8  4 -2    -2  8 10  8 -2             1  . 10  .  1            -3  . 12  . -3
//    .  .  4  .  .     . -2  . -2  .             . -2  8 -2  .             .  4  .  4  .
//    .  . -2  .  .     .  .  1  .  .             .  . -2  .  .             .  . -3  .  .

template <typename Sample>
Sample FromSixteenths(int sum) {
  return static_cast<Sample>(
      std::clamp((sum + 8) >> 4, 0, int{std::numeric_limits<Sample>::max()}));
}

// The sums around one sample that the filters are made of.
struct Surroundings {
  int centre, beside, aboveBelow, diagonal, twoBeside, twoAboveBelow;

  template <typename Sample>
  Surroundings(const Sample* const* mosaic, int y, int x)
      : centre(mosaic[y][x]),
        beside(mosaic[y][x - 1] + mosaic[y][x + 1]),
        aboveBelow(mosaic[y - 1][x] + mosaic[y + 1][x]),
        diagonal(mosaic[y - 1][x - 1] + mosaic[y - 1][x + 1] + mosaic[y + 1][x - 1] +
                 mosaic[y + 1][x + 1]),
        twoBeside(mosaic[y][x - 2] + mosaic[y][x + 2]),
        twoAboveBelow(mosaic[y - 2][x] + mosaic[y + 2][x]) {}

  int GreenAtColour() const {
    return 8 * centre + 4 * (beside + aboveBelow) - 2 * (twoBeside + twoAboveBelow);
  }
  int OppositeAtColour() const {
    return 12 * centre + 4 * diagonal - 3 * (twoBeside + twoAboveBelow);
  }
  int RowColourAtGreen() const {
    return 10 * centre + 8 * beside - 2 * (twoBeside + diagonal) + twoAboveBelow;
  }
  int ColumnColourAtGreen() const {
    return 10 * centre + 8 * aboveBelow - 2 * (twoAboveBelow + diagonal) + twoBeside;
  }
};

template <typename Sample>
void HqLinear(const Block<Sample>& block) {
  for (int y = 0; y < block.rows; ++y) {
    const bool redRow = (y & 1) == block.redRow;
    const int colourColumn = redRow ? block.redColumn : 1 - block.redColumn;
    Sample* const own = (redRow ? block.red : block.blue) + y * block.stride;
    Sample* const opposite = (redRow ? block.blue : block.red) + y * block.stride;
    Sample* const green = block.green + y * block.stride;
    for (int x = 0; x < block.cols; ++x) {
      const Surroundings around(block.mosaic, y, x);
      const Sample sample = block.mosaic[y][x];
      if ((x & 1) == colourColumn) {
        own[x] = sample;
        green[x] = FromSixteenths<Sample>(around.GreenAtColour());
        opposite[x] = FromSixteenths<Sample>(around.OppositeAtColour());
      } else {
        own[x] = FromSixteenths<Sample>(around.RowColourAtGreen());
        green[x] = sample;
        opposite[x] = FromSixteenths<Sample>(around.ColumnColourAtGreen());
      }
    }
  }
}

BlockFunctions Functions([[maybe_unused]] InstructionSet set) {
#if KORVEX2_WITH_HIGHWAY
  if (set != InstructionSet::Plain) return HqLinearSimd(set);
#endif
  return {HqLinear<std::uint8_t>, HqLinear<std::uint16_t>};
}

}  // namespace

const Method kHqLinear = {.margin = 2,
                          .blockRows = 2,
                          .blockCols = 8192,
                          .scratchBytes = nullptr,
                          .functions = Functions};

}  // namespace Korvex2::Bayer
