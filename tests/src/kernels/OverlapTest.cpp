// Source and destination in one buffer, apart by a few bytes either way: the result is what the
// literal loops of the oracle give, step after step.

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "reference/Converter.h"
#include "reference/Kernels.h"
#include "reference/Routes.h"
#include "support/Comparison.h"
#include "support/LentImage.h"
#include "support/PlainImage.h"
#include "support/Walk.h"

namespace Korvex2::Test {
namespace {

constexpr int kMargin = 256;

void Check(const char* routine, unsigned pixels, int distance, bool littleEndian) {
  const auto& first = *Reference::FindKernel(Reference::FirstKernel(routine));
  const auto& last = *Reference::FindKernel(Reference::LastKernel(routine));
  const std::size_t read = Reference::BytesRead(first, pixels);
  const std::size_t written = Reference::BytesWritten(last, pixels);
  const std::size_t size = std::max(read, written) + 2 * kMargin;
  std::vector<std::uint8_t> ours(size);
  Fill(ours.data(), size, Content::Random, pixels + 1);
  std::vector<std::uint8_t> theirs = ours;
  std::vector<std::uint8_t> fastest = ours;

  Reference::Frame fromFrame;
  fromFrame.rows = 1;
  fromFrame.cols = pixels;
  fromFrame.data = theirs.data() + kMargin;
  Reference::Frame toFrame;
  toFrame.data = theirs.data() + kMargin + distance;
  toFrame.dataSize = static_cast<std::uint32_t>(written);
  Reference::Converter oracle;
  oracle.littleEndian = littleEndian;
  ASSERT_EQ(oracle.Run(routine, &fromFrame, &toFrame).code, 0);

  const LentImage from(1, pixels, UNSPECIFIED_PIXEL_FORMAT, ours.data() + kMargin, read);
  LentImage to(1, pixels, UNSPECIFIED_PIXEL_FORMAT, ours.data() + kMargin + distance, written);
  ASSERT_EQ(Probe(littleEndian).Call(routine, &from, &to).GetType(), VORERROR_OK);
  ASSERT_EQ(ours, theirs) << routine << " of " << pixels << " pixels, destination = source + "
                          << distance << (littleEndian ? ", little" : ", big") << " endian";

  const Image plainFrom = PlainImage(pixels, fastest.data() + kMargin, read);
  Image plainTo = PlainImage(pixels, fastest.data() + kMargin + distance, written);
  ASSERT_EQ(Probe(littleEndian).Call(routine, &plainFrom, &plainTo).GetType(), VORERROR_OK);
  ASSERT_EQ(fastest, theirs) << routine << " of " << pixels
                             << " plain pixels, destination = source + " << distance;
}

TEST(Overlap, OfEveryKernelIsAsTheLiteralLoopHasIt) {
  int cases = 0;
  Walk walk;
  for (const Reference::KernelRow& kernel : Reference::Kernels()) {
    for (int distance = -16; distance <= 16; ++distance) {
      for (unsigned pixels = 0; pixels <= 67; ++pixels) {
        for (const bool littleEndian : {true, false}) {
          if (!walk.Takes()) continue;
          Check(kernel.name, pixels, distance, littleEndian);
          ++cases;
        }
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
  testing::Test::RecordProperty("cases", cases);
}

TEST(Overlap, OfLongRunsAtLargerDistancesIsAsTheLiteralLoopHasIt) {
  int cases = 0;
  Walk walk;
  for (const Reference::KernelRow& kernel : Reference::Kernels()) {
    for (const int size : {1, 15, 16, 17, 24, 31, 32, 33, 47, 48, 63, 64, 65, 96, 127, 128, 200}) {
      for (const int distance : {-size, size}) {
        for (const unsigned pixels : {100U, 257U, 1003U}) {
          if (!walk.Takes()) continue;
          Check(kernel.name, pixels, distance, true);
          ++cases;
          if (testing::Test::HasFatalFailure()) return;
        }
      }
    }
  }
  testing::Test::RecordProperty("cases", cases);
}

TEST(Overlap, OfEveryRouteIsAsTheWholeRunsOfItsStepsHaveIt) {
  int cases = 0;
  Walk walk;
  for (const Reference::RouteRow& route : Reference::Routes()) {
    for (int distance = -16; distance <= 16; ++distance) {
      for (const unsigned pixels : {1U, 2U, 3U, 5U, 16U, 33U}) {
        if (!walk.Takes()) continue;
        Check(route.name, pixels, distance, pixels != 5);
        ++cases;
        if (testing::Test::HasFatalFailure()) return;
      }
    }
    for (const int distance : {-100, -3, 0, 1, 7, 64}) {
      if (!walk.Takes()) continue;
      Check(route.name, 5001, distance, true);  // longer than a piece that fits into a small cache
      ++cases;
      if (testing::Test::HasFatalFailure()) return;
    }
  }
  testing::Test::RecordProperty("cases", cases);
}

}  // namespace
}  // namespace Korvex2::Test
