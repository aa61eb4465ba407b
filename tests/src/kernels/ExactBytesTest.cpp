// Every routine on buffers that hold exactly the bytes of its steps, with a faulting page before or
// behind and canaries on the other side: nothing else is read or written, whatever the count.

#include <gtest/gtest.h>

#include <cstring>
#include <string>

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

  void Check(const char* routine, unsigned pixels, bool atEnd, bool littleEndian) {
    const auto& first = *Reference::FindKernel(Reference::FirstKernel(routine));
    const auto& last = *Reference::FindKernel(Reference::LastKernel(routine));
    const std::size_t read = Reference::BytesRead(first, pixels);
    const std::size_t written = Reference::BytesWritten(last, pixels);
    std::uint8_t* const source = atEnd ? m_source.AtEnd(read) : m_source.AtStart(read);
    std::uint8_t* const destination =
        atEnd ? m_destination.AtEnd(written) : m_destination.AtStart(written);
    Fill(source, read, Content::Random, pixels);
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

  using Bytes = std::vector<std::uint8_t>;
};

constexpr unsigned kAroundPieces[] = {127,  129,  1019, 1020, 1021, 1022, 1023,
                                      1024, 1025, 1026, 1027, 1028, 1029, 2051};
constexpr unsigned kLongRuns[] = {127, 128, 129, 255, 257, 1000, 1021};

TEST_F(ExactBytes, OfEveryKernelAtCounts0To67AndSomeLongRuns) {
  int cases = 0;
  Walk walk;
  for (const Reference::KernelRow& kernel : Reference::Kernels()) {
    for (const bool atEnd : {true, false}) {
      for (const bool littleEndian : {true, false}) {
        for (unsigned pixels = 0; pixels <= 67; ++pixels) {
          if (!walk.Takes()) continue;
          Check(kernel.name, pixels, atEnd, littleEndian);
          ++cases;
        }
        for (const unsigned pixels : kLongRuns) {
          if (!walk.Takes()) continue;
          Check(kernel.name, pixels, atEnd, littleEndian);
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
    for (const bool atEnd : {true, false}) {
      for (unsigned pixels = 0; pixels <= 67; ++pixels) {
        if (!walk.Takes()) continue;
        Check(route.name, pixels, atEnd, pixels % 3 != 0);
        ++cases;
      }
      for (const unsigned pixels : kAroundPieces) {
        if (!walk.Takes()) continue;
        Check(route.name, pixels, atEnd, true);
        ++cases;
      }
      if (HasFatalFailure()) return;
    }
  }
  RecordProperty("cases", cases);
}

}  // namespace
}  // namespace Korvex2::Test
