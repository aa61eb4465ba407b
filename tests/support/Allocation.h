#pragma once

/// Pixel buffers that find no memory. Linking Allocation.cpp replaces the aligned operator new that
/// images allocate with.

#include <cstddef>

namespace Korvex2::Test {

/// While one lives, aligned allocations of this thread above a size fail.
class MemoryShortage {
 public:
  explicit MemoryShortage(std::size_t largestThatSucceeds = 0);
  ~MemoryShortage();
  MemoryShortage(const MemoryShortage&) = delete;
  MemoryShortage& operator=(const MemoryShortage&) = delete;

  /// Allocations that failed so far.
  std::size_t Failures() const;
};

/// Aligned allocations of this thread so far, failed ones included.
std::size_t AlignedAllocations();

}  // namespace Korvex2::Test
