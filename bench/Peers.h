#pragma once

/// Other libraries doing the nearest thing to one of our conversions, on one thread.

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Korvex2Defs.h"

namespace Korvex2::Bench {

struct FrameSize {
  unsigned cols;
  unsigned rows;
  std::size_t Pixels() const { return std::size_t{cols} * rows; }
};

/// Converts one packed frame. The buffers are 64-byte aligned and hold the packed frame.
using Call = std::function<void(const std::uint8_t* src, std::uint8_t* dst)>;

/// The way of a peer from one format to another.
struct Peer {
  std::string_view library;             ///< "libyuv"
  std::string how;                      ///< the functions that it calls: "RAWToARGB + ARGBToUYVY"
  std::function<Call(FrameSize)> make;  ///< a call for frames of this size; null if it cannot
};

/// Name and version of a library that was found when the benchmark was configured.
struct PeerLibrary {
  std::string_view name;
  std::string version;
  std::optional<Peer> (*find)(PixelFormat source, PixelFormat target);
};

/// Those that were found; none of them is needed.
std::span<const PeerLibrary> PeerLibraries();

#if KORVEX2_BENCH_OPENCV
PeerLibrary OpenCv();
#endif
#if KORVEX2_BENCH_LIBYUV
PeerLibrary LibYuv();
#endif
#if KORVEX2_BENCH_SWSCALE
PeerLibrary SwScale();
#endif
#if KORVEX2_BENCH_ZIMG
PeerLibrary Zimg();
#endif

}  // namespace Korvex2::Bench
