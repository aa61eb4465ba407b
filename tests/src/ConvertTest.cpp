#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "ImageConverterARMStub.h"
#include "InternalError.h"
#include "reference/Converter.h"
#include "support/Bytes.h"
#include "support/Comparison.h"
#include "support/LentImage.h"
#include "support/Probe.h"

namespace Korvex2::Test {
namespace {

using Calls = std::vector<std::string>;

Image Frame(unsigned rows, unsigned cols, PixelFormat format, BayerTileFormat tile = NONE) {
  Image image;
  const unsigned bits = Image::DetermineBitsPerPixel(format);
  EXPECT_EQ(image.SetDimensions(rows, cols, (cols * bits + 7) / 8, format, tile).GetType(),
            VORERROR_OK);
  Fill(image.GetData(), image.GetDataSize(), Content::Random, format);
  return image;
}

/// A refusal of Convert: code and message.
void ExpectError(const Error& error, ErrorType type, const char* message) {
  EXPECT_EQ(error.GetType(), type);
  EXPECT_STREQ(error.GetMessage(), message);
}

// Clients keep pointers to these, and return a bare code where a builder is expected.
TEST(Converter, HasTheSignaturesThatClientsStore) {
  Error (ImageConverter::*const convert)(const Image*, PixelFormat, Image*) =
      &ImageConverter::Convert;
  Error (ImageConverter::*const convertInPlace)(Image*, PixelFormat) =
      &ImageConverter::ConvertInPlace;
  static_assert(std::is_convertible_v<ErrorType, InternalError>);
  ImageConverter converter;
  const Image source = Frame(2, 2, PIXEL_FORMAT_MONO8);
  Image destination;
  ExpectError((converter.*convert)(&source, PIXEL_FORMAT_RGB8, &destination), VORERROR_OK, "");
  ExpectError((converter.*convertInPlace)(&destination, PIXEL_FORMAT_RGB8),
              VORERROR_NOT_IMPLEMENTED, Reference::kNotImplementedText);
  const InternalError success = VORERROR_OK;
  ExpectError(success, VORERROR_OK, "");
}

TEST(Converter, TakesItsByteOrderFromTheHost) {
  EXPECT_EQ(Probe().IsLittleEndian(), std::endian::native == std::endian::little);
}

TEST(Converter, ConvertInPlaceIsNotImplementedAndTouchesNothing) {
  ImageConverter converter;
  ExpectError(converter.ConvertInPlace(nullptr, PIXEL_FORMAT_RGB8), VORERROR_NOT_IMPLEMENTED,
              Reference::kNotImplementedText);
  LentImage image;
  ExpectError(converter.ConvertInPlace(&image, PIXEL_FORMAT_RGB8), VORERROR_NOT_IMPLEMENTED,
              Reference::kNotImplementedText);
  EXPECT_TRUE(image.calls.empty());
}

TEST(Convert, RefusesANullSourceEvenWithANullDestination) {
  ImageConverter converter;
  ExpectError(converter.Convert(nullptr, PIXEL_FORMAT_RGB8, nullptr), VORERROR_INVALID_PARAMETER,
              Reference::kSourceNull);
}

TEST(Convert, RefusesASourceWithoutBuffer) {
  ImageConverter converter;
  const Image source;
  LentImage destination;
  ExpectError(converter.Convert(&source, PIXEL_FORMAT_RGB8, &destination),
              VORERROR_INVALID_PARAMETER, Reference::kSourceNull);
  EXPECT_TRUE(destination.calls.empty());
}

TEST(Convert, RefusesANullDestination) {
  ImageConverter converter;
  const Image source = Frame(2, 2, PIXEL_FORMAT_MONO8);
  ExpectError(converter.Convert(&source, PIXEL_FORMAT_RGB8, nullptr), VORERROR_INVALID_PARAMETER,
              Reference::kDestinationNull);
}

TEST(Convert, WrapsTheRefusalOfAShape) {
  const Image source = Frame(2, 2, PIXEL_FORMAT_MONO8);
  LentImage destination;
  destination.refuseShape = VORERROR_BUFFER_TOO_SMALL;
  for (const PixelFormat target :
       {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_MONO8, PIXEL_FORMAT_S_MONO16, UNSPECIFIED_PIXEL_FORMAT}) {
    destination.calls.clear();
    const Error error = ImageConverter().Convert(&source, target, &destination);
    ExpectError(error, VORERROR_FAILED, Reference::kRefusedShape);
    ASSERT_NE(error.GetCause(), nullptr);
    ExpectError(*error.GetCause(), VORERROR_BUFFER_TOO_SMALL, "No room.");
    EXPECT_EQ(destination.calls, Calls{"SetDimensions"});
  }
}

TEST(Convert, ShapesTheDestinationBeforeItRefusesTheTarget) {
  for (const PixelFormat target :
       {PIXEL_FORMAT_S_MONO16, PIXEL_FORMAT_S_RGB16, PIXEL_FORMAT_422YUV8_JPEG,
        UNSPECIFIED_PIXEL_FORMAT, static_cast<PixelFormat>(0x12345)}) {
    const Image source = Frame(3, 5, PIXEL_FORMAT_RAW8, GBRG);
    Image destination = Frame(1, 1, PIXEL_FORMAT_MONO8);
    ExpectError(ImageConverter().Convert(&source, target, &destination), VORERROR_INVALID_PARAMETER,
                Reference::kBadFormat);
    EXPECT_EQ(destination.GetPixelFormat(), target);
    EXPECT_EQ(destination.GetRows(), 3U);
    EXPECT_EQ(destination.GetCols(), 5U);
    EXPECT_EQ(destination.GetBayerTileFormat(), GBRG);
    EXPECT_EQ(destination.GetStride(),
              Reference::RowBytes(5, Image::DetermineBitsPerPixel(target)));
  }
}

TEST(Convert, CopiesTheSameFormatEvenWhereItIsNoTarget) {
  for (const PixelFormat format :
       {PIXEL_FORMAT_MONO8, PIXEL_FORMAT_RAW12, PIXEL_FORMAT_411YUV8, PIXEL_FORMAT_S_MONO16,
        PIXEL_FORMAT_S_RGB16, PIXEL_FORMAT_422YUV8_JPEG}) {
    Image source = Frame(3, 5, format, RGGB);
    source.SetColorProcessing(RIGOROUS);
    Image destination;
    EXPECT_EQ(ImageConverter().Convert(&source, format, &destination).GetType(), VORERROR_OK);
    ASSERT_EQ(destination.GetDataSize(), source.GetDataSize());
    EXPECT_EQ(std::memcmp(destination.GetData(), source.GetData(), source.GetDataSize()), 0);
    EXPECT_EQ(destination.GetColorProcessing(), RIGOROUS);
    EXPECT_EQ(destination.GetBayerTileFormat(), RGGB);
  }
}

TEST(Convert, ReturnsWhatDeepCopyReturnsAfterTheShaping) {
  const Image source = Frame(2, 2, PIXEL_FORMAT_S_MONO16);
  LentImage destination;
  destination.copyResult = VORERROR_IMAGE_LIBRARY_FAILURE;
  const Error error = ImageConverter().Convert(&source, PIXEL_FORMAT_S_MONO16, &destination);
  ExpectError(error, VORERROR_IMAGE_LIBRARY_FAILURE, "No copy.");
  EXPECT_EQ(error.GetCause(), nullptr);
  EXPECT_EQ(destination.calls, (Calls{"SetDimensions", "DeepCopy"}));
}

TEST(Convert, CopyOfAPaddedImageKeepsItsStride) {
  Image source;
  ASSERT_EQ(source.SetDimensions(2, 3, 10, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
  Fill(source.GetData(), 20, Content::Random, 1);
  Image destination;
  EXPECT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_MONO8, &destination).GetType(),
            VORERROR_OK);
  EXPECT_EQ(destination.GetStride(), 10U);
  EXPECT_EQ(std::memcmp(destination.GetData(), source.GetData(), 20), 0);
}

TEST(Convert, RgbAndRgb8TakeTheSamePath) {
  const Image source = Frame(3, 5, PIXEL_FORMAT_BGR);
  Image one;
  Image other;
  EXPECT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_RGB, &one).GetType(), VORERROR_OK);
  EXPECT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_RGB8, &other).GetType(), VORERROR_OK);
  EXPECT_EQ(std::memcmp(one.GetData(), other.GetData(), one.GetDataSize()), 0);
}

