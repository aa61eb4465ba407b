#pragma once

/// A heap that counts, and whose old memory can be told apart. Linking HeapWatch.cpp replaces every
/// operator new and operator delete of the process, the library's included.

#include <cstddef>

namespace Korvex2::Test {

/// Fills all memory that this thread takes or gives back from now on.
void SetOldMemory(unsigned char byte);

/// While one lives, this thread gets no piece of memory larger than this.
class LargestPiece {
 public:
  explicit LargestPiece(std::size_t bytes);
  ~LargestPiece();
  LargestPiece(const LargestPiece&) = delete;
  LargestPiece& operator=(const LargestPiece&) = delete;
};

/// Counts what this thread takes while it lives.
class HeapWatch {
 public:
  HeapWatch();
  HeapWatch(const HeapWatch&) = delete;
  HeapWatch& operator=(const HeapWatch&) = delete;

  /// The most bytes that were held at once beyond those held at the beginning.
  std::size_t Peak() const;
  /// Bytes held now beyond those held at the beginning.
  std::size_t Held() const;

 private:
  std::size_t m_heldBefore;
};

}  // namespace Korvex2::Test
