/// The picture does not depend on how it is cut into blocks.

#include <gtest/gtest.h>

#include "TestPictures.h"
#include "support/Walk.h"

namespace Korvex2::Bayer {
namespace {

using Test::Walk;

class BlocksTest : public testing::TestWithParam<BayerMethod> {};

TEST_P(BlocksTest, AnySizeGivesTheSamePicture) {
  Walk walk;
  constexpr int kBlocks[][2] = {{2, 2}, {2, 200}, {100, 2}, {4, 10}, {6, 64}, {16, 66}, {100, 200}};
  // Blocks of one tile cost the slowest method hundreds of times their own pixels.
  const bool slow = GetParam() == BAYER_METHOD_RIGOROUS;
  const int rows = slow ? 22 : 54;
  const int cols = slow ? 70 : 150;
  for (const bool deep : {false, true}) {
    const Mosaic mosaic = RandomMosaic(rows, cols, deep ? 65535 : 255, 51);
    for (const BayerPattern pattern : {BAYER_PATTERN_RGGB, BAYER_PATTERN_GBRG}) {
      Call call{.method = GetParam(),
                .pattern = pattern,
                .input = deep ? BAYER_PIXEL_FORMAT_RAW16 : BAYER_PIXEL_FORMAT_RAW8,
                .output = deep ? BAYER_PIXEL_FORMAT_BGR16 : BAYER_PIXEL_FORMAT_BGR8};
      const Bytes expected = DemosaicedBytes(mosaic, call);
      for (const InstructionSet set : {InstructionSet::Plain, ActiveInstructionSet()}) {
        for (const auto& [blockRows, blockCols] : kBlocks) {
          if (!walk.Takes()) continue;
          call.settings = {.instructionSet = set, .blockRows = blockRows, .blockCols = blockCols};
          EXPECT_TRUE(DemosaicedBytes(mosaic, call) == expected)
              << blockRows << 'x' << blockCols << " on " << InstructionSetName(set);
        }
      }
    }
  }
}

// Larger than any method's block.
TEST_P(BlocksTest, TheMethodsOwnSizeGivesTheSamePictureAsAnother) {
  const Mosaic mosaic = RandomMosaic(100, 8800, 255, 52);
  Call call{.method = GetParam()};
  const Bytes expected = DemosaicedBytes(mosaic, call);
  call.settings.blockRows = 22;
  call.settings.blockCols = 630;
  EXPECT_TRUE(DemosaicedBytes(mosaic, call) == expected);
}

INSTANTIATE_TEST_SUITE_P(Each, BlocksTest, testing::ValuesIn(kAllMethods),
                         [](const auto& info) { return MethodName(info.param); });

}  // namespace
}  // namespace Korvex2::Bayer
