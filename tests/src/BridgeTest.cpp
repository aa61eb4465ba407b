// The bridge to the demosaic engine with the engine that ships.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "reference/Routes.h"
#include "support/Bytes.h"
#include "support/Comparison.h"
#include "support/LentImage.h"
#include "support/Probe.h"
#include "vorbayer.h"

namespace Korvex2::Test {
namespace {

Image Mosaic(unsigned rows, unsigned cols, PixelFormat format, BayerTileFormat tile,
             ColorProcessingAlgorithm method) {
  Image image;
  const unsigned bits = Image::DetermineBitsPerPixel(format);
  EXPECT_EQ(image.SetDimensions(rows, cols, (cols * bits + 7) / 8, format, tile).GetType(),
            VORERROR_OK);
  image.SetColorProcessing(method);
  Fill(image.GetData(), image.GetDataSize(), Content::Random, rows * cols);
  return image;
}

bool IsGreyOf(const Image& colour, const Image& mosaic) {
  const std::size_t pixels = static_cast<std::size_t>(mosaic.GetRows()) * mosaic.GetCols();
  for (std::size_t i = 0; i < 3 * pixels; ++i) {
    if (colour.GetData()[i] != mosaic.GetData()[i / 3]) return false;
  }
  return true;
}

constexpr int kMethods = 10;

TEST(Bridge, TileNoneGivesGreyWhateverTheMethod) {
  for (int method = 0; method < kMethods; ++method) {
    const Image mosaic =
        Mosaic(3, 5, PIXEL_FORMAT_RAW8, NONE, static_cast<ColorProcessingAlgorithm>(method));
    Image colour;
    EXPECT_EQ(ImageConverter().Convert(&mosaic, PIXEL_FORMAT_RGB8, &colour).GetType(), VORERROR_OK);
    EXPECT_TRUE(IsGreyOf(colour, mosaic)) << method;
  }
}

TEST(Bridge, NoColorProcessingGivesGrey) {
  const Image mosaic = Mosaic(3, 5, PIXEL_FORMAT_RAW8, RGGB, NO_COLOR_PROCESSING);
  Image colour;
  EXPECT_EQ(ImageConverter().Convert(&mosaic, PIXEL_FORMAT_BGR, &colour).GetType(), VORERROR_OK);
  EXPECT_TRUE(IsGreyOf(colour, mosaic));
}

TEST(Bridge, GreyOf16BitMosaicsGoesByBytesAndLeavesTheRestZero) {
  const Image mosaic = Mosaic(4, 6, PIXEL_FORMAT_RAW16, NONE, DEFAULT);
  for (const PixelFormat target : {PIXEL_FORMAT_RGB16, PIXEL_FORMAT_BGR16}) {
    Image colour;
    EXPECT_EQ(ImageConverter().Convert(&mosaic, target, &colour).GetType(), VORERROR_OK);
    for (std::size_t i = 0; i < 72; ++i) {
      ASSERT_EQ(colour.GetData()[i], mosaic.GetData()[i / 3]);
      ASSERT_EQ(colour.GetData()[72 + i], 0);
    }
  }
}

TEST(Bridge, RefusesMethodsThatTheEngineIsNeverAskedFor) {
  for (const ColorProcessingAlgorithm method :
       {IPP, WEIGHTED_DIRECTIONAL_FILTER, static_cast<ColorProcessingAlgorithm>(9)}) {
    const Image mosaic = Mosaic(4, 4, PIXEL_FORMAT_RAW16, RGGB, method);
    Image colour;
    const Error error = ImageConverter().Convert(&mosaic, PIXEL_FORMAT_RGB8, &colour);
    EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER);
    EXPECT_STREQ(error.GetMessage(), Reference::kBadMethod);
  }
}

TEST(Bridge, TakesTheProcessDefaultForDefault) {
  const Image mosaic = Mosaic(4, 4, PIXEL_FORMAT_RAW16, RGGB, DEFAULT);
  Image colour;
  EXPECT_EQ(ImageConverter().Convert(&mosaic, PIXEL_FORMAT_RGB8, &colour).GetType(), VORERROR_OK);
  for (const ColorProcessingAlgorithm method : {IPP, DEFAULT}) {
    Image::SetDefaultColorProcessing(method);
    const Error error = ImageConverter().Convert(&mosaic, PIXEL_FORMAT_RGB8, &colour);
    EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER);
    EXPECT_STREQ(error.GetMessage(), Reference::kBadMethod);
  }
  Image::SetDefaultColorProcessing(NEAREST_NEIGHBOR);
}

