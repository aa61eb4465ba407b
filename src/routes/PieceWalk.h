#pragma once

/// Runs any route of kernels over a run of pixels, without full-size temporaries.

#include <cstddef>
#include <cstdint>

#include "Routes.h"
#include "kernels/Kernels.h"

namespace Korvex2 {

/// Whether a routine consists of kernels only, so that its run can be cut into pieces.
bool IsWalkable(const RoutineInfo& info) noexcept;

/// Bytes that a walkable routine reads from its source and writes to its destination for a run of
/// `pixels`: its first kernel and its last one complete a begun step.
struct RunSize {
  std::size_t source;
  std::size_t destination;
};
RunSize RunSizeOf(const RoutineInfo& info, std::size_t pixels) noexcept;

/// Pixels between the places at which a run of a walkable routine can be cut into parts that give
/// the bytes of the whole.
std::size_t PixelsPerCut(const RoutineInfo& info) noexcept;

/// Whether the last kernel of a walkable routine zeroes its whole destination before it writes.
bool ClearsDestination(const RoutineInfo& info) noexcept;

/// Runs a walkable routine on `pixels` packed pixels from src into dst; the runs must not overlap.
///
/// A chain walks the run in pieces that stay in the first-level cache, both steps on each piece.
/// Every byte comes out as if the chain had gone over the whole run with a temporary image of zeros
/// between its steps. Takes up to a few kilobytes of stack for each chain that nests, and no heap.
void Walk(const RoutineInfo& info, const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
          Kernels::Flags flags) noexcept;

}  // namespace Korvex2
