// Every routine on buffers that hold exactly the bytes of its steps, with a faulting page before or
// behind and canaries on the other side: nothing else is read or written, whatever the count.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "reference/Converter.h"
#include "reference/Kernels.h"
#include "reference/Routes.h"
#include "support/Comparison.h"
#include "support/GuardedMemory.h"
#include "support/LentImage.h"
#include "support/PlainImage.h"
#include "support/Walk.h"

namespace Korvex2::Test {
namespace {

class ExactBytes : public testing::Test {
 protected:
  GuardedMemory m_source{1 << 14};
  GuardedMemory m_destination{1 << 14};

  using Place = std::uint8_t* (GuardedMemory::*)(std::size_t);

  void Check(const char* routine, unsigned pixels, Place place, bool littleEndian,
             Content content = Content::Random) {
    const auto& first = *Reference::FindKernel(Reference::FirstKernel(routine));
    const auto& last = *Reference::FindKernel(Reference::LastKernel(routine));
    const std::size_t read = Reference::BytesRead(first, pixels);
    const std::size_t written = Reference::BytesWritten(last, pixels);
    std::uint8_t* const source = (m_source.*place)(read);
    std::uint8_t* const destination = (m_destination.*place)(written);
    Fill(source, read, content, pixels);
    std::memset(destination, 0xEE, written);

    Bytes expected(written, 0xEE);
    Bytes original(source, source + read);
    Reference::Frame fromFrame;
    fromFrame.rows = 1;
    fromFrame.cols = pixels;
    fromFrame.data = original.data();
    Reference::Frame toFrame;
    toFrame.data = expected.data();
    toFrame.dataSize = static_cast<std::uint32_t>(written);
    if (original.empty()) fromFrame.data = source;
    if (expected.empty()) toFrame.data = destination;
    Reference::Converter oracle;
    oracle.littleEndian = littleEndian;
    ASSERT_EQ(oracle.Run(routine, &fromFrame, &toFrame).code, 0);

    const LentImage from(1, pixels, UNSPECIFIED_PIXEL_FORMAT, source, read);
    LentImage to(1, pixels, UNSPECIFIED_PIXEL_FORMAT, destination, written);
    ASSERT_EQ(Probe(littleEndian).Call(routine, &from, &to).GetType(), VORERROR_OK);
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), destination))
        << "plain loops, " << routine << " of " << pixels;

    std::memset(destination, 0xEE, written);
    const Image plainFrom = PlainImage(pixels, source, read);
    Image plainTo = PlainImage(pixels, destination, written);
    ASSERT_EQ(Probe(littleEndian).Call(routine, &plainFrom, &plainTo).GetType(), VORERROR_OK);

    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), destination))
        << routine << " of " << pixels;
    ASSERT_TRUE(std::equal(original.begin(), original.end(), source))
        << routine << " of " << pixels;
    ASSERT_TRUE(m_destination.CanariesIntact()) << routine << " of " << pixels;
    ASSERT_TRUE(m_source.CanariesIntact()) << routine << " of " << pixels;
  }

  static constexpr Place kAtGuards[] = {&GuardedMemory::AtEnd, &GuardedMemory::AtStart};

  using Bytes = std::vector<std::uint8_t>;
};

constexpr unsigned kAroundPieces[] = {127,  129,  1019, 1020, 1021, 1022, 1023,
                                      1024, 1025, 1026, 1027, 1028, 1029, 2051};
constexpr unsigned kLongRuns[] = {127, 128, 129, 255, 257, 1000, 1021};

TEST_F(ExactBytes, OfEveryKernelAtCounts0To67AndSomeLongRuns) {
  int cases = 0;
  Walk walk;
  for (const Reference::KernelRow& kernel : Reference::Kernels()) {
    for (const Place place : kAtGuards) {
      for (const bool littleEndian : {true, false}) {
        for (unsigned pixels = 0; pixels <= 67; ++pixels) {
          if (!walk.Takes()) continue;
          Check(kernel.name, pixels, place, littleEndian);
          ++cases;
        }
        for (const unsigned pixels : kLongRuns) {
          if (!walk.Takes()) continue;
          Check(kernel.name, pixels, place, littleEndian);
          ++cases;
        }
        if (HasFatalFailure()) return;
      }
    }
  }
  RecordProperty("cases", cases);
}

// Around the vectors of every instruction set, and around the pieces of the walk.
TEST_F(ExactBytes, OfEveryRouteAtCounts0To67AndAroundPieces) {
  int cases = 0;
  Walk walk;
  for (const Reference::RouteRow& route : Reference::Routes()) {
    for (const Place place : kAtGuards) {
      for (unsigned pixels = 0; pixels <= 67; ++pixels) {
        if (!walk.Takes()) continue;
        Check(route.name, pixels, place, pixels % 3 != 0);
        ++cases;
      }
      for (const unsigned pixels : kAroundPieces) {
        if (!walk.Takes()) continue;
        Check(route.name, pixels, place, true);
        ++cases;
      }
      if (HasFatalFailure()) return;
    }
  }
  RecordProperty("cases", cases);
}

// Every content, since some samples leave the vectors to be converted one by one.
TEST_F(ExactBytes, OfEveryRoutineAtOddAddressesWhateverTheContent) {
  std::vector<const char*> routines;
  for (const Reference::KernelRow& kernel : Reference::Kernels()) routines.push_back(kernel.name);
  for (const Reference::RouteRow& route : Reference::Routes()) routines.push_back(route.name);
  for (const char* const routine : routines) {
    for (const Content content : kContents) {
      for (const unsigned pixels : {1U, 66U, 129U, 1025U}) {
        Check(routine, pixels, &GuardedMemory::AtOddAddress, true, content);
      }
    }
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace Korvex2::Test
