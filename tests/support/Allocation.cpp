#include "support/Allocation.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t largestThatSucceeds = SIZE_MAX;
thread_local std::size_t allocations = 0;
thread_local std::size_t failures = 0;
thread_local std::size_t ordinaryAllocations = 0;
thread_local bool heapIsShort = false;
thread_local std::ptrdiff_t outstanding = 0;

// Allocations of one kind, some of which fail.
struct Faults {
  std::size_t seen = 0;
  std::size_t first = SIZE_MAX;
  std::size_t last = SIZE_MAX;

  bool NextFails() {
    ++seen;
    return seen >= first && seen <= last;
  }
};
thread_local Faults alignedFaults;
thread_local Faults ordinaryFaults;

void* Counted(void* p) noexcept {
  outstanding += p != nullptr ? 1 : 0;
  return p;
}

void Release(void* p) noexcept {
  outstanding -= p != nullptr ? 1 : 0;
  std::free(p);
}

void* Allocate(std::size_t size, std::align_val_t alignment) noexcept {
  ++allocations;
  if (alignedFaults.NextFails() || size > largestThatSucceeds) {
    ++failures;
    return nullptr;
  }
  void* p = nullptr;
  const bool done = posix_memalign(&p, static_cast<std::size_t>(alignment), size) == 0;
  return Counted(done ? p : nullptr);
}

void* AllocateOrdinary(std::size_t size) noexcept {
  ++ordinaryAllocations;
  const bool fails = ordinaryFaults.NextFails() || heapIsShort;
  return Counted(fails ? nullptr : std::malloc(size > 0 ? size : 1));
}

}  // namespace

void* operator new(std::size_t size) {
  void* p = AllocateOrdinary(size);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return AllocateOrdinary(size);
}

void operator delete(void* p) noexcept {
  Release(p);
}
void operator delete(void* p, std::size_t) noexcept {
  Release(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  Release(p);
}

void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Allocate(size, alignment);
}

void* operator new(std::size_t size, std::align_val_t alignment) {
  void* p = Allocate(size, alignment);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void operator delete(void* p, std::align_val_t) noexcept {
  Release(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
  Release(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept {
  Release(p);
}

namespace Korvex2::Test {

MemoryShortage::MemoryShortage(std::size_t largest) {
  largestThatSucceeds = largest;
  failures = 0;
}

MemoryShortage::~MemoryShortage() {
  largestThatSucceeds = SIZE_MAX;
}

std::size_t MemoryShortage::Failures() const {
  return failures;
}

HeapShortage::HeapShortage() {
  heapIsShort = true;
}

HeapShortage::~HeapShortage() {
  heapIsShort = false;
}

namespace {

Faults& FaultsOf(AllocationFault::Of kind) {
  return kind == AllocationFault::Of::PixelBuffers ? alignedFaults : ordinaryFaults;
}

}  // namespace

AllocationFault::AllocationFault(Of kind, std::size_t which, Extent extent) {
  FaultsOf(kind) = {0, which, extent == Extent::One ? which : SIZE_MAX};
}

AllocationFault::~AllocationFault() {
  alignedFaults = {};
  ordinaryFaults = {};
}

bool AllocationFault::Happened() const {
  return alignedFaults.seen >= alignedFaults.first || ordinaryFaults.seen >= ordinaryFaults.first;
}

std::ptrdiff_t OutstandingAllocations() {
  return outstanding;
}

std::size_t OrdinaryAllocations() {
  return ordinaryAllocations;
}

std::size_t AlignedAllocations() {
  return allocations;
}

}  // namespace Korvex2::Test
