#pragma once

/// @file
/// Facts about the machine.

#include <cstddef>

#include "Error.h"
#include "Korvex2Export.h"

namespace Korvex2 {

/// Operating systems.
enum OSType {
  WINDOWS_X86 = 0,  ///< Windows, 32 bits
  WINDOWS_X64 = 1,  ///< Windows, 64 bits
  LINUX_X86 = 2,    ///< Linux, 32 bits
  LINUX_X64 = 3,    ///< Linux, 64 bits, on any processor
  MAC = 4,          ///< macOS
  UNKNOWN_OS = 5    ///< another one
};

/// Which byte of a word comes first in memory.
enum ByteOrder {
  BYTE_ORDER_LITTLE_ENDIAN = 0,  ///< the low one
  BYTE_ORDER_BIG_ENDIAN = 1      ///< the high one
};

/// What GetSystemInfo tells. Texts are zero-terminated, cut to fit, and say "unknown" or "none"
/// rather than nothing.
struct SystemInfo {
  OSType osType;              ///< LINUX_X64 for 64-bit Linux on any processor, Arm included
  char osDescription[512];    ///< distribution, kernel and its version
  ByteOrder byteOrder;        ///< of the processor
  std::size_t sysMemSize;     ///< physical memory, bytes
  char cpuDescription[512];   ///< the processor's own name
  std::size_t numCpuCores;    ///< logical processors online
  char driverList[512];       ///< camera, video and USB kernel modules loaded, comma-separated
  char libraryList[512];      ///< shared libraries of this process, comma-separated
  char gpuDescription[512];   ///< display adapters, comma-separated
  std::size_t screenWidth;    ///< pixels of the first connected screen; 0 without a screen
  std::size_t screenHeight;   ///< rows of it
  unsigned int reserved[16];  ///< zero
};

/// What concerns the machine rather than frames.
class KORVEX2_API Utilities {
 public:
  /// Fills every field of *pSystemInfo from the running machine, as the first call that succeeded
  /// found it; byteOrder is set even when the rest fails. VORERROR_INVALID_PARAMETER for a null
  /// pointer. Safe from many threads.
  static Error GetSystemInfo(SystemInfo* pSystemInfo) noexcept;
};

}  // namespace Korvex2
