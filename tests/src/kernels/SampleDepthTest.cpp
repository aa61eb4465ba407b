#include <gtest/gtest.h>

#include "support/Bytes.h"

namespace Korvex2::Test {
namespace {

TEST(SampleDepth, Y8ToY16RepeatsTheByte) {
  EXPECT_EQ(Converted("ConvertY8ToY16", {0x80, 0x00, 0xFF}, 3, 6),
            LowFirst({0x8080, 0x0000, 0xFFFF}));
}

TEST(SampleDepth, Y8ToY12PacksAPairIntoThreeBytes) {
  EXPECT_EQ(Converted("ConvertY8ToY12", {0x12, 0xAB}, 2, 3), (Bytes{0x12, 0xB2, 0xAB}));
}

TEST(SampleDepth, Y16ToY12KeepsTheUpperTwelveBits) {
  EXPECT_EQ(Converted("ConvertY16ToY12", {0x34, 0x12, 0xCD, 0xAB}, 2, 3),
            (Bytes{0x12, 0xC3, 0xAB}));
}

TEST(SampleDepth, Y12ToY16ReadsTheNibblesByTheFlag) {
  EXPECT_EQ(Converted("ConvertY12ToY16", {0x12, 0xC3, 0xAB}, 2, 4, false),
            LowFirst({0x1230, 0xABC0}));
  EXPECT_EQ(Converted("ConvertY12ToY16", {0x12, 0xC3, 0xAB}, 2, 4, true),
            LowFirst({0x12C0, 0xAB30}));
}

TEST(SampleDepth, Y12ToY8TakesTheUpperBytesAndClearsTheRest) {
  Bytes source{0x12, 0xC3, 0xAB};
  Bytes destination(8, 0xEE);
  const LentImage from(1, 2, PIXEL_FORMAT_MONO12, source.data(), source.size());
  LentImage to(1, 2, PIXEL_FORMAT_MONO8, destination.data(), 6);  // what it calls its size
  EXPECT_EQ(Probe().ConvertY12ToY8(&from, &to).GetType(), VORERROR_OK);
  EXPECT_EQ(destination, (Bytes{0x12, 0xAB, 0, 0, 0, 0, 0xEE, 0xEE}));
}

TEST(SampleDepth, Y16ToY8TruncatesWithoutRounding) {
  EXPECT_EQ(Converted("ConvertY16ToY8", LowFirst({0x01FF, 0xFFFF, 0x00FF}), 3, 3),
            (Bytes{0x01, 0xFF, 0x00}));
}

TEST(SampleDepth, OddCountsHandleTheFullLastPair) {
  EXPECT_EQ(Converted("ConvertY8ToY12", {0x12, 0xAB}, 1, 3), (Bytes{0x12, 0xB2, 0xAB}));
  EXPECT_EQ(Converted("ConvertY16ToY12", {0x34, 0x12, 0xCD, 0xAB}, 1, 3),
            (Bytes{0x12, 0xC3, 0xAB}));
  EXPECT_EQ(Converted("ConvertY12ToY8", {0x12, 0xC3, 0xAB}, 1, 2), (Bytes{0x12, 0xAB}));
  EXPECT_EQ(Converted("ConvertY12ToY16", {0x12, 0xC3, 0xAB}, 1, 4, false),
            LowFirst({0x1230, 0xABC0}));
}

TEST(SampleDepth, NoPixelsWriteNothingAfterTheClearing) {
  Bytes source(8, 1);
  for (const char* routine : {"ConvertY8ToY12", "ConvertY8ToY16", "ConvertY12ToY16",
                              "ConvertY16ToY8", "ConvertY16ToY12", "ConvertY12ToY8"}) {
    Bytes destination(8, 0xEE);
    const LentImage from(0, 5, UNSPECIFIED_PIXEL_FORMAT, source.data(), source.size());
    LentImage to(0, 5, UNSPECIFIED_PIXEL_FORMAT, destination.data(), 4);
    EXPECT_EQ(Probe().Call(routine, &from, &to).GetType(), VORERROR_OK);
    const bool clears = std::string_view(routine) == "ConvertY12ToY8";
    const std::uint8_t first = clears ? 0 : 0xEE;
    EXPECT_EQ(destination, (Bytes{first, first, first, first, 0xEE, 0xEE, 0xEE, 0xEE})) << routine;
  }
}

TEST(SampleDepth, RawSamplesChangeDepthAsGreyOnesDo) {
  EXPECT_EQ(Converted("ConvertRAW8ToRAW12", {0x12, 0xAB}, 2, 3), (Bytes{0x12, 0xB2, 0xAB}));
  EXPECT_EQ(Converted("ConvertRAW8ToRAW16", {0x12}, 1, 2), LowFirst({0x1212}));
  EXPECT_EQ(Converted("ConvertRAW12ToRAW8", {0x12, 0xC3, 0xAB}, 2, 2), (Bytes{0x12, 0xAB}));
  EXPECT_EQ(Converted("ConvertRAW12ToRAW16", {0x12, 0xC3, 0xAB}, 2, 4, true),
            LowFirst({0x12C0, 0xAB30}));
  EXPECT_EQ(Converted("ConvertRAW16ToRAW8", LowFirst({0x1234}), 1, 1), (Bytes{0x12}));
  EXPECT_EQ(Converted("ConvertRAW16ToRAW12", {0x34, 0x12, 0xCD, 0xAB}, 2, 3),
            (Bytes{0x12, 0xC3, 0xAB}));
}

}  // namespace
}  // namespace Korvex2::Test
