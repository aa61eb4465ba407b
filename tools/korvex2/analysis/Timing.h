#pragma once

/// How long something takes.

#include <functional>
#include <vector>

namespace Korvex2::Tool {

/// The median processor time of each job in seconds, of as many rounds as fit into a moment, an odd
/// number. Only the calling thread's time counts, not what other processes take in between; the
/// jobs take turns, so that what those do to the caches meets all of them alike.
std::vector<double> MedianSeconds(const std::vector<std::function<void()>>& jobs);

}  // namespace Korvex2::Tool