TEST(Convert, RowsOf641ColumnsTake962BytesAt12BitsAnd1923At24) {
  const Image source = Frame(3, 641, PIXEL_FORMAT_MONO8);
  Image destination;
  EXPECT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_MONO12, &destination).GetType(),
            VORERROR_OK);
  EXPECT_EQ(destination.GetStride(), 962U);
  EXPECT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_RGB8, &destination).GetType(),
            VORERROR_OK);
  EXPECT_EQ(destination.GetStride(), 1923U);
}

TEST(Convert, StrideOfHugeRowsFollowsSinglePrecisionAndThePixelsAreWhole) {
  constexpr unsigned kCols = 5592407;  // 24 bits each round down by 8, 12 bits each by 4
  const Image source = Frame(1, kCols, PIXEL_FORMAT_MONO8);
  Image destination;
  ASSERT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_RGB8, &destination).GetType(),
            VORERROR_OK);
  EXPECT_EQ(destination.GetStride(), 16777220U);
  const unsigned char last = source.GetData()[kCols - 1];
  EXPECT_EQ(destination.GetData()[3UL * kCols - 1], last);  // beyond rows x stride, yet there
  ASSERT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_MONO12, &destination).GetType(),
            VORERROR_OK);
  EXPECT_EQ(destination.GetStride(), 8388610U);
}

