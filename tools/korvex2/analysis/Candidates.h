#pragma once

/// What a headerless file may be: its width, height, pixel format and tile, by its size and
/// its samples.

#include <cstdint>
#include <optional>
#include <vector>

#include "PixelFormats.h"
#include "io/File.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {

/// What is known already.
struct Known {
  const PixelFormatInfo* format = nullptr;
  std::optional<std::uint32_t> width;
  std::optional<std::uint32_t> height;
};

struct Candidate {
  const PixelFormatInfo* format;
  std::uint32_t width;
  std::uint32_t height;
  BayerTileFormat tile;  ///< NONE unless the format is raw
  double
      bitsPerByte;    ///< what a byte of the file costs when it is coded as this candidate predicts
  double score;       ///< bitsPerByte, with something added for unlikely shapes; less is likelier
  bool isCommonSize;  ///< of a usual sensor or video mode
};

/// The candidates that fit the size of the file, the likeliest first.
///
/// Each candidate predicts a sample from its neighbours at the left and above. What it predicts
/// worse takes more bits to code; the right candidate needs the fewest. The samples cannot tell red
/// from blue: of two candidates that differ in that alone, the one with more red comes first.
std::vector<Candidate> FindCandidates(const Bytes& file, const Known& known);

}  // namespace Korvex2::Tool
