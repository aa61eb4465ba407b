// The bridge with an engine of our own in the place of the real one: what it is called with, and
// what becomes of its failures. Linked into an executable that defines bayerToColor itself.

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "reference/Routes.h"
#include "support/Comparison.h"
#include "support/LentImage.h"
#include "vorbayer.h"

namespace {

struct EngineCall {
  int count = 0;
  BayerPixelFormat inputFormat{};
  const unsigned char* input = nullptr;
  int rows = 0;
  int cols = 0;
  BayerPixelFormat outputFormat{};
  unsigned char* output = nullptr;
  BayerMethod method{};
  BayerPattern pattern{};
};

EngineCall lastCall;
int answer = 0;

std::size_t PixelBytes(BayerPixelFormat format) {
  constexpr std::size_t kBytes[] = {1, 2, 3, 4, 6, 8, 3, 4, 6, 8};
  return kBytes[format];
}

}  // namespace

// Writes bytes that tell the arguments, none when it is to fail.
extern "C" BayerError bayerToColor(BayerPixelFormat inputFormat, const unsigned char* pInput,
                                   int rows, int cols, BayerPixelFormat outputFormat,
                                   unsigned char* pOutput, BayerMethod method,
                                   BayerPattern pattern) {
  lastCall = {lastCall.count + 1, inputFormat, pInput, rows,   cols,
              outputFormat,       pOutput,     method, pattern};
  const std::size_t pixels = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
  const std::size_t read = pixels * PixelBytes(inputFormat);
  const std::size_t written = answer == 0 ? pixels * PixelBytes(outputFormat) : 0;
  for (std::size_t i = 0; i < written && read > 0; ++i) {
    pOutput[i] = static_cast<unsigned char>(pInput[i % read] + 16 * method + 64 * pattern);
  }
  return static_cast<BayerError>(answer);
}