TEST(Bridge, RefusesATileBeforeItLooksAtTheMethod) {
  for (const int tile : {5, 6, 0x7fffffff}) {
    const Image mosaic = Mosaic(4, 4, PIXEL_FORMAT_RAW16, static_cast<BayerTileFormat>(tile), IPP);
    Image colour;
    const Error error = ImageConverter().Convert(&mosaic, PIXEL_FORMAT_RGB8, &colour);
    EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER);
    EXPECT_STREQ(error.GetMessage(), Reference::kBadTile);
  }
}

/// What a destination of 4 rows holds after a conversion of this mosaic: a fresh one, one that had
/// its shape and a frame, one on the caller's memory.
void ExpectLeft(const Image& mosaic, PixelFormat target, ErrorType answer, std::size_t written) {
  constexpr unsigned char kOld = 0xEE;
  const unsigned stride = mosaic.GetCols() * Image::DetermineBitsPerPixel(target) / 8;
  Bytes memory(std::size_t{stride} * mosaic.GetRows(), kOld);
  Image fresh;
  Image used;
  ASSERT_EQ(used.SetDimensions(mosaic.GetRows(), mosaic.GetCols(), stride, target, NONE).GetType(),
            VORERROR_OK);
  std::memset(used.GetData(), kOld, used.GetDataSize());
  Image lent(memory.data(), memory.size());
  for (Image* destination : {&fresh, &used, &lent}) {
    EXPECT_EQ(ImageConverter().Convert(&mosaic, target, destination).GetType(), answer);
    const unsigned char left = destination == &fresh ? 0 : kOld;
    const unsigned char* const bytes = destination->GetData();
    EXPECT_TRUE(std::all_of(bytes + written, bytes + destination->GetDataSize(),
                            [left](auto byte) { return byte == left; }));
    EXPECT_EQ(std::memcmp(bytes, fresh.GetData(), written), 0);
  }
}

TEST(Bridge, AFailureWritesNothing) {
  const auto unknownTile = static_cast<BayerTileFormat>(5);
  for (const PixelFormat format : {PIXEL_FORMAT_RAW8, PIXEL_FORMAT_RAW16}) {
    const bool tells = format == PIXEL_FORMAT_RAW16;
    const ErrorType refused = tells ? VORERROR_INVALID_PARAMETER : VORERROR_OK;
    const ErrorType failed = tells ? VORERROR_FAILED : VORERROR_OK;
    for (const PixelFormat target : {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_BGR}) {
      ExpectLeft(Mosaic(4, 4, format, unknownTile, NEAREST_NEIGHBOR), target, refused, 0);
      ExpectLeft(Mosaic(4, 4, format, GRBG, IPP), target, refused, 0);
      ExpectLeft(Mosaic(4, 3, format, GRBG, EDGE_SENSING), target, failed, 0);
    }
  }
}

TEST(Bridge, GreyIsThreeBytesAPixelAndNoMore) {
  const Image mosaic = Mosaic(4, 4, PIXEL_FORMAT_RAW16, NONE, NEAREST_NEIGHBOR);
  ExpectLeft(mosaic, PIXEL_FORMAT_RGB16, VORERROR_OK, 3 * 16);
}

// A chain goes on with the black of its temporary.
TEST(Bridge, AFailureWithinAChainMakesABlackPicture) {
  const Image odd = Mosaic(4, 3, PIXEL_FORMAT_RAW8, GRBG, NEAREST_NEIGHBOR);
  ExpectLeft(odd, PIXEL_FORMAT_BGRU, VORERROR_OK, 4 * 12);
  ExpectLeft(odd, PIXEL_FORMAT_MONO8, VORERROR_OK, 12);
}

TEST(Bridge, AsksTheImagesInOrderBeforeItLooksAtTheirAnswers) {
  Bytes bytes(64);
  LentImage source(4, 4, PIXEL_FORMAT_RAW8, bytes.data(), 16);
  LentImage destination(4, 4, PIXEL_FORMAT_RGB8, bytes.data() + 16, 48);
  source.tile = static_cast<BayerTileFormat>(5);
  EXPECT_EQ(Probe().ConvertBayerImageToBGR(&source, &destination).GetType(),
            VORERROR_INVALID_PARAMETER);
  EXPECT_EQ(source.calls,
            (std::vector<std::string>{"GetColorProcessing", "GetDimensions", "GetData",
                                      "GetPixelFormat", "GetBayerTileFormat"}));
  ASSERT_GE(destination.calls.size(), 2U);
  EXPECT_EQ(destination.calls[0], "GetData");
  EXPECT_EQ(destination.calls[1], "GetPixelFormat");
}

