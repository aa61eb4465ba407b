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
  for (const bool deep : {false, true}) {
    const Mosaic mosaic = randomMosaic(54, 150, deep ? 65535 : 255, 51);
    for (const BayerPattern pattern : {BAYER_PATTERN_RGGB, BAYER_PATTERN_GBRG}) {
      Call call{.method = GetParam(),
                .pattern = pattern,
                .input = deep ? BAYER_PIXEL_FORMAT_RAW16 : BAYER_PIXEL_FORMAT_RAW8,
                .output = deep ? BAYER_PIXEL_FORMAT_BGR16 : BAYER_PIXEL_FORMAT_BGR8};
      const Bytes expected = demosaicedBytes(mosaic, call);
      for (const Target target : {Target::kPlain, activeTarget()}) {
        for (const auto& [rows, cols] : kBlocks) {
          if (!walk.Takes()) continue;
          call.settings = {.target = target, .blockRows = rows, .blockCols = cols};
          EXPECT_TRUE(demosaicedBytes(mosaic, call) == expected)
              << rows << 'x' << cols << " target " << targetName(target);
        }
      }
    }
  }
}

// Larger than any method's block.
TEST_P(BlocksTest, TheMethodsOwnSizeGivesTheSamePictureAsAnother) {
  const Mosaic mosaic = randomMosaic(100, 8800, 255, 52);
  Call call{.method = GetParam()};
  const Bytes expected = demosaicedBytes(mosaic, call);
  call.settings.blockRows = 22;
  call.settings.blockCols = 630;
  EXPECT_TRUE(demosaicedBytes(mosaic, call) == expected);
}

INSTANTIATE_TEST_SUITE_P(Each, BlocksTest, testing::ValuesIn(kAllMethods),
                         [](const auto& info) { return methodName(info.param); });

}  // namespace
}  // namespace Korvex2::Bayer
