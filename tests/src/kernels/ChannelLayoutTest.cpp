#include <gtest/gtest.h>

#include <bit>

#include "support/Bytes.h"

namespace Korvex2::Test {
namespace {

constexpr bool kHostIsLittleEndian = std::endian::native == std::endian::little;

TEST(ChannelLayout, RgbToRgbuKeepsTheColourAndSetsEveryFourthByteTo255) {
  const Bytes result = Converted("ConvertRGBToRGBU", {1, 2, 3, 4, 5, 6}, 2, 8);
  EXPECT_EQ(result, (Bytes{1, 2, 3, 255, 4, 5, 6, 255}));
}

TEST(ChannelLayout, Bgr16ToBgru16SetsEveryFourthWordTo65535) {
  const Bytes result =
      Converted("ConvertBGR16ToBGRU16", Words({1, 0x2345, 3, 4, 5, 0xFEDC}), 2, 16);
  EXPECT_EQ(result, Words({1, 0x2345, 3, 0xFFFF, 4, 5, 0xFEDC, 0xFFFF}));
}

TEST(ChannelLayout, Bgru16ToBgruTruncatesAllFourChannelsWithoutRounding) {
  const Bytes result =
      Converted("ConvertBGRU16ToBGRU", Words({0x12AB, 0x00FF, 0xFFFF, 0x80FF}), 1, 4);
  EXPECT_EQ(result, (Bytes{0x12, 0x00, 0xFF, 0x80}));
}

TEST(ChannelLayout, BgrToBgr16RepeatsTheByte) {
  const Bytes result = Converted("ConvertBGRToBGR16", {0x00, 0x80, 0xFF}, 1, 6);
  EXPECT_EQ(result, Words({0x0000, 0x8080, 0xFFFF}));
}

TEST(ChannelLayout, PaddingFourChannelsPadsTheFourthToo) {
  const Bytes result = Converted("ConvertBGRUToBGRU16", {1, 2, 3, 4}, 1, 8);
  EXPECT_EQ(result, Words({0x0101, 0x0202, 0x0303, 0x0404}));
}

TEST(ChannelLayout, DropsTheFourthChannel) {
  EXPECT_EQ(Converted("ConvertBGRUToBGR", {1, 2, 3, 4, 5, 6, 7, 8}, 2, 6),
            (Bytes{1, 2, 3, 5, 6, 7}));
  EXPECT_EQ(Converted("ConvertBGRU16ToBGR16", Words({1, 2, 3, 4, 5, 6, 7, 8}), 2, 12),
            Words({1, 2, 3, 5, 6, 7}));
}

TEST(ChannelLayout, RgbuSwapsToBgruWhenTheFlagMatchesTheHost) {
  const Bytes result = Converted("ConvertRGBUToBGRU", {1, 2, 3, 4}, 1, 4, kHostIsLittleEndian);
  EXPECT_EQ(result, (Bytes{3, 2, 1, 4}));
}

TEST(ChannelLayout, RgbuSwapFollowsTheFlagWhereItDoesNotMatchTheHost) {
  const Bytes result = Converted("ConvertRGBUToBGRU", {1, 2, 3, 4}, 1, 4, !kHostIsLittleEndian);
  EXPECT_EQ(result, (Bytes{2, 3, 4, 1}));
}

TEST(ChannelLayout, SwapOfFour16BitChannelsGoesByTheHostsWordsAndIgnoresTheFlag) {
  const Bytes expected =
      kHostIsLittleEndian ? Words({0xD, 0xA, 0xB, 0xC}) : Words({0xC, 0xB, 0xA, 0xD});
  for (const bool flag : {false, true}) {
    EXPECT_EQ(Converted("Swap_C1C3_4Channel_16bit", Words({0xA, 0xB, 0xC, 0xD}), 1, 8, flag),
              expected);
  }
}

TEST(ChannelLayout, SwapsOfThreeChannelsReverseThem) {
  EXPECT_EQ(Converted("ConvertRGBToBGR", {1, 2, 3}, 1, 3), (Bytes{3, 2, 1}));
  EXPECT_EQ(Converted("ConvertRGB16ToBGR16", Words({1, 2, 3}), 1, 6), Words({3, 2, 1}));
}

TEST(ChannelLayout, PaddedRowsAreOneContiguousRunAndTheTailStays) {
  Bytes source(2 * 8);  // two rows of two pixels and two bytes of padding
  for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<std::uint8_t>(i);
  Bytes destination(2 * 8, 0xEE);
  LentImage from(2, 2, PIXEL_FORMAT_RGB8, source.data(), source.size());
  from.stride = 8;
  LentImage to(2, 2, PIXEL_FORMAT_BGR, destination.data(), destination.size());
  to.stride = 8;
  EXPECT_EQ(Probe().ConvertRGBToBGR(&from, &to).GetType(), VORERROR_OK);
  EXPECT_EQ(destination, (Bytes{2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 0xEE, 0xEE, 0xEE, 0xEE}));
}

TEST(ChannelLayout, InPlaceTheResultFollowsTheOrderOfReadsAndWrites) {
  Bytes pixels{1, 2, 3, 4, 5, 6};
  const LentImage from(1, 2, PIXEL_FORMAT_RGB8, pixels.data(), pixels.size());
  LentImage to(1, 2, PIXEL_FORMAT_BGR, pixels.data(), pixels.size());
  EXPECT_EQ(Probe().Swap_C1C3_3Channel_8bit(&from, &to).GetType(), VORERROR_OK);
  EXPECT_EQ(pixels, (Bytes{3, 2, 3, 6, 5, 6}));
}

TEST(ChannelLayout, RgbuToRgbReportsSuccess) {
  Converted("ConvertRGBUToRGB", {1, 2, 3, 4}, 1, 3);
}

}  // namespace
}  // namespace Korvex2::Test
