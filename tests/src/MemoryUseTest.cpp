// What a conversion takes beyond its source and its destination, held to the figures of
// docs/reliability.md.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

#include "ImageConverterARMStub.h"
#include "PixelFormats.h"
#include "reference/Formats.h"
#include "routes/Routines.h"
#include "support/Comparison.h"
#include "support/HeapWatch.h"
#include "support/PaintedStack.h"
#include "support/Walk.h"
#include "vorbayer.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KORVEX2_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KORVEX2_TEST_SANITIZED 1
#endif
#endif

namespace Korvex2::Test {
namespace {

constexpr std::size_t kKiB = 1024;

// An error and what the heap rounds up.
constexpr std::size_t kSmall = 4 * kKiB;

class DerivedImage : public Image {};

struct Size {
  unsigned rows, cols;
  std::size_t Pixels() const { return std::size_t{rows} * cols; }
};

constexpr Size kSizes[] = {{2, 2}, {64, 640}, {360, 640}};

const ImageConverter& Converter() {
  static const ImageConverter converter;
  return converter;
}

template <typename Picture>
Picture Shaped(const Size& size, PixelFormat format) {
  Picture image;
  const unsigned stride = PackedStride(size.cols, Image::DetermineBitsPerPixel(format));
  EXPECT_EQ(image.SetDimensions(size.rows, size.cols, stride, format, RGGB).GetType(), VORERROR_OK);
  image.SetColorProcessing(NEAREST_NEIGHBOR);
  return image;
}

/// The most that a conversion into a destination of the right shape held besides.
template <typename Picture = Image>
std::size_t PeakOf(const Size& size, PixelFormat from, PixelFormat to) {
  const auto source = Shaped<Picture>(size, from);
  auto destination = Shaped<Picture>(size, to);
  const ImageConverter& converter = Converter();
  const HeapWatch watch;
  (void)converter.Convert(&source, to, &destination);
  EXPECT_EQ(watch.Held(), 0U) << Reference::FormatName(from) << " -> " << Reference::FormatName(to);
  return watch.Peak();
}

std::string Describe(const Size& size, PixelFormat from, PixelFormat to) {
  return std::string(Reference::FormatName(from)) + " -> " + Reference::FormatName(to) + ", " +
         std::to_string(size.rows) + " x " + std::to_string(size.cols);
}

// Without a mosaic: nothing, whatever the size.
TEST(MemoryUse, PairsWithoutAMosaicTakeNoMemory) {
  for (const PixelFormatInfo& from : PixelFormats()) {
    for (const PixelFormatInfo& to : PixelFormats()) {
      if (Reference::IsRaw(from.format) && !Reference::IsRaw(to.format)) continue;
      for (const Size& size : kSizes) {
        EXPECT_LE(PeakOf(size, from.format, to.format), kSmall)
            << Describe(size, from.format, to.format);
      }
    }
  }
}

TEST(MemoryUse, ADestinationIsTakenOnce) {
  const Size size = {1080, 1920};
  for (const PixelFormatInfo& to : PixelFormats()) {
    const auto source = Shaped<Image>(size, PIXEL_FORMAT_RGB8);
    Image destination;
    const ImageConverter& converter = Converter();
    const HeapWatch watch;
    (void)converter.Convert(&source, to.format, &destination);
    EXPECT_LE(watch.Peak(), PackedSize(to, size.Pixels()) + kSmall) << to.name;
    EXPECT_GE(watch.Held(), PackedSize(to, size.Pixels())) << to.name;
  }
}

// Bytes per pixel of the temporary images of a mosaic that becomes colour, grey or YUV.
// clang-format off
const std::map<PixelFormat, std::map<PixelFormat, std::size_t>> kTemporaries = {
    {PIXEL_FORMAT_RAW8,
     {{PIXEL_FORMAT_MONO8, 3}, {PIXEL_FORMAT_MONO12, 3}, {PIXEL_FORMAT_MONO16, 3},
      {PIXEL_FORMAT_RGB8, 0},  {PIXEL_FORMAT_RGBU, 3},   {PIXEL_FORMAT_RGB16, 3},
      {PIXEL_FORMAT_BGR, 0},   {PIXEL_FORMAT_BGRU, 3},   {PIXEL_FORMAT_BGR16, 3}, {PIXEL_FORMAT_BGRU16, 9},
      {PIXEL_FORMAT_411YUV8, 3}, {PIXEL_FORMAT_422YUV8, 3}, {PIXEL_FORMAT_444YUV8, 3}}},
    {PIXEL_FORMAT_RAW12,
     {{PIXEL_FORMAT_MONO8, 5}, {PIXEL_FORMAT_MONO12, 5}, {PIXEL_FORMAT_MONO16, 8},
      {PIXEL_FORMAT_RGB8, 2},  {PIXEL_FORMAT_RGBU, 5},   {PIXEL_FORMAT_RGB16, 2},
      {PIXEL_FORMAT_BGR, 2},   {PIXEL_FORMAT_BGRU, 5},   {PIXEL_FORMAT_BGR16, 2}, {PIXEL_FORMAT_BGRU16, 8},
      {PIXEL_FORMAT_411YUV8, 5}, {PIXEL_FORMAT_422YUV8, 5}, {PIXEL_FORMAT_444YUV8, 5}}},
    {PIXEL_FORMAT_RAW16,
     {{PIXEL_FORMAT_MONO8, 3}, {PIXEL_FORMAT_MONO12, 8}, {PIXEL_FORMAT_MONO16, 6},
      {PIXEL_FORMAT_RGB8, 0},  {PIXEL_FORMAT_RGBU, 3},   {PIXEL_FORMAT_RGB16, 0},
      {PIXEL_FORMAT_BGR, 0},   {PIXEL_FORMAT_BGRU, 3},   {PIXEL_FORMAT_BGR16, 0}, {PIXEL_FORMAT_BGRU16, 6},
      {PIXEL_FORMAT_411YUV8, 3}, {PIXEL_FORMAT_422YUV8, 3}, {PIXEL_FORMAT_444YUV8, 3}}},
};
// clang-format on

// What nearest neighbour takes in the engine for a picture of up to 640 columns.
constexpr std::size_t kNearestNeighbor = 64 * kKiB;

TEST(MemoryUse, MosaicsTakeTheirTemporaryImages) {
  for (const auto& [from, targets] : kTemporaries) {
    for (const auto& [to, bytesPerPixel] : targets) {
      for (const Size& size : kSizes) {
        const std::size_t bound = bytesPerPixel * size.Pixels() + kNearestNeighbor + kSmall;
        EXPECT_LE(PeakOf(size, from, to), bound) << Describe(size, from, to);
      }
    }
  }
}

/// Bytes of the temporary images that a route holds at once, made whole.
std::size_t TemporariesOf(Routine routine, std::size_t pixels) {
  if (routine == Routine::None || routine == Routine::SameFormat) return 0;
  const RoutineInfo& info = GetRoutine(routine);
  const std::size_t last =
      info.lastStep == Routine::None ? 0 : TemporariesOf(info.lastStep, pixels);
  if (info.kind != RoutineInfo::Kind::Chain) return last;
  return PackedSize(*FindPixelFormat(info.temporary), pixels) +
         std::max(TemporariesOf(info.firstStep, pixels), last);
}

// An image of a subclass may change under the conversion, so its chains run as the tables say.
TEST(MemoryUse, ImagesOfASubclassTakeTheTemporaryImagesOfTheirRoute) {
  const Size size = {64, 640};
  for (const PixelFormatInfo& from : PixelFormats()) {
    for (const PixelFormatInfo& to : PixelFormats()) {
      const std::size_t temporaries =
          TemporariesOf(FindRoute(from.format, to.format), size.Pixels());
      EXPECT_LE(PeakOf<DerivedImage>(size, from.format, to.format),
                temporaries + kNearestNeighbor + kSmall)
          << Describe(size, from.format, to.format);
    }
  }
}

struct EngineBound {
  BayerMethod method;
  std::size_t from8to8, from16to16;  // KiB, however large the picture
};

constexpr EngineBound kEngineBounds[] = {
    {BAYER_METHOD_NEAREST_NEIGHBOR, 96, 192},
    {BAYER_METHOD_EDGE_SENSING, 448, 896},
    {BAYER_METHOD_HQLINEAR, 128, 256},
    {BAYER_METHOD_DIRECTIONAL_FILTER, 1024, 1536},
    {BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER, 1024, 1536},
    {BAYER_METHOD_RIGOROUS, 3072, 3584},
};

std::size_t PeakOfEngine(BayerMethod method, int rows, int cols, int sampleBytes) {
  const std::size_t pixels = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
  const auto bytes = static_cast<std::size_t>(sampleBytes);
  const std::string mosaic(pixels * bytes, 'm');
  std::string picture(pixels * 3 * bytes, '\0');
  const bool deep = sampleBytes == 2;
  const HeapWatch watch;
  EXPECT_EQ(
      bayerToColor(deep ? BAYER_PIXEL_FORMAT_RAW16 : BAYER_PIXEL_FORMAT_RAW8,
                   reinterpret_cast<const unsigned char*>(mosaic.data()), rows, cols,
                   deep ? BAYER_PIXEL_FORMAT_RGB16 : BAYER_PIXEL_FORMAT_RGB8,
                   reinterpret_cast<unsigned char*>(picture.data()), method, BAYER_PATTERN_RGGB),
      beOK);
  EXPECT_EQ(watch.Held(), 0U);
  return watch.Peak();
}

TEST(MemoryUse, TheEngineStaysWithinItsBoundWhateverTheSize) {
  Walk walk;
  for (const EngineBound& bound : kEngineBounds) {
    std::size_t most8 = 0;
    std::size_t most16 = 0;
    for (const Size& size : {Size{2, 2}, Size{2, 100000}, Size{8, 8192}, Size{8, 8194},
                             Size{1500, 256}, Size{600, 520}, Size{130, 1984}}) {
      if (!walk.Takes()) continue;
      const auto rows = static_cast<int>(size.rows);
      const auto cols = static_cast<int>(size.cols);
      most8 = std::max(most8, PeakOfEngine(bound.method, rows, cols, 1));
      most16 = std::max(most16, PeakOfEngine(bound.method, rows, cols, 2));
    }
    EXPECT_LE(most8, bound.from8to8 * kKiB) << bound.method;
    EXPECT_LE(most16, bound.from16to16 * kKiB) << bound.method;
    RecordProperty("bytes_8_method_" + std::to_string(bound.method), std::to_string(most8));
    RecordProperty("bytes_16_method_" + std::to_string(bound.method), std::to_string(most16));
  }
}

TEST(MemoryUse, AnyConversionRunsOn64KiBOfStack) {
#if KORVEX2_TEST_SANITIZED
  GTEST_SKIP() << "sanitizers make other frames";
#endif
  (void)PeakOf({6, 8}, PIXEL_FORMAT_RAW8, PIXEL_FORMAT_RGB8);  // resolves what the linker left open
  std::size_t most = 0;
  const Size size = {6, 700};
  for (const PixelFormatInfo& from : PixelFormats()) {
    for (const int method :
         {NEAREST_NEIGHBOR, EDGE_SENSING, HQ_LINEAR, RIGOROUS, DIRECTIONAL_FILTER}) {
      if (method != NEAREST_NEIGHBOR && !Reference::IsRaw(from.format)) continue;
      for (const PixelFormatInfo& to : PixelFormats()) {
        auto source = Shaped<Image>(size, from.format);
        source.SetColorProcessing(static_cast<ColorProcessingAlgorithm>(method));
        Fill(source.GetData(), source.GetDataSize(), Content::Random, 3);
        Image destination;
        const std::size_t taken =
            StackTaken(0xA5, [&] { (void)Converter().Convert(&source, to.format, &destination); });
        EXPECT_LE(taken, 64 * kKiB) << Describe(size, from.format, to.format);
        most = std::max(most, taken);
      }
    }
  }
  EXPECT_GT(most, 6 * kKiB) << "a chain keeps its pieces there";
  RecordProperty("bytes", std::to_string(most));
}

}  // namespace
}  // namespace Korvex2::Test
