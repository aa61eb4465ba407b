/// Calls from several threads do not disturb each other.

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "TestPictures.h"

namespace Korvex2::Bayer {
namespace {

TEST(Threads, EightAtOnceGiveTheSameBytes) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 6;
  struct Job {
    Mosaic mosaic;
    Call call;
    Bytes expected;
    bool same = true;
  };
  std::vector<Job> jobs;
  for (int i = 0; i < kThreads; ++i) {
    const Mosaic mosaic = RandomMosaic(40 + 2 * i, 100 + 6 * i, 255, static_cast<unsigned>(i));
    const Call call{.method = kAllMethods[i % 6],
                    .pattern = kAllPatterns[i % 4],
                    .input = kInputFormats[i % 2],
                    .output = kOutputFormats[i]};
    jobs.push_back({mosaic, call, DemosaicedBytes(mosaic, call)});
  }
  std::vector<std::thread> threads;
  for (Job& job : jobs) {
    threads.emplace_back([&job] {
      for (int round = 0; round < kRounds; ++round) {
        const Bytes in = Encoded(job.mosaic, job.call.input);
        Bytes out(job.expected.size());
        const BayerError error =
            bayerToColor(job.call.input, in.data(), job.mosaic.rows, job.mosaic.cols,
                         job.call.output, out.data(), job.call.method, job.call.pattern);
        job.same = job.same && error == beOK && out == job.expected;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const Job& job : jobs) EXPECT_TRUE(job.same) << MethodName(job.call.method);
}

}  // namespace
}  // namespace Korvex2::Bayer
