#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "reference/Routes.h"
#include "support/Comparison.h"
#include "support/LentImage.h"

namespace Korvex2::Test {
namespace {

/// Each ConvertTo<Target> on its own, destination already shaped, next to the oracle's.
TEST(ConvertTo, AgreesWithTheOracleForEverySourceRefusedOnesIncluded) {
  std::vector<Reference::Format> sources{Reference::UNSPECIFIED, 0x12345};
  for (const Reference::FormatRow& row : Reference::Formats()) sources.push_back(row.value);
  int refused = 0;
  int converted = 0;
  for (const Probe::TargetMember& target : Probe::Targets()) {
    for (const Reference::Format format : sources) {
      SCOPED_TRACE(std::string(Reference::FormatName(format)) + " -> " +
                   Reference::FormatName(target.target));
      Image source;
      source.SetDimensions(4, 6, Reference::RowBytes(6, Reference::BitsPerPixel(format)),
                           static_cast<PixelFormat>(format), GRBG);
      source.SetColorProcessing(EDGE_SENSING);
      Fill(source.GetData(), source.GetDataSize(), Content::Random, format);
      const Reference::Frame frame = FrameOf(source);
      Image destination;
      const unsigned stride = Reference::RowBytes(6, Reference::BitsPerPixel(target.target));
      destination.SetDimensions(4, 6, stride, target.target, GRBG);
      Reference::Frame expected;
      expected.Shape(4, 6, stride, target.target, GRBG);

      Reference::Converter oracle;
      oracle.engine = OracleEngine;
      const Error error = Probe(true).Call(target.member, &source, &destination);
      const Reference::Outcome outcome = oracle.ConvertTo(target.target, &frame, &expected);
      ASSERT_TRUE(SameResult(outcome, expected, error, destination));
      if (error == VORERROR_INVALID_PARAMETER) {
        EXPECT_STREQ(error.GetMessage(), "The specified pixel format is not a valid output type.");
        EXPECT_STREQ(error.GetFile(), "ImageConverterARMStub.cpp");
        ++refused;
      } else {
        ++converted;
      }
    }
  }
  EXPECT_EQ(converted, 201);
  EXPECT_EQ(refused, 16 * 21 - 201);
}

TEST(ConvertTo, RaisesItsRefusalsApartFromThoseOfWrongTargets) {
  Image source;
  source.SetDimensions(1, 1, 6, PIXEL_FORMAT_S_RGB16, NONE);
  Image destination;
  const int wrong = Probe().Convert(&source, PIXEL_FORMAT_S_MONO16, &destination).GetLine();
  ASSERT_GT(wrong, 0);
  for (const Probe::TargetMember& target : Probe::Targets()) {
    EXPECT_GT(Probe().Call(target.member, &source, &destination).GetLine(), wrong);
  }
}

TEST(ConvertTo, BgrOfAGreySourceHasTheBytesOfItsRgb) {
  Image grey;
  grey.SetDimensions(3, 5, 5, PIXEL_FORMAT_MONO8, NONE);
  Fill(grey.GetData(), 15, Content::Random, 3);
  Image rgb;
  Image bgr;
  rgb.SetDimensions(3, 5, 15, PIXEL_FORMAT_RGB8, NONE);
  bgr.SetDimensions(3, 5, 15, PIXEL_FORMAT_BGR, NONE);
  EXPECT_EQ(Probe().ConvertToRGB(&grey, &rgb).GetType(), VORERROR_OK);
  EXPECT_EQ(Probe().ConvertToBGR(&grey, &bgr).GetType(), VORERROR_OK);
  EXPECT_EQ(std::memcmp(rgb.GetData(), bgr.GetData(), 45), 0);
}

TEST(ConvertTo, Raw8RefusesAGreySource) {
  const LentImage source(1, 1, PIXEL_FORMAT_MONO8, nullptr, 0);
  LentImage destination;
  const Error error = Probe().ConvertToRAW8(&source, &destination);
  EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER);
  EXPECT_STREQ(error.GetMessage(), "The specified pixel format is not a valid output type.");
  EXPECT_TRUE(destination.calls.empty());
}

TEST(ConvertTo, EveryTargetRefusesSignedAndCompressedSources) {
  for (const PixelFormat format :
       {PIXEL_FORMAT_S_MONO16, PIXEL_FORMAT_S_RGB16, PIXEL_FORMAT_422YUV8_JPEG}) {
    const LentImage source(1, 1, format, nullptr, 0);
    for (const Probe::TargetMember& target : Probe::Targets()) {
      LentImage destination;
      const Error error = Probe().Call(target.member, &source, &destination);
      EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER);
      EXPECT_STREQ(error.GetMessage(), "The specified pixel format is not a valid output type.");
    }
  }
}

}  // namespace
}  // namespace Korvex2::Test
