#pragma once

/// Memory that runs out on demand. Linking Allocation.cpp replaces operator new: the aligned one,
/// with which images allocate, and the ordinary one.

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

/// While one lives, ordinary allocations of this thread fail.
class HeapShortage {
 public:
  HeapShortage();
  ~HeapShortage();
  HeapShortage(const HeapShortage&) = delete;
  HeapShortage& operator=(const HeapShortage&) = delete;
};

/// Allocations of this thread so far, failed ones included: of pixel buffers, and of anything else.
std::size_t AlignedAllocations();
std::size_t OrdinaryAllocations();

}  // namespace Korvex2::Test
