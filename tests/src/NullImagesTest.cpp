// What each routine answers for null images and images without a buffer, and that it looks at them
// in order and writes nothing.

#include <gtest/gtest.h>

#include <cstring>

#include "reference/Converter.h"
#include "reference/Routes.h"
#include "support/Bytes.h"
#include "support/Comparison.h"

namespace Korvex2::Test {
namespace {

/// The bridge takes its images from routines that have tested them.
bool TakesNulls(std::string_view routine) {
  return routine != Reference::kDemosaic;
}

struct NullCase {
  const char* name;
  bool source, sourceBuffer, destination, destinationBuffer;  // what is there
};

constexpr NullCase kNullCases[] = {
    {"no source", false, false, true, true},
    {"no source buffer", true, false, true, true},
    {"no destination", true, true, false, false},
    {"no destination buffer", true, true, true, false},
    {"nothing", false, false, false, false},
    {"no buffers", true, false, true, false},
};

TEST(NullImages, AreAnsweredByEveryRoutineAsByTheOracle) {
  int cases = 0;
  for (const Probe::NamedMember& routine : Probe::Routines()) {
    if (!TakesNulls(routine.name)) continue;
    for (const NullCase& c : kNullCases) {
      SCOPED_TRACE(std::string(routine.name) + ", " + c.name);
      Bytes in(64, 1);
      Bytes out(64, 0xEE);
      const LentImage source(1, 4, PIXEL_FORMAT_RAW8, c.sourceBuffer ? in.data() : nullptr, 64);
      LentImage destination(1, 4, PIXEL_FORMAT_RGB8, c.destinationBuffer ? out.data() : nullptr,
                            64);

      Bytes expectedOut(64, 0xEE);
      Reference::Frame from;
      from.rows = 1;
      from.cols = 4;
      from.data = c.sourceBuffer ? in.data() : nullptr;
      Reference::Frame to;
      to.data = c.destinationBuffer ? expectedOut.data() : nullptr;
      to.dataSize = 64;
      const Reference::Outcome expected =
          Reference::Converter().Run(std::string(routine.name).c_str(), c.source ? &from : nullptr,
                                     c.destination ? &to : nullptr);
      const Error error = Probe(true).Call(routine.member, c.source ? &source : nullptr,
                                           c.destination ? &destination : nullptr);
      EXPECT_EQ(Reference::Describe(OutcomeOf(error)), Reference::Describe(expected));
      EXPECT_EQ(out, expectedOut);
      ++cases;
    }
  }
  RecordProperty("cases", cases);
}

TEST(NullImages, SourceIsLookedAtBeforeTheDestination) {
  for (const Probe::NamedMember& routine : Probe::Routines()) {
    if (!TakesNulls(routine.name)) continue;
    const LentImage source(1, 4, PIXEL_FORMAT_RAW8, nullptr, 0);
    Bytes out(64);
    LentImage destination(1, 4, PIXEL_FORMAT_RGB8, out.data(), out.size());
    Probe().Call(routine.member, &source, &destination);
    EXPECT_EQ(std::count(destination.calls.begin(), destination.calls.end(), "GetData"), 0)
        << routine.name;
  }
}

TEST(NullImages, AreRefusedByAllButTheRoutinesWithoutATestOfTheirOwn) {
  std::vector<std::string_view> successful;
  for (const Probe::NamedMember& routine : Probe::Routines()) {
    if (!TakesNulls(routine.name)) continue;
    const Error error = Probe().Call(routine.member, nullptr, nullptr);
    if (error == VORERROR_OK) {
      successful.push_back(routine.name);
    } else {
      EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER) << routine.name;
      EXPECT_STREQ(error.GetMessage(), Reference::kNull) << routine.name;
    }
  }
  std::sort(successful.begin(), successful.end());
  EXPECT_EQ(successful,
            (std::vector<std::string_view>{"ConvertBGR16ToBGRU", "ConvertRAW16ToRAW12",
                                           "ConvertRAW16ToRAW8", "ConvertYUV411ToBGRU"}));
}

TEST(NullImages, Raw12ToRaw8AndRaw16AreRefusedByTheirKernels) {
  Bytes bytes(16);
  const LentImage source(1, 2, PIXEL_FORMAT_RAW12, bytes.data(), bytes.size());
  for (const char* routine : {"ConvertRAW12ToRAW8", "ConvertRAW12ToRAW16"}) {
    const Error error = Probe().Call(routine, &source, nullptr);
    EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER) << routine;
    EXPECT_STREQ(error.GetMessage(), Reference::kNull) << routine;
  }
}

}  // namespace
}  // namespace Korvex2::Test
