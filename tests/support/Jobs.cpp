#include "support/Jobs.h"

#include <cstring>
#include <latch>
#include <thread>

#include "CheckConversion.h"
#include "PixelFormats.h"
#include "support/Comparison.h"

namespace Korvex2::Test {
namespace {

constexpr int kMethods = 10;

}  // namespace

std::string Describe(const Job& job) {
  return std::string(Reference::FormatName(job.source.GetPixelFormat())) + " -> " +
         Reference::FormatName(job.target) + ", method " +
         std::to_string(job.source.GetColorProcessing());
}

Job MakeJob(PixelFormat from, PixelFormat to, int method, unsigned seed, unsigned scale) {
  Job job;
  job.target = to;
  const unsigned rows = (12 + 2 * (seed % 8)) * scale;
  const unsigned cols = (20 + 2 * (seed % 5)) * scale;
  const unsigned stride = PackedStride(cols, Image::DetermineBitsPerPixel(from));
  EXPECT_EQ(
      job.source.SetDimensions(rows, cols, stride, from, static_cast<BayerTileFormat>(1 + seed % 4))
          .GetType(),
      VORERROR_OK);
  job.source.SetColorProcessing(static_cast<ColorProcessingAlgorithm>(method));
  Fill(job.source.GetData(), job.source.GetDataSize(), Content::Random, seed);
  job.answer = ImageConverter().Convert(&job.source, to, &job.picture).GetType();
  job.predicted = CheckConversion(job.source, to).GetType();
  return job;
}

std::vector<Job> AllJobs(unsigned seed, unsigned scale) {
  std::vector<Job> jobs;
  for (const PixelFormatInfo& from : PixelFormats()) {
    const int methods = Reference::IsRaw(from.format) ? kMethods : 1;
    for (const PixelFormatInfo& to : PixelFormats()) {
      for (int method = 0; method < methods; ++method) {
        jobs.push_back(MakeJob(from.format, to.format, method, seed++, scale));
      }
    }
  }
  return jobs;
}

Error Convert(ImageConverter& converter, const Job& job, Image& destination) {
  if (job.predicted == VORERROR_IMAGE_CONVERSION_FAILED) {
    destination = Image();
  }
  return converter.Convert(&job.source, job.target, &destination);
}

bool SameOutcome(const Job& job, const Error& error, const Image& picture) {
  if (error != job.answer) return false;
  const std::size_t size = job.picture.GetDataSize();
  return error != VORERROR_OK || (picture.GetDataSize() == size &&
                                  std::memcmp(picture.GetData(), job.picture.GetData(), size) == 0);
}

void AtOnce(int threads, const std::function<void(int)>& work) {
  std::latch start(threads);
  std::vector<std::thread> running;
  running.reserve(static_cast<std::size_t>(threads));
  for (int t = 0; t < threads; ++t) {
    running.emplace_back([&, t] {
      start.arrive_and_wait();
      work(t);
    });
  }
  for (std::thread& thread : running) thread.join();
}

}  // namespace Korvex2::Test