TEST(Convert, StrideOfHugeRowsWrapsAt32Bits) {
  Image source;
  ASSERT_EQ(source.SetDimensions(0, 0x10000001, 0, PIXEL_FORMAT_MONO8, NONE).GetType(),
            VORERROR_OK);
  Image destination;
  EXPECT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_MONO16, &destination).GetType(),
            VORERROR_OK);
  EXPECT_EQ(destination.GetStride(), 2U);
}

TEST(Convert, KeepsTheTileWhateverTheTarget) {
  const Image source = Frame(2, 2, PIXEL_FORMAT_RAW8, BGGR);
  for (const Probe::TargetMember& target : Probe::Targets()) {
    Image destination;
    ImageConverter().Convert(&source, target.target, &destination);
    EXPECT_EQ(destination.GetBayerTileFormat(), BGGR);
  }
}

TEST(Convert, OfAPairThatIsRefusedWritesNothingIntoTheCallersMemory) {
  const Image source = Frame(3, 3, PIXEL_FORMAT_MONO8);
  for (const PixelFormat target : {PIXEL_FORMAT_RAW8, PIXEL_FORMAT_S_MONO16}) {
    Bytes memory(64, 0xEE);
    Image destination(memory.data(), memory.size());
    ExpectError(ImageConverter().Convert(&source, target, &destination), VORERROR_INVALID_PARAMETER,
                Reference::kBadFormat);
    EXPECT_EQ(destination.GetPixelFormat(), target);
    EXPECT_EQ(memory, Bytes(64, 0xEE));
  }
}

