/// Every instruction set of this machine gives the bytes of the plain loops.

#include <gtest/gtest.h>

#include <tuple>

#include "Target.h"
#include "TestPictures.h"
#include "support/Walk.h"

namespace Korvex2::Bayer {
namespace {

using Test::Walk;

class TargetsTest : public testing::TestWithParam<std::tuple<BayerMethod, Target>> {
 protected:
  void compare(const Mosaic& mosaic, BayerPixelFormat input, BayerPixelFormat output) {
    for (const BayerPattern pattern : kAllPatterns) {
      if (!m_walk.Takes()) continue;
      Call call{.method = std::get<0>(GetParam()),
                .pattern = pattern,
                .input = input,
                .output = output,
                .settings = {.target = Target::kPlain}};
      const Bytes plain = demosaicedBytes(mosaic, call);
      call.settings.target = std::get<1>(GetParam());
      ASSERT_TRUE(demosaicedBytes(mosaic, call) == plain)
          << mosaic.rows << 'x' << mosaic.cols << " pattern " << pattern << " formats " << input
          << " to " << output;
    }
  }

  void compareDepths(int rows, int cols) {
    const auto seed = static_cast<std::uint32_t>(rows * 1000 + cols);
    compare(randomMosaic(rows, cols, 255, seed), BAYER_PIXEL_FORMAT_RAW8, BAYER_PIXEL_FORMAT_BGR8);
    compare(extremeMosaic(rows, cols, 65535, seed), BAYER_PIXEL_FORMAT_RAW16,
            BAYER_PIXEL_FORMAT_RGB16);
  }

  void compareContents(int rows, int cols) {
    forEachContent(rows, cols,
                   [&](const Mosaic& mosaic, auto... formats) { compare(mosaic, formats...); });
  }

 private:
  Walk m_walk;
};

// The writers of the formats are the same for all methods, so the slowest method goes through all
// of them at the small sizes only.
TEST_P(TargetsTest, GiveThePlainBytesAtEverySize) {
  const bool slow = std::get<0>(GetParam()) == BAYER_METHOD_RIGOROUS;
  for (int rows = 2; rows <= 40; rows += 2) {
    for (int cols = 2; cols <= 40; cols += 2) {
      if (!slow || (rows <= 8 && cols <= 8)) {
        compareContents(rows, cols);
      } else {
        compareDepths(rows, cols);
      }
      if (HasFatalFailure()) return;
    }
  }
}

TEST_P(TargetsTest, GiveThePlainBytesAtWidthsAroundVectorsAndBlocks) {
  const bool slow = std::get<0>(GetParam()) == BAYER_METHOD_RIGOROUS;
  for (const int cols : {62, 64, 66, 126, 128, 130, 254, 258, 510, 514, 1026, 2046, 2050, 4098}) {
    slow ? compareDepths(4, cols) : compareContents(4, cols);
    if (HasFatalFailure()) return;
  }
}

std::vector<Target> vectorTargets() {
  const std::span<const Target> all = availableTargets();
  return {all.begin() + 1, all.end()};
}

// Without vectors there is nothing to compare.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TargetsTest);

std::string nameOf(const testing::TestParamInfo<std::tuple<BayerMethod, Target>>& info) {
  return std::string(methodName(std::get<0>(info.param))) + '_' +
         targetName(std::get<1>(info.param));
}

INSTANTIATE_TEST_SUITE_P(Each, TargetsTest,
                         testing::Combine(testing::ValuesIn(kAllMethods),
                                          testing::ValuesIn(vectorTargets())),
                         nameOf);

TEST(Targets, TheBestOneIsAvailable) {
  const std::span<const Target> targets = availableTargets();
  EXPECT_EQ(targets.front(), Target::kPlain);
  EXPECT_NE(std::find(targets.begin(), targets.end(), activeTarget()), targets.end());
}

}  // namespace
}  // namespace Korvex2::Bayer
