// Converts for as long as it is told, in rounds of 2 to 16 threads that share one converter, while
// others take and release the shared instance, change the default colour processing and change the
// instruction set. Every outcome is compared with the oracle's, and no round may leave memory
// behind. `./run soak [seconds]`.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "InstructionSets.h"
#include "PixelFormats.h"
#include "support/Comparison.h"
#include "support/Jobs.h"
#include "support/ProcessMemory.h"

namespace Korvex2::Test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMiB = std::size_t{1} << 20;
// After a round all threads are joined, and the heap holds what it held before, but for what malloc
// keeps for itself. Pages come and go with the heaps of the threads.
constexpr std::size_t kHeapMayGrow = 4 * 1024;
constexpr std::size_t kResidentMayGrow = 32 * kMiB;
constexpr int kThreadCounts = 15;  // 2 to 16
constexpr int kWarmUpRounds = 2 * kThreadCounts;

constexpr ColorProcessingAlgorithm kDefaults[] = {NEAREST_NEIGHBOR, EDGE_SENSING, HQ_LINEAR};

bool AgreesWithTheOracle(const Job& job) {
  Reference::Converter oracle;
  oracle.defaultMethod = static_cast<std::uint32_t>(Image::GetDefaultColorProcessing());
  oracle.engine = OracleEngine;
  const Reference::Frame source = FrameOf(job.source);
  Reference::Frame picture;
  const Reference::Outcome outcome = oracle.Convert(&source, job.target, &picture);
  return outcome.code == job.answer &&
         (outcome.code != Reference::kOk ||
          (picture.dataSize == job.picture.GetDataSize() &&
           std::memcmp(picture.data, job.picture.GetData(), picture.dataSize) == 0));
}

/// Whether the default colour processing, which changes all the while, has a say in it.
bool TakesTheDefault(const Job& job) {
  return job.source.GetPixelFormat() == PIXEL_FORMAT_RAW12 ||
         (Reference::IsRaw(job.source.GetPixelFormat()) &&
          job.source.GetColorProcessing() == DEFAULT);
}

/// What the threads of all rounds share.
struct Work {
  std::vector<Job> jobs;      // one outcome each
  std::vector<Job> defaults;  // one mosaic, by each of the defaults in turn
  Image defaultSource;
  std::atomic<std::size_t> conversions{0};
  std::atomic<std::size_t> wrong{0};
  std::atomic<std::size_t> changes{0};
};

void MakeJobs(Work& work) {
  for (const unsigned scale : {1U, 6U}) {
    for (Job& job : AllJobs(1000 * scale, scale)) {
      if (!AgreesWithTheOracle(job)) {
        std::printf("soak: %s differs from the oracle\n", Describe(job).c_str());
        ++work.wrong;
      }
      if (!TakesTheDefault(job)) work.jobs.push_back(std::move(job));
    }
  }
  for (const ColorProcessingAlgorithm method : kDefaults) {
    work.defaults.push_back(MakeJob(PIXEL_FORMAT_RAW16, PIXEL_FORMAT_BGRU, method, 9));
  }
  work.defaultSource = work.defaults[0].source;
  work.defaultSource.SetColorProcessing(DEFAULT);
}

void Count(Work& work, bool right, const Job& job, const Error& error) {
  ++work.conversions;
  if (right) return;
  ++work.wrong;
  std::printf("soak: %s came out wrong: %s\n", Describe(job).c_str(), error.ToString().c_str());
}

void ConvertUntil(Clock::time_point end, Work& work, std::size_t first) {
  Image destination;
  for (std::size_t i = first; Clock::now() < end; ++i) {
    ImageConverter* const converter = ImageConverter::getInstance();
    const Job& job = work.jobs[i % work.jobs.size()];
    Error error = Convert(*converter, job, destination);
    Count(work, SameOutcome(job, error, destination), job, error);

    error = converter->Convert(&work.defaultSource, work.defaults[0].target, &destination);
    bool any = false;
    for (const Job& possible : work.defaults) {
      any = any || SameOutcome(possible, error, destination);
    }
    Count(work, any, work.defaults[0], error);
    ImageConverter::releaseInstance();
  }
}

void ChangeSettingsUntil(Clock::time_point end, Work& work) {
  const auto sets = InstructionSets();
  for (std::size_t i = 0; Clock::now() < end; ++i) {
    Image::SetDefaultColorProcessing(kDefaults[i % 3]);
    (void)SetInstructionSet(sets[i % sets.size()]);
    (void)ImageConverter::getInstance();
    ImageConverter::releaseInstance();
    ++work.changes;
    std::this_thread::sleep_for(std::chrono::microseconds(50));
  }
}

void Round(int threads, std::chrono::milliseconds length, Work& work) {
  const Clock::time_point end = Clock::now() + length;
  AtOnce(threads + 1, [&](int t) {
    if (t == threads) {
      ChangeSettingsUntil(end, work);
    } else {
      ConvertUntil(end, work, static_cast<std::size_t>(t) * work.jobs.size() / 16);
    }
  });
}

bool Soak(long seconds) {
  Work work;
  MakeJobs(work);
  Image::SetDefaultColorProcessing(NEAREST_NEIGHBOR);
  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  const auto length = std::chrono::milliseconds(std::max(100L, std::min(5000L, seconds * 10)));
  ProcessMemory warm;
  ProcessMemory most;
  int rounds = 0;
  for (; Clock::now() < end || rounds <= kWarmUpRounds; ++rounds) {
    Round(2 + rounds % kThreadCounts, length, work);
    const ProcessMemory now = MemoryNow();
    if (rounds < kWarmUpRounds) {
      warm = {std::max(warm.heap, now.heap), std::max(warm.resident, now.resident)};
    } else {
      most = {std::max(most.heap, now.heap), std::max(most.resident, now.resident)};
    }
  }
  const bool stable =
      most.heap <= warm.heap + kHeapMayGrow && most.resident <= warm.resident + kResidentMayGrow;
  std::printf(
      "soak: %d rounds of 2 to 16 threads, %zu conversions, %zu wrong, %zu changes of settings\n"
      "soak: heap %zu bytes after the warm-up, then at most %zu; resident %zu KiB, then at most "
      "%zu\n",
      rounds, work.conversions.load(), work.wrong.load(), work.changes.load(), warm.heap, most.heap,
      warm.resident / 1024, most.resident / 1024);
  if (!stable) std::printf("soak: memory grew\n");
  return stable && work.wrong == 0;
}

}  // namespace
}  // namespace Korvex2::Test

int main(int argc, char** argv) {
  const long seconds = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 3600;
  if (argc > 2 || seconds <= 0) {
    std::fprintf(stderr, "usage: soak [seconds]\n");
    return 2;
  }
  return Korvex2::Test::Soak(seconds) ? 0 : 1;
}
