// Many threads at once give the bytes that one thread gives. `./run tsan` runs these under
// ThreadSanitizer, `./run soak` runs their like for an hour.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <string_view>
#include <vector>

#include "CheckConversion.h"
#include "ImageConverterARMStub.h"
#include "InstructionSets.h"
#include "InternalError.h"
#include "Utilities.h"
#include "support/Jobs.h"

namespace Korvex2::Test {
namespace {

constexpr int kThreads = 8;

/// Converts every job, beginning somewhere else for each thread; the number of wrong outcomes.
int ConvertAll(ImageConverter& converter, const std::vector<Job>& jobs, std::size_t first) {
  int wrong = 0;
  Image destination;
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    const Job& job = jobs[(first + i) % jobs.size()];
    const Error predicted = CheckConversion(job.source, job.target);
    const Error error = Convert(converter, job, destination);
    if (predicted == job.predicted && SameOutcome(job, error, destination)) continue;
    ++wrong;
    ADD_FAILURE() << Describe(job) << ": " << error;
  }
  return wrong;
}

Error Raise(const char* message, const Error& cause) {
  return InternalError(__LINE__, "ThreadsTest.cpp", __DATE__, __TIME__, VORERROR_FAILED,
                       InternalError(cause), "%s", message);
}

class SharedConverter : public testing::TestWithParam<int> {};

TEST_P(SharedConverter, ConvertsDifferentFramesAtOnce) {
  const int threads = GetParam();
  std::vector<std::vector<Job>> jobs;
  std::size_t conversions = 0;
  for (int t = 0; t < threads; ++t) {
    jobs.push_back(AllJobs(static_cast<unsigned>(1000 * t)));
    conversions += jobs.back().size();
  }
  ImageConverter* const converter = ImageConverter::getInstance();
  std::atomic<int> wrong{0};
  AtOnce(threads, [&](int t) {
    const auto mine = static_cast<std::size_t>(t);
    wrong += ConvertAll(*converter, jobs[mine], mine * jobs[mine].size() / jobs.size());
  });
  ImageConverter::releaseInstance();
  EXPECT_EQ(wrong, 0);
  RecordProperty("conversions", static_cast<int>(conversions));
}

INSTANTIATE_TEST_SUITE_P(Threads, SharedConverter, testing::Values(2, 3, 4, 8, 16),
                         testing::PrintToStringParamName());

TEST(Threads, ConvertOneFrameWithOneConverter) {
  ImageConverter converter;
  const Job job = MakeJob(PIXEL_FORMAT_BGRU16, PIXEL_FORMAT_411YUV8, DEFAULT, 3);
  std::atomic<int> wrong{0};
  AtOnce(kThreads, [&](int) {
    for (int i = 0; i < 20; ++i) {
      Image destination;
      const Error error = converter.Convert(&job.source, job.target, &destination);
      if (!SameOutcome(job, error, destination)) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, ConvertTheSameFramesEachWithItsOwnConverter) {
  const std::vector<Job> jobs = AllJobs(77);
  std::atomic<int> wrong{0};
  AtOnce(kThreads, [&](int t) {
    ImageConverter converter;
    wrong += ConvertAll(converter, jobs, static_cast<std::size_t>(t) * jobs.size() / kThreads);
  });
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, ShareTheInstanceAndConvertWithIt) {
  const Job job = MakeJob(PIXEL_FORMAT_RAW8, PIXEL_FORMAT_BGRU, HQ_LINEAR, 5);
  std::atomic<int> wrong{0};
  AtOnce(16, [&](int) {
    Image destination;
    for (int i = 0; i < 200; ++i) {
      ImageConverter* const converter = ImageConverter::getInstance();
      const Error error = converter->Convert(&job.source, job.target, &destination);
      if (!SameOutcome(job, error, destination)) ++wrong;
      ImageConverter::releaseInstance();
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, ReleaseInstancesThatOthersTook) {
  AtOnce(kThreads, [](int t) {
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
  std::vector<Job> possible;
  for (const ColorProcessingAlgorithm method : kDefaults) {
    possible.push_back(MakeJob(PIXEL_FORMAT_RAW8, PIXEL_FORMAT_BGR, method, 9));
  }
  Image source = possible[0].source;
  source.SetColorProcessing(DEFAULT);
  std::atomic<int> wrong{0};
  AtOnce(kThreads, [&](int t) {
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

TEST(Threads, ChangeTheInstructionSetWhileOthersConvert) {
  const std::vector<Job> jobs = AllJobs(5000);
  const std::string before(GetInstructionSet());
  std::atomic<int> converting{kThreads - 1};
  std::atomic<int> wrong{0};
  AtOnce(kThreads, [&](int t) {
    if (t > 0) {
      ImageConverter converter;
      wrong += ConvertAll(converter, jobs, static_cast<std::size_t>(t) * 100);
      --converting;
      return;
    }
    while (converting > 0) {
      for (const std::string_view set : InstructionSets()) {
        EXPECT_EQ(SetInstructionSet(set).GetType(), VORERROR_OK) << set;
      }
    }
  });
  EXPECT_EQ(SetInstructionSet(before).GetType(), VORERROR_OK);
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, CopyOneErrorAndReadIt) {
  Image image;
  const Error error = ImageConverter().Convert(&image, PIXEL_FORMAT_BGR, &image);
  const std::string text = error.GetTrace();
  std::atomic<int> wrong{0};
  AtOnce(kThreads, [&](int) {
    for (int i = 0; i < 500; ++i) {
      const Error copy = error;
      if (copy.GetTrace() != text) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, NestOneErrorInErrorsOfTheirOwn) {
  const Error shared = Raise("outer", Raise("inner", Error()));
  std::atomic<int> wrong{0};
  AtOnce(kThreads, [&wrong, &shared](int) {
    for (int i = 0; i < 2000; ++i) {
      const Error mine = shared;
      const Error again = Raise("more", mine);
      if (std::string_view(again.GetCause()->GetCause()->GetMessage()) != "inner") ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, SeeOneProcessDefault) {
  std::atomic<int> wrong{0};
  Image::SetDefaultColorProcessing(HQ_LINEAR);
  AtOnce(kThreads, [&wrong](int) {
    if (Image::GetDefaultColorProcessing() != HQ_LINEAR) ++wrong;
  });
  AtOnce(1, [](int) { Image::SetDefaultColorProcessing(NEAREST_NEIGHBOR); });
  EXPECT_EQ(Image::GetDefaultColorProcessing(), NEAREST_NEIGHBOR);
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, AskForTheSystem) {
  AtOnce(kThreads, [](int) {
    for (int i = 0; i < 20; ++i) {
      SystemInfo info;
      EXPECT_EQ(Utilities::GetSystemInfo(&info).GetType(), VORERROR_OK);
      EXPECT_GT(info.numCpuCores, 0U);
    }
  });
}

}  // namespace
}  // namespace Korvex2::Test
