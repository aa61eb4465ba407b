#include "support/HeapWatch.h"

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

thread_local unsigned char oldMemory = 0xA5;
thread_local std::size_t largestPiece = SIZE_MAX;
thread_local std::size_t held = 0;
thread_local std::size_t peak = 0;

void* Take(std::size_t size, std::size_t alignment) noexcept {
  if (size > largestPiece) return nullptr;
  void* p = nullptr;
  if (posix_memalign(&p, std::max(alignment, sizeof(void*)), std::max<std::size_t>(size, 1)) != 0) {
    return nullptr;
  }
  const std::size_t room = malloc_usable_size(p);
  std::memset(p, oldMemory, room);
  held += room;
  peak = std::max(peak, held);
  return p;
}

void* TakeOrThrow(std::size_t size, std::size_t alignment) {
  void* const p = Take(size, alignment);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void GiveBack(void* p) noexcept {
  if (p == nullptr) return;
  const std::size_t room = malloc_usable_size(p);
  // What is freed at once is still read by nobody, so the compiler would drop a plain memset.
  std::memset(p, oldMemory, room);
  asm volatile("" : : "r"(p) : "memory");
  held -= std::min(held, room);  // a thread may give back what another took
  std::free(p);
}

constexpr std::size_t kOrdinary = alignof(std::max_align_t);

}  // namespace

// clang-format off
void* operator new(std::size_t size) { return TakeOrThrow(size, kOrdinary); }
void* operator new[](std::size_t size) { return TakeOrThrow(size, kOrdinary); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Take(size, kOrdinary); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Take(size, kOrdinary); }
void* operator new(std::size_t size, std::align_val_t a) { return TakeOrThrow(size, std::size_t(a)); }
void* operator new[](std::size_t size, std::align_val_t a) { return TakeOrThrow(size, std::size_t(a)); }
void* operator new(std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept { return Take(size, std::size_t(a)); }
void* operator new[](std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept { return Take(size, std::size_t(a)); }
void operator delete(void* p) noexcept { GiveBack(p); }
void operator delete[](void* p) noexcept { GiveBack(p); }
void operator delete(void* p, std::size_t) noexcept { GiveBack(p); }
void operator delete[](void* p, std::size_t) noexcept { GiveBack(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { GiveBack(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { GiveBack(p); }
void operator delete(void* p, std::align_val_t) noexcept { GiveBack(p); }
void operator delete[](void* p, std::align_val_t) noexcept { GiveBack(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { GiveBack(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { GiveBack(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { GiveBack(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { GiveBack(p); }
// clang-format on

namespace Korvex2::Test {

void SetOldMemory(unsigned char byte) {
  oldMemory = byte;
}

LargestPiece::LargestPiece(std::size_t bytes) {
  largestPiece = bytes;
}

LargestPiece::~LargestPiece() {
  largestPiece = SIZE_MAX;
}

HeapWatch::HeapWatch() : m_heldBefore(held) {
  peak = held;
}

std::size_t HeapWatch::Peak() const {
  return peak - m_heldBefore;
}

std::size_t HeapWatch::Held() const {
  return held - m_heldBefore;
}

}  // namespace Korvex2::Test
