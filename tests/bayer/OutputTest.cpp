/// The eight colour formats, the depths, and that exactly the picture is written.

#include <gtest/gtest.h>

#include "Mosaic.h"
#include "TestPictures.h"
#include "support/Walk.h"

namespace Korvex2::Bayer {
namespace {

using Test::Walk;

class OutputTest : public testing::TestWithParam<BayerMethod> {
 protected:
  Call CallFor(BayerPixelFormat input, BayerPixelFormat output,
               BayerPattern pattern = BAYER_PATTERN_RGGB) const {
    return {.method = GetParam(), .pattern = pattern, .input = input, .output = output};
  }
};

// All formats of one depth hold the same colours.
TEST_P(OutputTest, FormatsAgree) {
  const Mosaic mosaic = RandomMosaic(12, 70, 255, 1);
  for (const BayerPixelFormat input : kInputFormats) {
    const Picture in8 = Demosaiced(mosaic, CallFor(input, BAYER_PIXEL_FORMAT_RGB8));
    const Picture in16 = Demosaiced(mosaic, CallFor(input, BAYER_PIXEL_FORMAT_RGB16));
    for (const BayerPixelFormat output : kOutputFormats) {
      const Picture picture = Demosaiced(mosaic, CallFor(input, output));
      EXPECT_EQ(picture, ChannelBytesOf(output) == 1 ? in8 : in16) << input << " to " << output;
    }
  }
}

TEST_P(OutputTest, SixteenBitsAreReducedByTheirHighByte) {
  const Mosaic mosaic = RandomMosaic(12, 70, 65535, 2);
  Picture full = Demosaiced(mosaic, CallFor(BAYER_PIXEL_FORMAT_RAW16, BAYER_PIXEL_FORMAT_RGB16));
  for (Rgb& pixel : full.pixels) {
    for (auto& channel : pixel) channel = static_cast<std::uint16_t>(channel >> 8);
  }
  EXPECT_EQ(Demosaiced(mosaic, CallFor(BAYER_PIXEL_FORMAT_RAW16, BAYER_PIXEL_FORMAT_RGB8)), full);
}

TEST_P(OutputTest, EightBitsAreWidenedBeforeTheWork) {
  const Mosaic mosaic = RandomMosaic(12, 70, 255, 3);
  Mosaic widened = mosaic;
  for (auto& sample : widened.samples) sample = static_cast<std::uint16_t>(sample * 257);
  EXPECT_EQ(Demosaiced(mosaic, CallFor(BAYER_PIXEL_FORMAT_RAW8, BAYER_PIXEL_FORMAT_RGB16)),
            Demosaiced(widened, CallFor(BAYER_PIXEL_FORMAT_RAW16, BAYER_PIXEL_FORMAT_RGB16)));
}

TEST_P(OutputTest, EveryPixelIsWritten) {
  Walk walk;
  for (int rows = 2; rows <= 10; rows += 2) {
    for (const int cols : {2, 4, 14, 16, 18, 62, 64, 66, 130}) {
      const Mosaic mosaic = RandomMosaic(rows, cols, 255, 4);
      for (const BayerPixelFormat input : kInputFormats) {
        for (const BayerPixelFormat output : kOutputFormats) {
          if (!walk.Takes()) continue;
          const Call call = CallFor(input, output);
          EXPECT_TRUE(DemosaicedBytes(mosaic, call, 0x00) == DemosaicedBytes(mosaic, call, 0xFF));
        }
      }
    }
  }
}

TEST_P(OutputTest, NothingAroundThePictureIsTouchedAndAddressesMayBeOdd) {
  constexpr std::size_t kAround = 200;
  for (const int cols : {2, 6, 34, 66, 100}) {
    const Mosaic mosaic = RandomMosaic(6, cols, 255, 5);
    for (const BayerPixelFormat input : kInputFormats) {
      const Bytes in = Encoded(mosaic, input);
      Bytes shifted(in.size() + 1);
      std::memcpy(shifted.data() + 1, in.data(), in.size());
      for (const BayerPixelFormat output : kOutputFormats) {
        const Bytes expected = DemosaicedBytes(mosaic, CallFor(input, output));
        for (std::size_t shift = 0; shift < 4; ++shift) {
          Bytes space(expected.size() + 2 * kAround + shift, 0xA5);
          Bytes wanted = Bytes(space.size(), 0xA5);
          unsigned char* const out = space.data() + kAround + shift;
          std::memcpy(wanted.data() + kAround + shift, expected.data(), expected.size());
          EXPECT_EQ(bayerToColor(input, shifted.data() + 1, 6, cols, output, out, GetParam(),
                                 BAYER_PATTERN_RGGB),
                    beOK);
          EXPECT_TRUE(space == wanted) << cols << ' ' << input << ' ' << output << ' ' << shift;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Each, OutputTest, testing::ValuesIn(kAllMethods),
                         [](const auto& info) { return MethodName(info.param); });

TEST(Mirroring, TurnsAboutTheEdgeSample) {
  EXPECT_EQ(Mirrored(-1, 10), 1);
  EXPECT_EQ(Mirrored(-3, 10), 3);
  EXPECT_EQ(Mirrored(0, 10), 0);
  EXPECT_EQ(Mirrored(9, 10), 9);
  EXPECT_EQ(Mirrored(10, 10), 8);
  EXPECT_EQ(Mirrored(12, 10), 6);
}

TEST(Mirroring, KeepsTheColourHoweverSmallThePicture) {
  for (int size = 2; size <= 8; size += 2) {
    for (int position = -50; position <= 50; ++position) {
      const std::ptrdiff_t place = Mirrored(position, size);
      EXPECT_TRUE(place >= 0 && place < size);
      EXPECT_EQ((place ^ position) & 1, 0);
    }
  }
}

}  // namespace
}  // namespace Korvex2::Bayer
