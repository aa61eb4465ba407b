// Many threads at once give the bytes that one thread gives. `./run tsan` runs these under
// ThreadSanitizer.

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "CheckConversion.h"
#include "ImageConverterARMStub.h"
#include "PixelFormats.h"
#include "Utilities.h"
#include "support/Comparison.h"

namespace Korvex2::Test {
namespace {

constexpr int kThreads = 8;
constexpr int kMethods = 10;

/// Runs work(0) ... work(7) at once.
void AtOnce(const std::function<void(int)>& work) {
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      start.arrive_and_wait();
      work(t);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

/// A conversion, and what a single thread made of it.
struct Job {
  Image source;
  PixelFormat target = UNSPECIFIED_PIXEL_FORMAT;
  ErrorType answer = VORERROR_OK;
  ErrorType foreseen = VORERROR_OK;
  Image picture;
};

std::string Describe(const Job& job) {
  return std::string(Reference::FormatName(job.source.GetPixelFormat())) + " -> " +
         Reference::FormatName(job.target) + ", method " +
         std::to_string(job.source.GetColorProcessing());
}

bool SameOutcome(const Job& job, const Error& error, const Image& picture) {
  if (error != job.answer) return false;
  const std::size_t size = job.picture.GetDataSize();
  return error != VORERROR_OK || (picture.GetDataSize() == size &&
                                  std::memcmp(picture.GetData(), job.picture.GetData(), size) == 0);
}

Job MakeJob(const PixelFormatInfo& from, PixelFormat target, int method, unsigned seed) {
  Job job;
  job.target = target;
  const unsigned rows = 12 + 2 * (seed % 8);
  const unsigned cols = 20 + 2 * (seed % 5);
  EXPECT_EQ(job.source
                .SetDimensions(rows, cols, PackedStride(cols, from.bitsPerPixel), from.format,
                               static_cast<BayerTileFormat>(1 + seed % 4))
                .GetType(),
            VORERROR_OK);
  job.source.SetColorProcessing(static_cast<ColorProcessingAlgorithm>(method));
  Fill(job.source.GetData(), job.source.GetDataSize(), Content::Random, seed);
  job.answer = ImageConverter().Convert(&job.source, target, &job.picture).GetType();
  job.foreseen = CheckConversion(job.source, target).GetType();
  return job;
}

/// All pairs, with all methods where the source is a mosaic; other frames for each seed.
std::vector<Job> AllJobs(unsigned seed) {
  std::vector<Job> jobs;
  for (const PixelFormatInfo& from : PixelFormats()) {
    const int methods = Reference::IsRaw(from.format) ? kMethods : 1;
    for (const PixelFormatInfo& to : PixelFormats()) {
      for (int method = 0; method < methods; ++method) {
        jobs.push_back(MakeJob(from, to.format, method, seed++));
      }
    }
  }
  return jobs;
}

/// Converts every job, beginning somewhere else for each thread; the number of wrong outcomes.
int ConvertAll(const ImageConverter& converter, const std::vector<Job>& jobs, std::size_t first) {
  int wrong = 0;
  Image destination;
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    const Job& job = jobs[(first + i) % jobs.size()];
    const Error foreseen = CheckConversion(job.source, job.target);
    const Error error = converter.Convert(&job.source, job.target, &destination);
    if (foreseen == job.foreseen && SameOutcome(job, error, destination)) continue;
    ++wrong;
    ADD_FAILURE() << Describe(job) << ": " << error;
  }
  return wrong;
}

TEST(Threads, ConvertDifferentFramesWithOneConverter) {
  std::vector<std::vector<Job>> jobs;
  std::size_t conversions = 0;
  for (int t = 0; t < kThreads; ++t) {
    jobs.push_back(AllJobs(static_cast<unsigned>(1000 * t)));
    conversions += jobs.back().size();
  }
  const ImageConverter converter;
  std::atomic<int> wrong{0};
  AtOnce([&](int t) {
    const auto mine = static_cast<std::size_t>(t);
    wrong += ConvertAll(converter, jobs[mine], mine * jobs[mine].size() / kThreads);
  });
  EXPECT_EQ(wrong, 0);
  RecordProperty("conversions", static_cast<int>(conversions));
}

TEST(Threads, ConvertTheSameFramesEachWithItsOwnConverter) {
  const std::vector<Job> jobs = AllJobs(77);
  std::atomic<int> wrong{0};
  AtOnce([&](int t) {
    const ImageConverter converter;
    wrong += ConvertAll(converter, jobs, static_cast<std::size_t>(t) * jobs.size() / kThreads);
  });
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, ShareTheInstanceAndConvertWithIt) {
  const PixelFormatInfo& raw8 = *FindPixelFormat(PIXEL_FORMAT_RAW8);
  const Job job = MakeJob(raw8, PIXEL_FORMAT_BGRU, HQ_LINEAR, 5);
  std::atomic<int> wrong{0};
  AtOnce([&](int) {
    Image destination;
    for (int i = 0; i < 200; ++i) {
      const ImageConverter* const converter = ImageConverter::getInstance();
      const Error error = converter->Convert(&job.source, job.target, &destination);
      if (!SameOutcome(job, error, destination)) ++wrong;
      ImageConverter::releaseInstance();
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, ReleaseInstancesThatOthersTook) {
  AtOnce([](int t) {
    for (int i = 0; i < 500; ++i) {
      if (t % 2 == 0) {
        EXPECT_NE(ImageConverter::getInstance(), nullptr);
      } else {
        ImageConverter::releaseInstance();
      }
    }
  });
  for (int i = 0; i < kThreads * 500; ++i) ImageConverter::releaseInstance();
  ImageConverter* const fresh = ImageConverter::getInstance();
  EXPECT_NE(fresh, nullptr);
  ImageConverter::releaseInstance();
}

/// A mosaic whose method is DEFAULT comes out as one of the methods that were the default
/// meanwhile.
TEST(Threads, ChangeTheProcessDefaultWhileOthersConvert) {
  constexpr ColorProcessingAlgorithm kDefaults[] = {NEAREST_NEIGHBOR, EDGE_SENSING, HQ_LINEAR};
  const PixelFormatInfo& raw8 = *FindPixelFormat(PIXEL_FORMAT_RAW8);
  std::vector<Job> possible;
  for (const ColorProcessingAlgorithm method : kDefaults) {
    possible.push_back(MakeJob(raw8, PIXEL_FORMAT_BGR, method, 9));
  }
  Image source = possible[0].source;
  source.SetColorProcessing(DEFAULT);
  std::atomic<int> wrong{0};
  AtOnce([&](int t) {
    Image destination;
    for (int i = 0; i < 200; ++i) {
      if (t == 0) {
        Image::SetDefaultColorProcessing(kDefaults[i % 3]);
        continue;
      }
      const Error error = ImageConverter().Convert(&source, PIXEL_FORMAT_BGR, &destination);
      bool any = false;
      for (const Job& job : possible) any = any || SameOutcome(job, error, destination);
      if (!any) ++wrong;
    }
  });
  Image::SetDefaultColorProcessing(NEAREST_NEIGHBOR);
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, CopyOneErrorAndReadIt) {
  Image image;
  const Error error = ImageConverter().Convert(&image, PIXEL_FORMAT_BGR, &image);
  const std::string text = error.GetTrace();
  std::atomic<int> wrong{0};
  AtOnce([&](int) {
    for (int i = 0; i < 500; ++i) {
      const Error copy = error;
      if (copy.GetTrace() != text) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, AskForTheSystem) {
  AtOnce([](int) {
    for (int i = 0; i < 20; ++i) {
      SystemInfo info;
      EXPECT_EQ(Utilities::GetSystemInfo(&info).GetType(), VORERROR_OK);
    }
  });
}

}  // namespace
}  // namespace Korvex2::Test
