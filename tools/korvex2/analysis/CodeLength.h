#pragma once

/// How many bits samples take when each is coded as the difference from what its neighbours let
/// expect: a measure of how well a layout explains them.

#include <cstdint>
#include <vector>

namespace Korvex2::Tool {

/// Samples of one channel in the pieces of a file that are looked at, each piece without gaps.
struct Samples {
  unsigned depth;  ///< bits of a sample: 8, 12 or 16
  std::vector<std::vector<std::uint16_t>> pieces;
};

/// Whose neighbours predict a sample.
enum class Neighbours {
  Adjacent,  ///< the next samples at the left and above
  Mosaic,    ///< those of the same colour, two columns and two rows away, and the ones between
};

/// Bits a sample, by the best of a few predictors, when a row has `width` samples. An adaptive code
/// that starts knowing nothing spends them, so small files do not fit themselves. The full depth
/// when no piece has enough rows.
double BitsPerSample(const Samples& samples, Neighbours neighbours, std::size_t width);

/// Whether the low `bits` bits of all samples follow from the rest: constant ones do, and those
/// that repeat the high ones.
bool LowBitsFollow(const Samples& samples, unsigned bits);

/// The mean difference from the sample above: quick, for sorting out widths.
double RowDifference(const Samples& samples, Neighbours neighbours, std::size_t width);

}  // namespace Korvex2::Tool
