#pragma once

/// What a demosaic method is to the engine: a function that computes one block of the picture.

#include <cstddef>
#include <cstdint>

#include "InstructionSet.h"

namespace Korvex2::Bayer {

/// Vectors of up to this many bytes may be loaded and stored without regard to where a row ends.
inline constexpr int kVectorBytes = 64;

/// One block of the picture: mosaic samples with their surroundings in, three planes out.
///
/// Columns and rows count from the block's own top-left pixel, which always is the top-left pixel
/// of a 2x2 tile; rows and cols are even. A block cannot tell whether it lies at the border of the
/// picture: what is missing around it has been mirrored about the edge sample, which keeps the
/// colour of every place. So methods know nothing of borders.
template <typename Sample>
struct Block {
  int rows;
  int cols;

  /// The place of red in the tile. Blue is at (1 - redRow, 1 - redColumn).
  int redRow;
  int redColumn;

  /// mosaic[y] for -margin <= y < rows + margin; in each row, samples -margin <= x < cols + margin
  /// hold the picture, and another kVectorBytes on either side may be read but mean nothing.
  /// mosaic[y][0] lies on a multiple of kVectorBytes.
  const Sample* const* mosaic;

  /// The planes to fill: pixel (y, x) is at plane[y * stride + x]. Each row begins on a multiple of
  /// kVectorBytes; up to kVectorBytes after its last pixel may be overwritten.
  Sample* red;
  Sample* green;
  Sample* blue;
  std::ptrdiff_t stride;

  /// Method::scratchBytes() bytes on a multiple of kVectorBytes, contents undefined; null if the
  /// method asked for none.
  void* scratch;
};

/// A method for one instruction set. Samples have full range: 255 is white for the first function,
/// 65535 for the second, whatever the depths of the caller's pictures.
struct BlockFunctions {
  void (*on8)(const Block<std::uint8_t>&);
  void (*on16)(const Block<std::uint16_t>&);
};

/// A demosaic method.
struct Method {
  /// How many samples beyond a block the method looks at, in each direction. Any number from 0.
  int margin;

  /// The largest block to hand out; both even. Rows that two blocks of a column of blocks share are
  /// kept, columns beside a block are loaded again.
  int blockRows;
  int blockCols;

  /// Bytes of scratch memory for a block of this size at most and samples of so many bytes; null if
  /// the method needs none.
  std::size_t (*scratchBytes)(int rows, int cols, int sampleBytes);

  /// The functions for an instruction set. All of them give the same bytes.
  BlockFunctions (*functions)(InstructionSet);
};

}  // namespace Korvex2::Bayer
