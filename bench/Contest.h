#pragma once

/// One pair of formats at one size, done by everyone who can.

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Frames.h"
#include "Peers.h"

namespace Korvex2::Bench {

/// Hot: everyone works on the same two buffers all the time. Cold: each call takes the next of
/// many pairs of buffers.
enum class Cache { Hot, Cold };

struct Setting {
  PixelFormat source;
  PixelFormat target;
  FrameSize size;
  Cache cache;
  Content content;
  std::chrono::duration<double> budget;  ///< for each contestant, roughly
};

/// What a contestant took for a frame, and what it made.
struct Measure {
  double median = 0;  ///< seconds
  double least = 0;   ///< seconds
  std::size_t samples = 0;
  std::string how = {};  ///< a peer's functions
  std::optional<unsigned> deviation =
      {};                    ///< a peer's largest, in steps of a sample, from our result
  std::string failure = {};  ///< why there is no measure
  bool absent = false;       ///< a peer that has no way for frames of this size: no fault
};

/// "ours", "fresh", "memcpy", "literal" and the libraries that have a way for the pair.
std::vector<std::string> Contestants(PixelFormat source, PixelFormat target);

/// Checks the bytes, then times the contestants of these names in turns, round after round, so that
/// whatever else the machine does meets all of them alike. They must be among Contestants().
std::map<std::string, Measure> Hold(const Setting& setting, const std::vector<std::string>& names);

}  // namespace Korvex2::Bench
