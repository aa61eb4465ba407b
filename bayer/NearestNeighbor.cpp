#include "NearestNeighbor.h"

namespace Korvex2::Bayer {
namespace {

// All four pixels of a tile take its red and its blue, and each the green of its own row: no sample
// moves, and the rows of the picture keep the sharpness of the mosaic's.

template <typename Sample>
void NearestNeighbor(const Block<Sample>& block) {
  for (int y = 0; y < block.rows; ++y) {
    const Sample* const row = block.mosaic[y];
    const Sample* const redRow = block.mosaic[(y & ~1) + block.redRow];
    const Sample* const blueRow = block.mosaic[(y & ~1) + (1 - block.redRow)];
    const int redColumn = block.redColumn;
    const int blueColumn = 1 - redColumn;
    const int greenColumn = (y & 1) == block.redRow ? blueColumn : redColumn;
    const std::ptrdiff_t offset = y * block.stride;
    for (int x = 0; x < block.cols; ++x) {
      const int tile = x & ~1;
      block.red[offset + x] = redRow[tile + redColumn];
      block.green[offset + x] = row[tile + greenColumn];
      block.blue[offset + x] = blueRow[tile + blueColumn];
    }
  }
}

BlockFunctions Functions([[maybe_unused]] InstructionSet set) {
#if KORVEX2_WITH_HIGHWAY
  if (set != InstructionSet::Plain) return NearestNeighborSimd(set);
#endif
  return {NearestNeighbor<std::uint8_t>, NearestNeighbor<std::uint16_t>};
}

}  // namespace

const Method kNearestNeighbor = {.margin = 0,
                                 .blockRows = 2,
                                 .blockCols = 8192,
                                 .scratchBytes = nullptr,
                                 .functions = Functions};

}  // namespace Korvex2::Bayer