namespace Korvex2::Test {
namespace {

class EngineSeam : public testing::Test {
 protected:
  void SetUp() override {
    lastCall = {};
    answer = 0;
  }
  void TearDown() override { Image::SetDefaultColorProcessing(NEAREST_NEIGHBOR); }
};

TEST_F(EngineSeam, StandsInForTheEngine) {
  Image mosaic;
  mosaic.SetDimensions(2, 6, 6, PIXEL_FORMAT_RAW8, GBRG);
  mosaic.SetColorProcessing(HQ_LINEAR);
  Image colour;
  EXPECT_EQ(ImageConverter().Convert(&mosaic, PIXEL_FORMAT_BGR, &colour).GetType(), VORERROR_OK);
  EXPECT_EQ(lastCall.count, 1);
  EXPECT_EQ(lastCall.inputFormat, BAYER_PIXEL_FORMAT_RAW8);
  EXPECT_EQ(lastCall.input, mosaic.GetData());
  EXPECT_EQ(lastCall.rows, 2);
  EXPECT_EQ(lastCall.cols, 6);
  EXPECT_EQ(lastCall.outputFormat, BAYER_PIXEL_FORMAT_BGR8);
  EXPECT_EQ(lastCall.output, colour.GetData());
  EXPECT_EQ(lastCall.method, BAYER_METHOD_HQLINEAR);
  EXPECT_EQ(lastCall.pattern, BAYER_PATTERN_GBRG);
}

TEST_F(EngineSeam, ProcessImageTranslatesAndTakesAnyCodeButZeroForAFailure) {
  unsigned char in[8] = {};
  unsigned char out[32] = {};
  for (answer = 0; answer <= 7; ++answer) {
    const Error error = Probe().ProcessImage(PIXEL_FORMAT_RAW16, in, 2, 2, PIXEL_FORMAT_BGR16, out,
                                             DIRECTIONAL_FILTER, BGGR);
    EXPECT_EQ(lastCall.inputFormat, BAYER_PIXEL_FORMAT_RAW16);
    EXPECT_EQ(lastCall.outputFormat, BAYER_PIXEL_FORMAT_BGR16);
    EXPECT_EQ(lastCall.method, BAYER_METHOD_DIRECTIONAL_FILTER);
    EXPECT_EQ(lastCall.pattern, BAYER_PATTERN_BGGR);
    if (answer == 0) {
      EXPECT_EQ(error.GetType(), VORERROR_OK);
    } else {
      EXPECT_EQ(error.GetType(), VORERROR_FAILED);
      EXPECT_STREQ(error.GetMessage(), "The color processing encountered an error.");
      EXPECT_EQ(error.GetCause(), nullptr);
    }
  }
}

TEST_F(EngineSeam, UsesSixCombinationsOfFormatsOnly) {
  std::set<std::pair<int, int>> used;
  for (const PixelFormat source : {PIXEL_FORMAT_RAW8, PIXEL_FORMAT_RAW12, PIXEL_FORMAT_RAW16}) {
    for (const Probe::TargetMember& target : Probe::Targets()) {
      Image mosaic;
      mosaic.SetDimensions(2, 4, source == PIXEL_FORMAT_RAW16 ? 8 : 6, source, RGGB);
      Image destination;
      lastCall = {};
      ImageConverter().Convert(&mosaic, target.target, &destination);
      EXPECT_LE(lastCall.count, 1);
      if (lastCall.count > 0) used.insert({lastCall.inputFormat, lastCall.outputFormat});
    }
  }
  EXPECT_EQ(used, (std::set<std::pair<int, int>>{{0, 6}, {0, 2}, {1, 6}, {1, 2}, {1, 8}, {1, 4}}));
}

TEST_F(EngineSeam, FailuresSurfaceFromFiveRoutinesAndNoOthers) {
  for (answer = 1; answer <= 6; ++answer) {
    std::set<std::string> surfacing;
    for (const PixelFormat source : {PIXEL_FORMAT_RAW8, PIXEL_FORMAT_RAW12, PIXEL_FORMAT_RAW16}) {
      for (const Probe::TargetMember& target : Probe::Targets()) {
        Image mosaic;
        mosaic.SetDimensions(2, 4, source == PIXEL_FORMAT_RAW16 ? 8 : 6, source, RGGB);
        Image destination;
        const Error error = ImageConverter().Convert(&mosaic, target.target, &destination);
        if (error == VORERROR_OK) continue;
        EXPECT_EQ(error.GetType(), VORERROR_FAILED);
        EXPECT_STREQ(error.GetMessage(), "The color processing encountered an error.");
        surfacing.insert(Reference::Dispatch(source, target.target));
      }
    }
    EXPECT_EQ(surfacing,
              (std::set<std::string>{"ConvertRAW12ToBGR", "ConvertRAW12ToRGB", "ConvertRAW16ToBGR",
                                     "ConvertRAW16ToRGB", "ConvertRAW16ToRGB16"}));
  }
}

TEST_F(EngineSeam, EveryRawRouteAgreesWithTheOracleForEveryTileMethodAndAnswer) {
  int cases = 0;
  for (answer = 0; answer <= 5; answer += 5) {
    for (const Reference::Format source : {Reference::RAW8, Reference::RAW12, Reference::RAW16}) {
      for (const Probe::TargetMember& target : Probe::Targets()) {
        for (unsigned tile = 0; tile <= 5; ++tile) {
          for (unsigned method = 0; method <= 9; ++method) {
            for (const bool littleEndian : {true, false}) {
              for (const unsigned rows : {2U, 3U}) {
                ASSERT_TRUE(Agrees({source, target.target, rows, 6, 0, tile, method,
                                    Content::Random, littleEndian, littleEndian ? -1 : 0xA5},
                                   RealEngine));
                ++cases;
              }
            }
          }
        }
      }
    }
  }
  RecordProperty("conversions", cases);
}

}  // namespace
}  // namespace Korvex2::Test
