/// Every instruction set of this machine gives the bytes of the plain loops.

#include <gtest/gtest.h>

#include <tuple>

#include "InstructionSet.h"
#include "TestPictures.h"
#include "support/Walk.h"

namespace Korvex2::Bayer {
namespace {

using Test::Walk;

class InstructionSetsTest : public testing::TestWithParam<std::tuple<BayerMethod, InstructionSet>> {
 protected:
  void Compare(const Mosaic& mosaic, BayerPixelFormat input, BayerPixelFormat output) {
    for (const BayerPattern pattern : kAllPatterns) {
      if (!m_walk.Takes()) continue;
      Call call{.method = std::get<0>(GetParam()),
                .pattern = pattern,
                .input = input,
                .output = output,
                .settings = {.instructionSet = InstructionSet::Plain}};
      const Bytes plain = DemosaicedBytes(mosaic, call);
      call.settings.instructionSet = std::get<1>(GetParam());
      ASSERT_TRUE(DemosaicedBytes(mosaic, call) == plain)
          << mosaic.rows << 'x' << mosaic.cols << " pattern " << pattern << " formats " << input
          << " to " << output;
    }
  }

  void CompareDepths(int rows, int cols) {
    const auto seed = static_cast<std::uint32_t>(rows * 1000 + cols);
    Compare(RandomMosaic(rows, cols, 255, seed), BAYER_PIXEL_FORMAT_RAW8, BAYER_PIXEL_FORMAT_BGR8);
    Compare(ExtremeMosaic(rows, cols, 65535, seed), BAYER_PIXEL_FORMAT_RAW16,
            BAYER_PIXEL_FORMAT_RGB16);
  }

  void CompareContents(int rows, int cols) {
    ForEachContent(rows, cols,
                   [&](const Mosaic& mosaic, auto... formats) { Compare(mosaic, formats...); });
  }

 private:
  Walk m_walk;
};

// The writers of the formats are the same for all methods, so the slowest method goes through all
// of them at the small sizes only.
TEST_P(InstructionSetsTest, GiveThePlainBytesAtEverySize) {
  const bool slow = std::get<0>(GetParam()) == BAYER_METHOD_RIGOROUS;
  for (int rows = 2; rows <= 40; rows += 2) {
    for (int cols = 2; cols <= 40; cols += 2) {
      if (!slow || (rows <= 8 && cols <= 8)) {
        CompareContents(rows, cols);
      } else {
        CompareDepths(rows, cols);
      }
      if (HasFatalFailure()) return;
    }
  }
}

TEST_P(InstructionSetsTest, GiveThePlainBytesAtWidthsAroundVectorsAndBlocks) {
  const bool slow = std::get<0>(GetParam()) == BAYER_METHOD_RIGOROUS;
  for (const int cols : {62, 64, 66, 126, 128, 130, 254, 258, 510, 514, 1026, 2046, 2050, 4098}) {
    slow ? CompareDepths(4, cols) : CompareContents(4, cols);
    if (HasFatalFailure()) return;
  }
}

std::vector<InstructionSet> VectorInstructionSets() {
  const std::span<const InstructionSet> all = AvailableInstructionSets();
  return {all.begin() + 1, all.end()};
}

// Without vectors there is nothing to compare.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(InstructionSetsTest);

std::string NameOf(const testing::TestParamInfo<std::tuple<BayerMethod, InstructionSet>>& info) {
  return std::string(MethodName(std::get<0>(info.param))) + '_' +
         InstructionSetName(std::get<1>(info.param));
}

INSTANTIATE_TEST_SUITE_P(Each, InstructionSetsTest,
                         testing::Combine(testing::ValuesIn(kAllMethods),
                                          testing::ValuesIn(VectorInstructionSets())),
                         NameOf);

TEST(InstructionSets, TheBestOneIsAvailable) {
  const std::span<const InstructionSet> sets = AvailableInstructionSets();
  EXPECT_EQ(sets.front(), InstructionSet::Plain);
  EXPECT_NE(std::find(sets.begin(), sets.end(), ActiveInstructionSet()), sets.end());
}

}  // namespace
}  // namespace Korvex2::Bayer
