#pragma once

/// Every kernel as the literal loop: one step after another, nothing clever, in double precision.

#include <cstddef>
#include <cstdint>
#include <span>

namespace Reference {

/// What a kernel works on. The runs may overlap; what then results is what these loops do.
struct Run {
  const std::uint8_t* source;
  std::uint8_t* destination;
  std::uint32_t pixels;
  /// The converter's byte-order flag.
  bool littleEndian;
  /// What the destination calls its size; only the kernel that clears it looks at this.
  std::size_t destinationSize;
};

struct KernelRow {
  const char* name;
  void (*loop)(const Run& run);
  /// Pixels handled at once, and the bytes that they take on both sides. A begun step is completed.
  unsigned pixels;
  unsigned sourceBytes;
  unsigned destinationBytes;
};

std::span<const KernelRow> Kernels();

/// Null for a name that is no kernel.
const KernelRow* FindKernel(const char* name);

/// Bytes read and written for a run.
std::size_t BytesRead(const KernelRow& kernel, std::uint32_t pixels);
std::size_t BytesWritten(const KernelRow& kernel, std::uint32_t pixels);

/// The saturation of the YUV decoders.
std::uint8_t Clamp(std::int16_t value);

}  // namespace Reference
