/// The methods in integers against their definitions, written out pixel by pixel apart from the
/// engine: every byte, at every border, on every instruction set.

#include <gtest/gtest.h>

#include <tuple>

#include "InstructionSet.h"
#include "TestPictures.h"
#include "reference/Demosaic.h"
#include "support/Walk.h"

namespace Korvex2::Bayer {
namespace {

using Test::Walk;

class DefinitionsTest : public testing::TestWithParam<std::tuple<BayerMethod, BayerPattern>> {
 protected:
  static void Compare(const Mosaic& mosaic, BayerPixelFormat input, BayerPixelFormat output) {
    const auto [method, pattern] = GetParam();
    Call call{.method = method, .pattern = pattern, .input = input, .output = output};
    const Bytes samples = Encoded(mosaic, input);
    Bytes defined(PictureBytes(mosaic.rows, mosaic.cols, output));
    ASSERT_EQ(Reference::DemosaicByDefinition(input, samples.data(), mosaic.rows, mosaic.cols,
                                              output, defined.data(), method, pattern),
              beOK);
    for (const InstructionSet set : AvailableInstructionSets()) {
      call.settings.instructionSet = set;
      ASSERT_TRUE(DemosaicedBytes(mosaic, call) == defined)
          << mosaic.rows << 'x' << mosaic.cols << " formats " << input << " to " << output << " on "
          << InstructionSetName(set);
    }
  }

  static void CompareContents(int rows, int cols) {
    ForEachContent(rows, cols,
                   [&](const Mosaic& mosaic, auto... formats) { Compare(mosaic, formats...); });
  }
};

TEST_P(DefinitionsTest, HoldAtEverySize) {
  Walk walk;
  for (int rows = 2; rows <= 40; rows += 2) {
    for (int cols = 2; cols <= 40; cols += 2) {
      if (walk.Takes()) CompareContents(rows, cols);
      if (HasFatalFailure()) return;
    }
  }
}

TEST_P(DefinitionsTest, HoldAtWidthsAroundVectorsAndBlocks) {
  for (const int cols : {62, 64, 66, 126, 130, 258}) {
    CompareContents(6, cols);
    if (HasFatalFailure()) return;
  }
  Compare(RandomMosaic(4, 8200, 255, 61), BAYER_PIXEL_FORMAT_RAW8, BAYER_PIXEL_FORMAT_BGR8);
  Compare(RandomMosaic(4, 8200, 65535, 62), BAYER_PIXEL_FORMAT_RAW16, BAYER_PIXEL_FORMAT_BGR16);
}

std::string NameOf(const testing::TestParamInfo<std::tuple<BayerMethod, BayerPattern>>& info) {
  constexpr const char* kNames[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
  return std::string(MethodName(std::get<0>(info.param))) + '_' + kNames[std::get<1>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(Each, DefinitionsTest,
                         testing::Combine(testing::Values(BAYER_METHOD_NEAREST_NEIGHBOR,
                                                          BAYER_METHOD_EDGE_SENSING,
                                                          BAYER_METHOD_HQLINEAR),
                                          testing::ValuesIn(kAllPatterns)),
                         NameOf);

}  // namespace
}  // namespace Korvex2::Bayer
