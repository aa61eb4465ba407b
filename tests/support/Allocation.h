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

/// While one lives, a single allocation of this thread fails, or it and all of its kind that
/// follow.
class AllocationFault {
 public:
  enum class Of { PixelBuffers, AnythingElse };
  enum class Extent { One, AllFollowing };

  /// `which` counts from 1, from now on.
  AllocationFault(Of kind, std::size_t which, Extent extent = Extent::One);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;

  /// Whether so many allocations were asked for.
  bool Happened() const;
};

/// Allocations of this thread that it has not released yet, of either kind.
std::ptrdiff_t OutstandingAllocations();

/// Allocations of this thread so far, failed ones included: of pixel buffers, and of anything else.
std::size_t AlignedAllocations();
std::size_t OrdinaryAllocations();

}  // namespace Korvex2::Test
