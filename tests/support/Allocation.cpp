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

void* Allocate(std::size_t size, std::align_val_t alignment) noexcept {
  ++allocations;
  if (size > largestThatSucceeds) {
    ++failures;
    return nullptr;
  }
  void* p = nullptr;
  return posix_memalign(&p, static_cast<std::size_t>(alignment), size) == 0 ? p : nullptr;
}

void* AllocateOrdinary(std::size_t size) noexcept {
  ++ordinaryAllocations;
  return heapIsShort ? nullptr : std::malloc(size > 0 ? size : 1);
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
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  std::free(p);
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
  std::free(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
  std::free(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(p);
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

std::size_t OrdinaryAllocations() {
  return ordinaryAllocations;
}

std::size_t AlignedAllocations() {
  return allocations;
}

}  // namespace Korvex2::Test
