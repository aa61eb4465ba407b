#include "analysis/Timing.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>

namespace Korvex2::Tool {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr std::size_t kFewestRounds = 5;
constexpr std::size_t kMostRounds = 101;
constexpr std::chrono::milliseconds kMoment(200);

Seconds ProcessorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

double SecondsOf(const std::function<void()>& job) {
  const Seconds start = ProcessorTime();
  job();
  return (ProcessorTime() - start).count();
}

// Of an odd number.
double Median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

std::vector<double> MedianSeconds(const std::vector<std::function<void()>>& jobs) {
  for (const auto& job : jobs) {
    job();  // memory is touched, caches are filled
  }
  std::vector<std::vector<double>> seconds(jobs.size());
  const auto begin = Clock::now();
  for (std::size_t rounds = 0; rounds < kFewestRounds || rounds % 2 == 0 ||
                               (rounds < kMostRounds && Clock::now() - begin < kMoment);
       ++rounds) {
    for (std::size_t i = 0; i < jobs.size(); ++i) {
      seconds[i].push_back(SecondsOf(jobs[i]));
    }
  }
  std::vector<double> medians;
  medians.reserve(seconds.size());
  for (auto& each : seconds) {
    medians.push_back(Median(each));
  }
  return medians;
}

}  // namespace Korvex2::Tool
