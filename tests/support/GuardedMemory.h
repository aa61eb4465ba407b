#pragma once

/// Bytes with a page on both sides that faults when touched.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Korvex2::Test {

class GuardedMemory {
 public:
  /// Room for so many bytes at most.
  explicit GuardedMemory(std::size_t capacity)
      : m_page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
        m_room((capacity + 2 * kCanary + m_page - 1) / m_page * m_page) {
    void* p = mmap(nullptr, m_room + 2 * m_page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) return;
    m_map = static_cast<std::uint8_t*>(p);
    mprotect(m_map + m_page, m_room, PROT_READ | PROT_WRITE);
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory() {
    if (m_map != nullptr) munmap(m_map, m_room + 2 * m_page);
  }

  /// `size` bytes that end where the upper guard begins, canaries before them.
  std::uint8_t* AtEnd(std::size_t size) { return Place(m_room - size, size); }
  /// `size` bytes that begin where the lower guard ends, canaries after them.
  std::uint8_t* AtStart(std::size_t size) { return Place(0, size); }
  /// `size` bytes at an odd address, canaries on both sides.
  std::uint8_t* AtOddAddress(std::size_t size) { return Place(kCanary + 1, size); }

  /// Whether nothing but the placed bytes was written since.
  bool CanariesIntact() const {
    const std::uint8_t* const first = m_map + m_page;
    const std::uint8_t* const placed = first + m_offset;
    const std::uint8_t* const end = placed + m_size;
    const auto intact = [](std::uint8_t byte) { return byte == kCanaryByte; };
    return std::all_of(placed - std::min(m_offset, kCanary), placed, intact) &&
           std::all_of(end, end + std::min(m_room - m_offset - m_size, kCanary), intact);
  }

 private:
  static constexpr std::size_t kCanary = 64;
  static constexpr std::uint8_t kCanaryByte = 0xC7;

  std::uint8_t* Place(std::size_t offset, std::size_t size) {
    m_offset = offset;
    m_size = size;
    std::memset(m_map + m_page, kCanaryByte, m_room);
    return m_map + m_page + offset;
  }

  std::size_t m_page;
  std::size_t m_room;
  std::uint8_t* m_map = nullptr;
  std::size_t m_offset = 0;
  std::size_t m_size = 0;
};

}  // namespace Korvex2::Test
