#pragma once

#include "Method.h"

namespace Korvex2::Bayer {

/// Green after J. Hamilton and J. Adams, "Adaptive color plane interpolation in single sensor color
/// electronic camera", US patent 5629734 (1997); red and blue by interpolating their difference to
/// green.
extern const Method kEdgeSensing;

/// The vector versions; only where Highway is compiled in.
BlockFunctions EdgeSensingSimd(InstructionSet set);

/// The scratch memory holds a row per row of the block and so many more above and below.
inline constexpr int kEdgeSensingScratchMargin = 1;

/// Samples from one row of the scratch memory to the next. Column 0 lies on a multiple of
/// kVectorBytes, kVectorBytes after the beginning of the row.
constexpr std::ptrdiff_t EdgeSensingScratchStride(int cols, int sampleBytes) {
  const int vector = kVectorBytes / sampleBytes;
  return (cols + vector - 1) / vector * vector + 3 * vector;
}

}  // namespace Korvex2::Bayer
