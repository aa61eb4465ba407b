#pragma once

/// Runs any route of kernels over a run of pixels, without full-size temporaries.

#include <cstddef>
#include <cstdint>

#include "kernels/Kernels.h"
#include "routes/Routines.h"

namespace Korvex2 {

/// Whether a routine consists of kernels only, so that its run can be cut into pieces.
bool IsWalkable(Routine routine) noexcept;

/// Bytes that a walkable routine may read from its source and write to its destination for a run of
/// `pixels`, the last group of four completed.
struct RunSize {
  std::size_t source;
  std::size_t destination;
};
RunSize RunSizeOf(Routine routine, std::size_t pixels) noexcept;

/// Whether the last kernel of a walkable routine zeroes its whole destination before it writes.
bool ClearsDestination(Routine routine) noexcept;

/// Runs a walkable routine on `pixels` packed pixels from src into dst; the runs must not overlap.
///
/// A chain walks the run in pieces that stay in the first-level cache, both steps on each piece.
/// Every byte comes out as if the chain had gone over the whole run with a temporary image of zeros
/// between its steps. Takes up to a few kilobytes of stack for each chain that nests, and no heap.
void Walk(Routine routine, const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
          Kernels::Flags flags) noexcept;

}  // namespace Korvex2
