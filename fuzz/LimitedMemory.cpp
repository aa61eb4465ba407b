#include "LimitedMemory.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t largest = SIZE_MAX;

void* Allocate(std::size_t size) noexcept {
  return size > largest ? nullptr : std::malloc(size > 0 ? size : 1);
}

void* Allocate(std::size_t size, std::align_val_t alignment) noexcept {
  void* p = nullptr;
  return size > largest || posix_memalign(&p, static_cast<std::size_t>(alignment), size) != 0
             ? nullptr
             : p;
}

void* OrThrow(void* p) {
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

}  // namespace

void* operator new(std::size_t size) {
  return OrThrow(Allocate(size));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return OrThrow(Allocate(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Allocate(size, alignment);
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
void operator delete(void* p, std::align_val_t) noexcept {
  std::free(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
  std::free(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(p);
}

namespace Korvex2::Fuzz {

LimitedMemory::LimitedMemory(std::size_t largestBlock) {
  largest = largestBlock;
}

LimitedMemory::~LimitedMemory() {
  largest = SIZE_MAX;
}

}  // namespace Korvex2::Fuzz
