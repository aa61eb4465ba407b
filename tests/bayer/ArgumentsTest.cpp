/// What is refused, in which order, and that a refusal writes nothing. All calls come from C.

#include <gtest/gtest.h>

#include <climits>

#include "CallFromC.h"
#include "TestPictures.h"

namespace Korvex2::Bayer {
namespace {

// A call that succeeds, to be spoilt one argument at a time.
struct Arguments {
  int input = BAYER_PIXEL_FORMAT_RAW8;
  bool nullInput = false;
  int rows = 4;
  int cols = 4;
  int output = BAYER_PIXEL_FORMAT_BGR8;
  bool nullOutput = false;
  int method = BAYER_METHOD_HQLINEAR;
  int pattern = BAYER_PATTERN_RGGB;
};

int CallEngine(const Arguments& arguments) {
  const Bytes in(4 * 4 * 2, 7);
  Bytes out(4 * 4 * 8, 0xA5);
  const Bytes before(out.size(), 0xA5);
  const int error = bayerToColorByNumbers(
      arguments.input, arguments.nullInput ? nullptr : in.data(), arguments.rows, arguments.cols,
      arguments.output, arguments.nullOutput ? nullptr : out.data(), arguments.method,
      arguments.pattern);
  const bool pixelless = arguments.rows == 0 || arguments.cols == 0;
  EXPECT_EQ(out == before, error != beOK || pixelless);
  return error;
}

TEST(Arguments, Succeed) {
  EXPECT_EQ(CallEngine({}), beOK);
}

TEST(Arguments, OddSizesAreRefusedRowsFirst) {
  EXPECT_EQ(CallEngine({.rows = 3}), beODD_ROWS);
  EXPECT_EQ(CallEngine({.cols = 3}), beODD_COLS);
  EXPECT_EQ(CallEngine({.rows = 1, .cols = 1}), beODD_ROWS);
  EXPECT_EQ(CallEngine({.rows = 3, .cols = 3}), beODD_ROWS);
}

TEST(Arguments, UnknownFormatsAndPatternsAreInvalid) {
  for (const int format : {2, 3, 4, 5, 6, 7, 8, 9, 10, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(CallEngine({.input = format}), beINVALID_PATTERN) << format;
  }
  for (const int format : {0, 1, 10, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(CallEngine({.output = format}), beINVALID_PATTERN) << format;
  }
  for (const int pattern : {4, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(CallEngine({.pattern = pattern}), beINVALID_PATTERN) << pattern;
  }
}

TEST(Arguments, UnknownMethodsFail) {
  for (const int method : {6, 7, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(CallEngine({.method = method}), beFAILED) << method;
  }
}

TEST(Arguments, NullBuffersFail) {
  EXPECT_EQ(CallEngine({.nullInput = true}), beFAILED);
  EXPECT_EQ(CallEngine({.nullOutput = true}), beFAILED);
}

TEST(Arguments, NegativeSizesFail) {
  for (const int size : {-1, -2, INT_MIN, INT_MIN + 1}) {
    EXPECT_EQ(CallEngine({.rows = size}), beFAILED) << size;
    EXPECT_EQ(CallEngine({.cols = size}), beFAILED) << size;
    EXPECT_EQ(CallEngine({.rows = size, .cols = 0}), beFAILED) << size;
  }
}

TEST(Arguments, PicturesWithoutPixelsSucceed) {
  for (const bool null : {false, true}) {
    EXPECT_EQ(CallEngine({.nullInput = null, .rows = 0, .cols = 0, .nullOutput = null}), beOK);
    EXPECT_EQ(CallEngine({.nullInput = null, .rows = 0, .cols = 4, .nullOutput = null}), beOK);
    EXPECT_EQ(CallEngine({.nullInput = null, .rows = 3, .cols = 0, .nullOutput = null}), beOK);
  }
}

TEST(Arguments, SizesThatNoBufferHasFail) {
  EXPECT_EQ(CallEngine({.rows = INT_MAX - 1, .cols = INT_MAX - 1}), beFAILED);
}

TEST(Arguments, MethodAndSignsComeFirstThenFormatsThenParityThenNulls) {
  constexpr int kNone = 77;
  EXPECT_EQ(CallEngine({.input = kNone, .rows = 3, .method = kNone}), beFAILED);
  EXPECT_EQ(CallEngine({.rows = -1, .pattern = kNone}), beFAILED);
  EXPECT_EQ(CallEngine({.rows = 3, .pattern = kNone}), beINVALID_PATTERN);
  EXPECT_EQ(CallEngine({.rows = 0, .pattern = kNone}), beINVALID_PATTERN);
  EXPECT_EQ(CallEngine({.nullInput = true, .rows = 3}), beODD_ROWS);
  EXPECT_EQ(CallEngine({.cols = 3, .nullOutput = true}), beODD_COLS);
}

TEST(Arguments, NumbersAreThoseOfTheInterface) {
  EXPECT_EQ(beOK, 0);
  EXPECT_EQ(beUNKNOWN_ERROR, 1);
  EXPECT_EQ(beODD_ROWS, 2);
  EXPECT_EQ(beODD_COLS, 3);
  EXPECT_EQ(beINVALID_PATTERN, 4);
  EXPECT_EQ(beFAILED, 5);
  EXPECT_EQ(BAYER_PATTERN_BGGR, 3);
  EXPECT_EQ(BAYER_METHOD_RIGOROUS, 5);
  EXPECT_EQ(BAYER_PIXEL_FORMAT_RGBU16, 9);
}

}  // namespace
}  // namespace Korvex2::Bayer
