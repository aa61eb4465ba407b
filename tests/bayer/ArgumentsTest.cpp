/// What is refused, in which order, and that a refusal writes nothing.

#include <gtest/gtest.h>

#include <climits>

#include "TestPictures.h"
#include "vorbayer.h"

extern "C" int demosaicFromC(const unsigned char* mosaic, unsigned char* picture);

namespace Korvex2::Bayer {
namespace {

// A call that succeeds, to be spoilt one argument at a time.
struct Arguments {
  BayerPixelFormat input = BAYER_PIXEL_FORMAT_RAW8;
  bool nullInput = false;
  int rows = 4;
  int cols = 4;
  BayerPixelFormat output = BAYER_PIXEL_FORMAT_BGR8;
  bool nullOutput = false;
  BayerMethod method = BAYER_METHOD_HQLINEAR;
  BayerPattern pattern = BAYER_PATTERN_RGGB;
};

BayerError call(const Arguments& arguments) {
  const Bytes in(4 * 4 * 2, 7);
  Bytes out(4 * 4 * 8, 0xA5);
  const Bytes before(out.size(), 0xA5);
  const BayerError error =
      bayerToColor(arguments.input, arguments.nullInput ? nullptr : in.data(), arguments.rows,
                   arguments.cols, arguments.output, arguments.nullOutput ? nullptr : out.data(),
                   arguments.method, arguments.pattern);
  const bool pixelless = arguments.rows == 0 || arguments.cols == 0;
  EXPECT_EQ(out == before, error != beOK || pixelless);
  return error;
}

template <typename Enum>
Enum outside(int value) {
  Enum result;
  static_assert(sizeof(Enum) == sizeof(value));
  std::memcpy(&result, &value, sizeof(value));
  return result;
}

TEST(Arguments, Succeed) {
  EXPECT_EQ(call({}), beOK);
}

TEST(Arguments, OddSizesAreRefusedRowsFirst) {
  EXPECT_EQ(call({.rows = 3}), beODD_ROWS);
  EXPECT_EQ(call({.cols = 3}), beODD_COLS);
  EXPECT_EQ(call({.rows = 1, .cols = 1}), beODD_ROWS);
  EXPECT_EQ(call({.rows = 3, .cols = 3}), beODD_ROWS);
}

TEST(Arguments, UnknownFormatsAndPatternsAreInvalid) {
  for (const int format : {2, 3, 4, 5, 6, 7, 8, 9, 10, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(call({.input = outside<BayerPixelFormat>(format)}), beINVALID_PATTERN) << format;
  }
  for (const int format : {0, 1, 10, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(call({.output = outside<BayerPixelFormat>(format)}), beINVALID_PATTERN) << format;
  }
  for (const int pattern : {4, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(call({.pattern = outside<BayerPattern>(pattern)}), beINVALID_PATTERN) << pattern;
  }
}

TEST(Arguments, UnknownMethodsFail) {
  for (const int method : {6, 7, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(call({.method = outside<BayerMethod>(method)}), beFAILED) << method;
  }
}

TEST(Arguments, NullBuffersFail) {
  EXPECT_EQ(call({.nullInput = true}), beFAILED);
  EXPECT_EQ(call({.nullOutput = true}), beFAILED);
}

TEST(Arguments, NegativeSizesFail) {
  for (const int size : {-1, -2, INT_MIN, INT_MIN + 1}) {
    EXPECT_EQ(call({.rows = size}), beFAILED) << size;
    EXPECT_EQ(call({.cols = size}), beFAILED) << size;
    EXPECT_EQ(call({.rows = size, .cols = 0}), beFAILED) << size;
  }
}

TEST(Arguments, PicturesWithoutPixelsSucceed) {
  for (const bool null : {false, true}) {
    EXPECT_EQ(call({.nullInput = null, .rows = 0, .cols = 0, .nullOutput = null}), beOK);
    EXPECT_EQ(call({.nullInput = null, .rows = 0, .cols = 4, .nullOutput = null}), beOK);
    EXPECT_EQ(call({.nullInput = null, .rows = 3, .cols = 0, .nullOutput = null}), beOK);
  }
}

TEST(Arguments, SizesThatNoBufferHasFail) {
  EXPECT_EQ(call({.rows = INT_MAX - 1, .cols = INT_MAX - 1}), beFAILED);
}

TEST(Arguments, MethodAndSignsComeFirstThenFormatsThenParityThenNulls) {
  constexpr int kNone = 77;
  EXPECT_EQ(call({.input = outside<BayerPixelFormat>(kNone),
                  .rows = 3,
                  .method = outside<BayerMethod>(kNone)}),
            beFAILED);
  EXPECT_EQ(call({.rows = -1, .pattern = outside<BayerPattern>(kNone)}), beFAILED);
  EXPECT_EQ(call({.rows = 3, .pattern = outside<BayerPattern>(kNone)}), beINVALID_PATTERN);
  EXPECT_EQ(call({.rows = 0, .pattern = outside<BayerPattern>(kNone)}), beINVALID_PATTERN);
  EXPECT_EQ(call({.nullInput = true, .rows = 3}), beODD_ROWS);
  EXPECT_EQ(call({.cols = 3, .nullOutput = true}), beODD_COLS);
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

TEST(Arguments, TheHeaderServesC) {
  const Bytes mosaic(4, 9);
  Bytes picture(12);
  EXPECT_TRUE(demosaicFromC(mosaic.data(), picture.data()));
  EXPECT_TRUE(picture == Bytes(12, 9));
}

}  // namespace
}  // namespace Korvex2::Bayer
