#pragma once

/// Runs a routine on buffers that need not hold all the bytes that it touches.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "routes/PieceWalk.h"

namespace Korvex2 {

/// Bytes that are there to be read.
struct SourceBytes {
  const std::uint8_t* data;
  std::size_t size;

  SourceBytes From(std::size_t offset) const {
    const std::size_t skipped = std::min(size, offset);
    return {data + skipped, size - skipped};
  }
};

/// Bytes that are there to be written.
struct DestinationBytes {
  std::uint8_t* data;
  std::size_t size;

  DestinationBytes From(std::size_t offset) const {
    const std::size_t skipped = std::min(size, offset);
    return {data + skipped, size - skipped};
  }
};

/// Calls run(src, dst, pixels) for a run of a walkable routine so that nothing outside the two
/// buffers is touched: source bytes that are missing count as zero, destination bytes that have no
/// place are dropped. What both buffers hold whole is one call, in place; the rest, as a rule the
/// last begun step, goes through a few bytes of stack.
template <typename Run>
void RunWithin(const RoutineInfo& info, SourceBytes src, DestinationBytes dst, std::size_t pixels,
               Run run) {
  const RunSize whole = RunSizeOf(info, pixels);
  if (whole.source <= src.size && whole.destination <= dst.size) {
    run(src.data, dst.data, pixels);
    return;
  }
  const std::size_t part = PixelsPerCut(info);
  const RunSize advance = RunSizeOf(info, part);
  const std::size_t parts = std::min(src.size / advance.source, dst.size / advance.destination);
  run(src.data, dst.data, parts * part);

  constexpr std::size_t kLargestPart = 4 * 8;  // four pixels of four words
  for (std::size_t i = parts; i * part < pixels; ++i) {
    const SourceBytes from = src.From(i * advance.source);
    const DestinationBytes to = dst.From(i * advance.destination);
    const std::size_t count = std::min(part, pixels - i * part);
    const RunSize size = RunSizeOf(info, count);
    std::uint8_t in[kLargestPart] = {};
    std::uint8_t out[kLargestPart] = {};
    std::copy_n(from.data, std::min(size.source, from.size), in);
    run(in, out, count);
    std::copy_n(out, std::min(size.destination, to.size), to.data);
  }
}

}  // namespace Korvex2
