#pragma once

/// Ways through a library that has a function for some pairs of formats and none for others.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Peers.h"

namespace Korvex2::Bench {

/// A layout on the way: one of ours by its PixelFormat, or one that only peers have.
enum class Layout : std::uint32_t {
  Planar422 = 1,  ///< planes Y, U, V; U and V of half the width
  Planar444,      ///< planes Y, U, V
  PackedYvu,      ///< Y V U
};

constexpr Layout LayoutOf(PixelFormat format) {
  return static_cast<Layout>(format);
}

/// One function of a library: `rows` rows of `cols` pixels from src to dst, both packed.
struct Step {
  Layout from;
  Layout to;
  std::string_view name;
  void (*run)(const std::uint8_t* src, std::uint8_t* dst, int cols, int rows);
};

/// The shortest way of at most three steps. What lies between the steps goes through strips of rows
/// that stay in the cache, as a careful user of the library would write it.
std::optional<Peer> FindWay(std::string_view library, std::span<const Step> steps,
                            PixelFormat source, PixelFormat target);

}  // namespace Korvex2::Bench
