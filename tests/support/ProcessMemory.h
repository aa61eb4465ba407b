#pragma once

/// What the process holds, as the heap and as the system count it.

#include <malloc.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>

namespace Korvex2::Test {

struct ProcessMemory {
  std::size_t heap = 0;      ///< bytes that malloc has given out
  std::size_t resident = 0;  ///< bytes in memory
};

/// Asks once, all threads' heaps together. A sanitizer's heap counts as 0.
inline ProcessMemory MemoryNow() {
  const struct mallinfo2 info = mallinfo2();
  std::size_t total = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return {info.uordblks + info.hblkhd, resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE))};
}

}  // namespace Korvex2::Test