TEST(Convert, AsksTheImagesInOrder) {
  Bytes bytes(64);
  const LentImage source(1, 4, PIXEL_FORMAT_MONO8, bytes.data(), 4);
  LentImage destination(1, 4, PIXEL_FORMAT_RGB8, bytes.data() + 16, 12);
  EXPECT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_RGB8, &destination).GetType(),
            VORERROR_OK);
  ASSERT_GE(source.calls.size(), 3U);
  EXPECT_EQ(source.calls[0], "GetData");
  EXPECT_EQ(source.calls[1], "GetDimensions");
  EXPECT_EQ(source.calls[2], "GetPixelFormat");
  ASSERT_GE(destination.calls.size(), 2U);
  EXPECT_EQ(destination.calls[0], "SetDimensions");  // its buffer is not looked at before
}

TEST(Convert, OfAnImageIntoItselfFollowsTheSteps) {
  // Shaped as the target first, the image then is a source of the target's own format.
  Image image = Frame(2, 2, PIXEL_FORMAT_RGB8);
  ExpectError(ImageConverter().Convert(&image, PIXEL_FORMAT_MONO8, &image),
              VORERROR_INVALID_PARAMETER, Reference::kBadFormat);
  EXPECT_EQ(image.GetPixelFormat(), PIXEL_FORMAT_MONO8);

  Image same = Frame(2, 2, PIXEL_FORMAT_RGB8);
  const Image before(same);
  EXPECT_EQ(ImageConverter().Convert(&same, PIXEL_FORMAT_RGB8, &same).GetType(), VORERROR_OK);
  EXPECT_EQ(std::memcmp(same.GetData(), before.GetData(), before.GetDataSize()), 0);
}

TEST(Convert, ErrorsCarryTheConvertersFileLineAndBuildStamp) {
  ImageConverter converter;
  const Image source = Frame(2, 2, PIXEL_FORMAT_MONO8);
  Image destination;
  const Error errors[] = {
      converter.ConvertInPlace(nullptr, PIXEL_FORMAT_RGB8),
      converter.Convert(nullptr, PIXEL_FORMAT_RGB8, nullptr),
      converter.Convert(&source, PIXEL_FORMAT_RGB8, nullptr),
      converter.Convert(&source, PIXEL_FORMAT_S_MONO16, &destination),
      converter.Convert(&source, PIXEL_FORMAT_RAW8, &destination),
      Probe().ConvertRGBToY8(nullptr, nullptr),
      Probe().ConvertRGBToY12(nullptr, nullptr),
      Probe().TempImage(nullptr, nullptr, PIXEL_FORMAT_RGB8),
  };
  for (const Error& error : errors) {
    EXPECT_STREQ(error.GetFile(), "ImageConverterARMStub.cpp") << error;
    EXPECT_GT(error.GetLine(), 0) << error;
    EXPECT_EQ(std::strlen(error.GetDate()), std::strlen("Mmm dd yyyy")) << error;
    EXPECT_EQ(std::strlen(error.GetTime()), std::strlen("hh:mm:ss")) << error;
  }
}

TEST(Convert, SuccessCarriesNothing) {
  const Image source = Frame(2, 2, PIXEL_FORMAT_MONO8);
  Image destination;
  const Error error = ImageConverter().Convert(&source, PIXEL_FORMAT_RGB8, &destination);
  ExpectError(error, VORERROR_OK, "");
  EXPECT_STREQ(error.GetFile(), "");
}

TEST(PixelCount, IsRowsTimesColumnsWrappingAt32Bits) {
  const Probe probe;
  EXPECT_EQ(probe.GetNumberOfPixels(nullptr), 0U);
  const LentImage image(3, 5, PIXEL_FORMAT_MONO8, nullptr, 0);
  EXPECT_EQ(probe.GetNumberOfPixels(&image), 15U);
  const LentImage huge(65536, 65537, PIXEL_FORMAT_MONO8, nullptr, 0);
  EXPECT_EQ(probe.GetNumberOfPixels(&huge), 65536U);
}

}  // namespace
}  // namespace Korvex2::Test
