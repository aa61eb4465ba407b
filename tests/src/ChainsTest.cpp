#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "reference/Kernels.h"
#include "reference/Routes.h"
#include "support/Allocation.h"
#include "support/Bytes.h"
#include "support/Comparison.h"

namespace Korvex2::Test {
namespace {

Image Shaped(unsigned rows, unsigned cols, unsigned stride, PixelFormat format,
             BayerTileFormat tile = NONE) {
  Image image;
  EXPECT_EQ(image.SetDimensions(rows, cols, stride, format, tile).GetType(), VORERROR_OK);
  return image;
}

TEST(TempImage, RowsAreColumnsTimesPixelBytesWhateverTheSourcesStride) {
  const auto stride = [](unsigned cols, PixelFormat format) {
    const Image source = Shaped(2, cols, 1000, PIXEL_FORMAT_MONO8);
    Image temporary;
    EXPECT_EQ(Probe().TempImage(&source, &temporary, format).GetType(), VORERROR_OK);
    EXPECT_EQ(temporary.GetRows(), 2U);
    EXPECT_EQ(temporary.GetCols(), cols);
    EXPECT_EQ(temporary.GetPixelFormat(), format);
    return temporary.GetStride();
  };
  EXPECT_EQ(stride(5, PIXEL_FORMAT_RGB8), 15U);
  EXPECT_EQ(stride(4, PIXEL_FORMAT_BGRU), 16U);
  EXPECT_EQ(stride(3, PIXEL_FORMAT_MONO16), 6U);
  for (unsigned cols = 0; cols < 70; ++cols) {
    EXPECT_EQ(stride(cols, PIXEL_FORMAT_RGB16), 6 * cols);
    EXPECT_EQ(stride(cols, PIXEL_FORMAT_MONO12), (3 * cols + 1) / 2);
  }
}

TEST(TempImage, KeepsTheTileButNotTheColourProcessing) {
  Image source = Shaped(2, 2, 2, PIXEL_FORMAT_RAW8, GBRG);
  source.SetColorProcessing(RIGOROUS);
  Image temporary;
  EXPECT_EQ(Probe().TempImage(&source, &temporary, PIXEL_FORMAT_RGB8).GetType(), VORERROR_OK);
  EXPECT_EQ(temporary.GetBayerTileFormat(), GBRG);
  EXPECT_EQ(temporary.GetColorProcessing(), DEFAULT);
}

TEST(TempImage, RefusesNullsAndDoesNotLookAtTheTemporarysBuffer) {
  const Image source = Shaped(2, 2, 2, PIXEL_FORMAT_MONO8);
  const Image empty;
  LentImage temporary;
  for (const Error& error : {Probe().TempImage(nullptr, &temporary, PIXEL_FORMAT_RGB8),
                             Probe().TempImage(&empty, &temporary, PIXEL_FORMAT_RGB8),
                             Probe().TempImage(&source, nullptr, PIXEL_FORMAT_RGB8)}) {
    EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER);
    EXPECT_STREQ(error.GetMessage(), Reference::kNull);
  }
  EXPECT_TRUE(temporary.calls.empty());
  EXPECT_EQ(Probe().TempImage(&source, &temporary, PIXEL_FORMAT_RGB8).GetType(), VORERROR_OK);
  EXPECT_EQ(temporary.calls, (std::vector<std::string>{"SetDimensions"}));
}

TEST(TempImage, WrapsTheRefusalOfAShape) {
  const Image source = Shaped(2, 2, 2, PIXEL_FORMAT_MONO8);
  LentImage temporary;
  temporary.refuseShape = VORERROR_MEMORY_ALLOCATION_FAILED;
  const Error error = Probe().TempImage(&source, &temporary, PIXEL_FORMAT_RGB8);
  EXPECT_EQ(error.GetType(), VORERROR_FAILED);
  EXPECT_STREQ(error.GetMessage(), Reference::kRefusedShape);
  ASSERT_NE(error.GetCause(), nullptr);
  EXPECT_EQ(error.GetCause()->GetType(), VORERROR_MEMORY_ALLOCATION_FAILED);
}

TEST(Chain, Y16ToRgbuPassesThrough8BitGreyAnd8BitColour) {
  EXPECT_EQ(Converted("ConvertY16ToRGBU", LowFirst({0x12FF, 0xFEDC}), 2, 8),
            (Bytes{0x12, 0x12, 0x12, 255, 0xFE, 0xFE, 0xFE, 255}));
}

TEST(Chain, Yuv422ToY16FillsItsLargerTemporaryWith8BitColour) {
  const Bytes source{100, 50, 150, 200};
  const Bytes rgb = Converted("ConvertYUV422ToRGB", source, 2, 6);
  EXPECT_EQ(Converted("ConvertYUV422ToY16", source, 2, 4), Converted("ConvertRGBToY16", rgb, 2, 4));
}

TEST(Chain, RgbuToBgru16SwapsThenWidens) {
  EXPECT_EQ(Converted("ConvertRGBUToBGRU16", {1, 2, 3, 4}, 1, 8, Probe().IsLittleEndian()),
            Words({0x0303, 0x0202, 0x0101, 0x0404}));
}

/// Records the calls of which the pixel count is made, too.
class CountedImage : public LentImage {
 public:
  using LentImage::LentImage;
  unsigned int GetRows() const override {
    calls.emplace_back("GetRows");
    return LentImage::GetRows();
  }
  unsigned int GetCols() const override {
    calls.emplace_back("GetCols");
    return LentImage::GetCols();
  }
};

// It reads both buffers and the count before its temporary, as no other chain does.
TEST(Chain, Y8ToYuv411LooksAtItsImagesOnceMore) {
  using Calls = std::vector<std::string>;
  const auto callsOf = [](const char* routine) {
    Bytes in(4, 10);
    Bytes out(16, 0);
    const CountedImage source(1, 4, PIXEL_FORMAT_MONO8, in.data(), in.size());
    CountedImage destination(1, 4, PIXEL_FORMAT_411YUV8, out.data(), out.size());
    EXPECT_EQ(Probe().Call(routine, &source, &destination).GetType(), VORERROR_OK);
    return std::pair(source.calls, destination.calls);
  };
  const auto [source, destination] = callsOf("ConvertY8ToYUV411");
  auto [otherSource, otherDestination] = callsOf("ConvertY8ToYUV444");
  // After the null test.
  ASSERT_GE(otherSource.size(), 1U);
  const Calls more = {"GetData", "GetRows", "GetCols"};
  otherSource.insert(otherSource.begin() + 1, more.begin(), more.end());
  otherDestination.insert(otherDestination.begin(), "GetData");
  EXPECT_EQ(source, otherSource);
  EXPECT_EQ(destination, otherDestination);
  // The null test, these reads, the shaping of the temporary, the null test and loop of step 1.
  EXPECT_EQ(source, (Calls{"GetData", "GetData", "GetRows", "GetCols", "GetData", "GetDimensions",
                           "GetData", "GetData", "GetRows", "GetCols"}));
}

TEST(Chain, WithoutNullTestDropsEveryErrorInside) {
  EXPECT_EQ(Probe().ConvertBGR16ToBGRU(nullptr, nullptr).GetType(), VORERROR_OK);
  EXPECT_EQ(Probe().ConvertYUV411ToBGRU(nullptr, nullptr).GetType(), VORERROR_OK);
  EXPECT_EQ(Probe().ConvertBGR16ToY8(nullptr, nullptr).GetType(), VORERROR_INVALID_PARAMETER);
}

TEST(Chain, ChecksNoSizesOfTheDestination) {
  // Shaped for one pixel, on memory for four: the chain writes all four.
  Bytes source(16, 10);
  Bytes destination(16, 0);
  const LentImage from(1, 4, PIXEL_FORMAT_BGRU, source.data(), source.size());
  LentImage to(1, 1, PIXEL_FORMAT_RGB8, destination.data(), 3);
  EXPECT_EQ(Probe().ConvertBGRUToRGB(&from, &to).GetType(), VORERROR_OK);
  EXPECT_EQ(destination, (Bytes{10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 0, 0, 0, 0}));
}

// Calls back for every pair that the converter dispatches, with a source of 50 x 2 random pixels
// and a destination that has its shape and old bytes.
template <typename Check>
void ForEachPair(Check check) {
  for (const Probe::TargetMember& target : Probe::Targets()) {
    for (const Reference::FormatRow& row : Reference::Formats()) {
      const char* routine = Reference::Dispatch(row.value, target.target);
      if (routine == nullptr || *routine == 0) continue;
      SCOPED_TRACE(routine);
      constexpr unsigned kCols = 50;
      Image source = Shaped(2, kCols, Reference::RowBytes(kCols, row.bits),
                            static_cast<PixelFormat>(row.value), NONE);
      Fill(source.GetData(), source.GetDataSize(), Content::Random, row.value);
      Image destination =
          Shaped(2, kCols, Reference::RowBytes(kCols, Image::DetermineBitsPerPixel(target.target)),
                 target.target, NONE);
      std::memset(destination.GetData(), 0xEE, destination.GetDataSize());
      check(routine, target.target, source, destination);
    }
  }
}

bool HasTemporary(const char* routine) {
  const Reference::RouteRow* route = Reference::FindRoute(routine);
  return route != nullptr && route->temporary != Reference::UNSPECIFIED;
}

// A source of a class of its own might change under a conversion, so its chains make whole
// temporary images. Steps refuse one without a buffer, so the earlier frame stays.
TEST(Chain, GoesOnWithoutMemoryForItsTemporaryAndReturnsSuccess) {
  int chains = 0;
  ForEachPair([&](const char* routine, PixelFormat target, Image& source, Image& destination) {
    LentImage lent(source.GetRows(), source.GetCols(), source.GetPixelFormat(), source.GetData(),
                   source.GetDataSize());
    const Reference::Frame frame = FrameOf(source);
    Reference::Converter oracle;
    oracle.memoryLimit = 0;
    Reference::Frame expected = FrameOf(destination);
    const Reference::Outcome outcome = oracle.Convert(&frame, target, &expected);
    Error error;
    {
      const MemoryShortage shortage;
      error = Probe(true).Convert(&lent, target, &destination);
      EXPECT_EQ(shortage.Failures() > 0, HasTemporary(routine));
    }
    chains += HasTemporary(routine) ? 1 : 0;
    EXPECT_TRUE(SameResult(outcome, expected, error, destination));
  });
  RecordProperty("chains", chains);
}

// Between plain images a chain of kernels walks in pieces, and memory cannot run out.
TEST(Chain, OfKernelsTakesNoMemoryBetweenPlainImages) {
  int chains = 0;
  ForEachPair([&](const char* routine, PixelFormat target, Image& source, Image& destination) {
    const bool raw = std::string_view(routine).starts_with("ConvertRAW");
    if (raw || !HasTemporary(routine)) return;
    const Reference::Frame frame = FrameOf(source);
    Probe probe;  // of the host's byte order: only then a walk takes the place of a chain
    Reference::Converter oracle;
    oracle.littleEndian = probe.IsLittleEndian();
    Reference::Frame expected = FrameOf(destination);
    const Reference::Outcome outcome = oracle.Convert(&frame, target, &expected);
    Error error;
    {
      const MemoryShortage shortage;
      error = probe.Convert(&source, target, &destination);
      EXPECT_EQ(shortage.Failures(), 0);
    }
    ++chains;
    EXPECT_TRUE(SameResult(outcome, expected, error, destination));
  });
  EXPECT_GT(chains, 100);
}

// Two results pass on that the last step met an image without a buffer.
TEST(Chain, WithoutMemoryReportsOnlyWhereTheLastStepsResultIsReturned) {
  Bytes bytes(4096);
  const LentImage from(1, 100, PIXEL_FORMAT_RAW16, bytes.data(), bytes.size());
  LentImage to(1, 100, PIXEL_FORMAT_RGB8, bytes.data() + 1024, 1024);
  const MemoryShortage shortage;
  std::vector<std::string_view> failing;
  for (const Reference::RouteRow& route : Reference::Routes()) {
    if (route.temporary == Reference::UNSPECIFIED) continue;
    const Error error = Probe().Call(route.name, &from, &to);
    if (error != VORERROR_OK) {
      EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER);
      EXPECT_STREQ(error.GetMessage(), Reference::kNull);
      failing.push_back(route.name);
    }
  }
  EXPECT_EQ(failing, (std::vector<std::string_view>{"ConvertY8ToRGBU", "ConvertY8ToRGB16",
                                                    "ConvertRAW12ToRGB", "ConvertRAW12ToBGR",
                                                    "ConvertRAW16ToRGBU"}));
}

}  // namespace
}  // namespace Korvex2::Test