TEST(Bridge, Raw12AlwaysTakesTheProcessDefault) {
  const Image mosaic = Mosaic(4, 4, PIXEL_FORMAT_RAW12, RGGB, IPP);
  Image colour;
  EXPECT_EQ(ImageConverter().Convert(&mosaic, PIXEL_FORMAT_RGB8, &colour).GetType(), VORERROR_OK);
  Image::SetDefaultColorProcessing(IPP);
  const Image sane = Mosaic(4, 4, PIXEL_FORMAT_RAW12, RGGB, NEAREST_NEIGHBOR);
  EXPECT_EQ(ImageConverter().Convert(&sane, PIXEL_FORMAT_RGB8, &colour).GetType(),
            VORERROR_INVALID_PARAMETER);
  Image::SetDefaultColorProcessing(NEAREST_NEIGHBOR);
}

TEST(Bridge, OddSizesSurfaceFromFiveRoutinesAndNoOthers) {
  std::set<std::string> surfacing;
  for (const PixelFormat source : {PIXEL_FORMAT_RAW8, PIXEL_FORMAT_RAW12, PIXEL_FORMAT_RAW16}) {
    for (const Probe::TargetMember& target : Probe::Targets()) {
      const Image mosaic = Mosaic(3, 4, source, GRBG, NEAREST_NEIGHBOR);
      Image destination;
      const Error error = ImageConverter().Convert(&mosaic, target.target, &destination);
      if (error == VORERROR_OK) continue;
      EXPECT_EQ(error.GetType(), VORERROR_FAILED);
      EXPECT_STREQ(error.GetMessage(), Reference::kEngineFailed);
      EXPECT_EQ(error.GetCause(), nullptr);
      surfacing.insert(Reference::Dispatch(source, target.target));
    }
  }
  EXPECT_EQ(surfacing,
            (std::set<std::string>{"ConvertRAW12ToBGR", "ConvertRAW12ToRGB", "ConvertRAW16ToBGR",
                                   "ConvertRAW16ToRGB", "ConvertRAW16ToRGB16"}));
}

TEST(Bridge, ADestinationWithoutColourMakesTheEngineRefuse) {
  const Image mosaic = Mosaic(4, 4, PIXEL_FORMAT_RAW8, RGGB, NEAREST_NEIGHBOR);
  for (const PixelFormat format : {PIXEL_FORMAT_MONO8, PIXEL_FORMAT_BGRU16, PIXEL_FORMAT_RAW16}) {
    Bytes bytes(256, 0xEE);
    LentImage destination(4, 4, format, bytes.data(), 128);
    const Error error = Probe().ConvertBayerImageToBGR(&mosaic, &destination);
    EXPECT_EQ(error.GetType(), VORERROR_FAILED) << format;
    EXPECT_STREQ(error.GetMessage(), Reference::kEngineFailed);
    EXPECT_TRUE(std::all_of(bytes.begin() + 128, bytes.end(), [](auto b) { return b == 0xEE; }));
  }
}

TEST(Bridge, TranslatesFormatsMethodsAndTilesAsItsTablesSay) {
  const Probe probe;
  std::vector<Reference::Format> formats{Reference::UNSPECIFIED, 0x12345};
  for (const Reference::FormatRow& row : Reference::Formats()) formats.push_back(row.value);
  for (const Reference::Format format : formats) {
    EXPECT_EQ(probe.TranslateToBayerPixelFormat(static_cast<PixelFormat>(format)),
              Reference::EngineFormat(format))
        << Reference::FormatName(format);
  }
  EXPECT_EQ(probe.TranslateToBayerPixelFormat(PIXEL_FORMAT_BGRU16), BAYER_PIXEL_FORMAT_RAW8);
  for (int method = 0; method < 20; ++method) {
    EXPECT_EQ(probe.TranslateToBayerMethod(static_cast<ColorProcessingAlgorithm>(method)),
              Reference::EngineMethod(static_cast<std::uint32_t>(method)));
  }
  EXPECT_EQ(probe.TranslateToBayerMethod(WEIGHTED_DIRECTIONAL_FILTER),
            BAYER_METHOD_NEAREST_NEIGHBOR);
  for (int tile = 0; tile < 10; ++tile) {
    EXPECT_EQ(probe.TranslateToBayerPattern(static_cast<BayerTileFormat>(tile)),
              Reference::EnginePattern(static_cast<std::uint32_t>(tile)));
  }
}

}  // namespace
}  // namespace Korvex2::Test
