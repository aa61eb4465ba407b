#pragma once

/// What every fuzz target consists of: a function that runs one case, and the cases that it is
/// replayed with and that a campaign starts from.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// Runs a case; aborts with a report on stderr where something is wrong. Always returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Korvex2::Fuzz {

using Bytes = std::vector<std::uint8_t>;

/// Made by code: a case of each kind, and, named found-..., what a campaign once found wrong.
struct Seed {
  std::string name;
  Bytes bytes;
};
std::vector<Seed> Seeds();

/// A case is a plain struct of numbers, of which all bytes count, and what follows it.
template <typename Header>
struct Case {
  static_assert(std::has_unique_object_representations_v<Header>);

  Case(const std::uint8_t* data, std::size_t size)
      : rest(data + std::min(size, sizeof(Header)), size - std::min(size, sizeof(Header))) {
    if (size > 0) {
      std::memcpy(&header, data, std::min(size, sizeof(Header)));
    }
  }

  Header header{};
  std::span<const std::uint8_t> rest;
};

template <typename Header>
Bytes Encode(const Header& header, std::span<const std::uint8_t> rest = {}) {
  Bytes bytes(sizeof header + rest.size());
  std::memcpy(bytes.data(), &header, sizeof header);
  std::ranges::copy(rest, bytes.begin() + sizeof header);
  return bytes;
}

/// The element that a byte picks, whatever the byte.
template <typename Range>
auto& Pick(Range&& range, std::size_t which) {
  return range[which % std::size(range)];
}

/// Bytes at a heap address of exactly their size, so that a step past either end is seen.
class Block {
 public:
  explicit Block(std::size_t size) : m_bytes(new std::uint8_t[size]), m_size(size) {}
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { delete[] m_bytes; }

  std::uint8_t* data() { return m_bytes; }
  const std::uint8_t* data() const { return m_bytes; }
  std::size_t size() const { return m_size; }

 private:
  std::uint8_t* m_bytes;
  std::size_t m_size;
};

/// Ends the process with the report; the fuzzer then keeps the case.
[[noreturn]] void Fail(std::string_view report);

}  // namespace Korvex2::Fuzz
