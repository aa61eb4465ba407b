#pragma once

/// Words of the host's byte order at any address.

#include <cstdint>
#include <cstring>

namespace Korvex2::Kernels::Scalar {

template <typename Word>
Word Load(const std::uint8_t* address) {
  Word word;
  std::memcpy(&word, address, sizeof word);
  return word;
}

template <typename Word>
void Store(std::uint8_t* address, Word word) {
  std::memcpy(address, &word, sizeof word);
}

}  // namespace Korvex2::Kernels::Scalar
