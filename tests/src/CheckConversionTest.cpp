// What CheckConversion says beforehand, next to what Convert then does.

#include "CheckConversion.h"

#include <gtest/gtest.h>

#include <vector>

#include "reference/Routes.h"
#include "support/Comparison.h"

namespace Korvex2::Test {
namespace {

bool Mentions(const Error& error, ErrorType type) {
  for (const Error* e = &error; e != nullptr; e = e->GetCause()) {
    if (*e == type) return true;
  }
  return false;
}

/// The engine's last answer during a conversion by the oracle; -1 when it was not asked.
int engineAnswer = -1;

int WatchedEngine(int in, const std::uint8_t* input, int rows, int cols, int out,
                  std::uint8_t* output, int method, int pattern) {
  return engineAnswer = RealEngine(in, input, rows, cols, out, output, method, pattern);
}

TEST(CheckConversion, ForetellsWhatConvertDoesForEveryPairTileMethodAndParity) {
  std::vector<Reference::Format> formats{Reference::UNSPECIFIED, 0x12345};
  for (const Reference::FormatRow& row : Reference::Formats()) formats.push_back(row.value);
  int cases = 0;
  for (const Reference::Format source : formats) {
    for (const Reference::Format target : formats) {
      for (unsigned tile = 0; tile <= 5; ++tile) {
        for (unsigned method = 0; method <= 9; ++method) {
          for (unsigned parity = 0; parity < 4; ++parity, ++cases) {
            const Case c{source, target, 2 + parity / 2, 4 + parity % 2, 0, tile, method};
            SCOPED_TRACE(Describe(c));
            Image image;
            image.SetDimensions(
                c.rows, c.cols, Reference::RowBytes(c.cols, Reference::BitsPerPixel(source)),
                static_cast<PixelFormat>(source), static_cast<BayerTileFormat>(tile));
            image.SetColorProcessing(static_cast<ColorProcessingAlgorithm>(method));
            const Error foretold = CheckConversion(image, static_cast<PixelFormat>(target));

            Image destination;
            const Error error =
                Probe(true).Convert(&image, static_cast<PixelFormat>(target), &destination);
            Reference::Converter oracle;
            oracle.engine = WatchedEngine;
            engineAnswer = -1;
            Reference::Frame converted;
            const Reference::Frame frame = FrameOf(image);
            oracle.Convert(&frame, target, &converted);

            // Convert fails exactly where that was foretold.
            const bool fails = Mentions(foretold, VORERROR_INVALID_PARAMETER) ||
                               Mentions(foretold, VORERROR_FAILED);
            EXPECT_EQ(error != VORERROR_OK, fails) << foretold.GetTrace();
            // Nothing foretold: no engine refused.
            EXPECT_TRUE(foretold != VORERROR_OK || engineAnswer <= 0);
            // An engine that refused was foretold as a failure or as a picture that is not there.
            if (engineAnswer > 0) {
              EXPECT_TRUE(fails || Mentions(foretold, VORERROR_IMAGE_CONVERSION_FAILED));
            }
            // Pairs of which neither is raw convert, or are refused.
            if (!Reference::IsRaw(source) && error == VORERROR_OK) {
              EXPECT_EQ(foretold.GetType(), VORERROR_OK) << foretold.GetTrace();
            }
            if (HasFailure()) return;
          }
        }
      }
    }
  }
  RecordProperty("cases", cases);
}

TEST(CheckConversion, RefusesAnImageWithoutBuffer) {
  EXPECT_EQ(CheckConversion(Image(), PIXEL_FORMAT_RGB8).GetType(), VORERROR_INVALID_PARAMETER);
}

TEST(CheckConversion, WarnsThatRaw12IgnoresItsMethod) {
  Image image;
  image.SetDimensions(2, 4, 6, PIXEL_FORMAT_RAW12, RGGB);
  image.SetColorProcessing(RIGOROUS);
  EXPECT_EQ(CheckConversion(image, PIXEL_FORMAT_RGB8).GetType(), VORERROR_INVALID_SETTINGS);
  image.SetColorProcessing(DEFAULT);
  EXPECT_EQ(CheckConversion(image, PIXEL_FORMAT_RGB8).GetType(), VORERROR_OK);
}

}  // namespace
}  // namespace Korvex2::Test
