// What a conversion takes beyond its source and its destination, held to the figures of
// docs/reliability.md from both sides: a figure that is far too large says nothing.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "ImageConverterARMStub.h"
#include "PixelFormats.h"
#include "Routes.h"
#include "reference/Formats.h"
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

constexpr Size kSizes[] = {{2, 2}, {64, 640}, {180, 640}};

// --- The figures of the page.

struct EngineShare {
  BayerMethod method;
  ColorProcessingAlgorithm algorithm;  // DEFAULT: the converter has none for it
  std::size_t from8to8, otherwise;     // KiB, however large the picture
  Size block;                          // the smallest picture that takes the most
};

constexpr EngineShare kEngineShares[] = {
    {BAYER_METHOD_NEAREST_NEIGHBOR, NEAREST_NEIGHBOR, 100, 200, {2, 8192}},
    {BAYER_METHOD_EDGE_SENSING, EDGE_SENSING, 440, 860, {8, 8192}},
    {BAYER_METHOD_HQLINEAR, HQ_LINEAR, 132, 264, {2, 8192}},
    {BAYER_METHOD_DIRECTIONAL_FILTER, DIRECTIONAL_FILTER, 800, 1350, {256, 512}},
    {BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER, DEFAULT, 750, 1300, {128, 992}},
    {BAYER_METHOD_RIGOROUS, RIGOROUS, 2700, 3300, {512, 256}},
};

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

/// Bytes of the temporary images that a route holds at once, made whole.
std::size_t TemporariesOf(const RoutineInfo* routine, std::size_t pixels) {
  if (routine == nullptr) return 0;
  const std::size_t last = TemporariesOf(routine->lastStep, pixels);
  if (routine->kind != RoutineInfo::Kind::Chain) return last;
  return PackedSize(*FindPixelFormat(routine->temporary), pixels) +
         std::max(TemporariesOf(routine->firstStep, pixels), last);
}

std::size_t OutermostTemporaryOf(const RoutineInfo* routine, std::size_t pixels) {
  if (routine == nullptr) return 0;
  return routine->kind == RoutineInfo::Kind::Chain
             ? PackedSize(*FindPixelFormat(routine->temporary), pixels)
             : OutermostTemporaryOf(routine->lastStep, pixels);
}

// --- Conversions, measured.

struct Conversion {
  Size size;
  PixelFormat from = UNSPECIFIED_PIXEL_FORMAT;
  PixelFormat to = UNSPECIFIED_PIXEL_FORMAT;
  ColorProcessingAlgorithm method = NEAREST_NEIGHBOR;
  unsigned padding = 0;  // of the source's rows

  bool IsRefused() const { return from != to && FindRoute(from, to) == nullptr; }
  bool Demosaics() const { return Reference::IsRaw(from) && !Reference::IsRaw(to) && !IsRefused(); }
};

std::string Describe(const Conversion& c) {
  return std::string(Reference::FormatName(c.from)) + " -> " + Reference::FormatName(c.to) + ", " +
         std::to_string(c.size.rows) + " x " + std::to_string(c.size.cols) + " + " +
         std::to_string(c.padding) + ", method " + std::to_string(c.method);
}

/// The method of each mosaic: a packed one has no choice of its own.
class ProcessDefault {
 public:
  explicit ProcessDefault(ColorProcessingAlgorithm method) {
    (void)Image::SetDefaultColorProcessing(method);
  }
  ~ProcessDefault() { (void)Image::SetDefaultColorProcessing(NEAREST_NEIGHBOR); }
  ProcessDefault(const ProcessDefault&) = delete;
  ProcessDefault& operator=(const ProcessDefault&) = delete;
};

void Shape(const Size& size, PixelFormat format, unsigned padding, Image& image) {
  const unsigned stride = PackedStride(size.cols, Image::DetermineBitsPerPixel(format)) + padding;
  ASSERT_EQ(image.SetDimensions(size.rows, size.cols, stride, format, RGGB).GetType(), VORERROR_OK);
}

ImageConverter& Converter() {
  static ImageConverter converter;
  return converter;
}

struct Taken {
  std::size_t peak, kept;  // bytes, at most and afterwards
};

Taken TakenBy(const Conversion& c, Image& source, Image& destination) {
  Shape(c.size, c.from, c.padding, source);
  (void)source.SetColorProcessing(c.method);
  const ProcessDefault method(c.method);
  ImageConverter& converter = Converter();
  const HeapWatch watch;
  EXPECT_EQ(converter.Convert(&source, c.to, &destination).GetType(),
            c.IsRefused() ? VORERROR_INVALID_PARAMETER : VORERROR_OK)
      << Describe(c);
  return {watch.Peak(), watch.Held()};
}

/// The most that a conversion into a destination that need not grow held besides.
std::size_t PeakBetween(const Conversion& c, Image& source, Image& destination) {
  Shape(c.size, c.to, c.from == c.to ? c.padding : 0, destination);
  const Taken taken = TakenBy(c, source, destination);
  EXPECT_EQ(taken.kept, 0U) << Describe(c);
  return taken.peak;
}

template <typename Picture = Image>
std::size_t PeakOf(const Conversion& c) {
  Picture source;
  Picture destination;
  return PeakBetween(c, source, destination);
}

/// Both images on the caller's memory, so many bytes from each other.
std::size_t PeakOnLentMemory(const Conversion& c, std::size_t apart) {
  const std::size_t most = c.size.Pixels() * 8 + c.size.rows * c.padding + 64;
  std::vector<unsigned char> memory(apart + most);
  Image source(memory.data(), most);
  Image destination(memory.data() + apart, most);
  return PeakBetween(c, source, destination);
}

/// Of images that are apart: buffers of their own, and the caller's with padded rows.
std::array<std::size_t, 2> PeaksApart(Conversion c) {
  const std::size_t own = PeakOf(c);
  c.padding = 13;
  return {own, PeakOnLentMemory(c, std::size_t{4} << 20)};
}

template <typename Check>
void ForEachPair(Check check) {
  for (const PixelFormatInfo& from : PixelFormats()) {
    for (const PixelFormatInfo& to : PixelFormats()) {
      check(Conversion{.size = {64, 640}, .from = from.format, .to = to.format});
    }
  }
}

template <typename Check>
void ForEachMethod(Conversion c, Check check) {
  for (const EngineShare& share : kEngineShares) {
    if (share.algorithm == DEFAULT) continue;
    c.method = share.algorithm;
    check(c, (c.from == PIXEL_FORMAT_RAW8 ? share.from8to8 : share.otherwise) * kKiB);
  }
}

TEST(MemoryUse, PairsWithoutAMosaicTakeNoMemory) {
  ForEachPair([](Conversion c) {
    if (c.Demosaics()) return;
    for (const Size& size : kSizes) {
      c.size = size;
      for (const std::size_t peak : PeaksApart(c)) {
        if (c.IsRefused()) {
          EXPECT_GT(peak, 0U) << Describe(c) << ": has no words";
          EXPECT_LE(peak, kSmall) << Describe(c);
        } else {
          EXPECT_EQ(peak, 0U) << Describe(c);
        }
      }
    }
  });
}

TEST(MemoryUse, MosaicsTakeTheirTemporaryImagesAndTheEnginesShare) {
  Walk walk;
  ForEachPair([&](Conversion c) {
    if (!c.Demosaics() || !walk.Takes()) return;
    for (const Size& size : kSizes) {
      c.size = size;
      const std::size_t temporaries = kTemporaries.at(c.from).at(c.to) * size.Pixels();
      ForEachMethod(c, [&](const Conversion& each, std::size_t share) {
        for (const std::size_t peak : PeaksApart(each)) {
          EXPECT_GT(peak, temporaries) << Describe(each);
          EXPECT_LE(peak, temporaries + share) << Describe(each);
        }
      });
    }
  });
}

/// Between the outermost temporary image of the route and all of them together.
void ExpectTheTemporaryImages(const Conversion& c, std::size_t peak, std::size_t share) {
  const RoutineInfo* routine = FindRoute(c.from, c.to);
  const std::size_t outermost = OutermostTemporaryOf(routine, c.size.Pixels());
  const std::size_t all = TemporariesOf(routine, c.size.Pixels());
  EXPECT_GE(peak, outermost) << Describe(c);
  EXPECT_LE(peak, all + (all > 0 ? kSmall : 0) + (c.Demosaics() ? share : 0)) << Describe(c);
}

// An image of a subclass may change under the conversion, so its chains run as the tables say.
TEST(MemoryUse, ImagesOfASubclassTakeTheTemporaryImagesOfTheirRoute) {
  ForEachPair([](const Conversion& c) {
    if (c.IsRefused()) return;
    ForEachMethod(c, [](const Conversion& each, std::size_t share) {
      ExpectTheTemporaryImages(each, PeakOf<DerivedImage>(each), share);
    });
  });
}

TEST(MemoryUse, ImagesThatOverlapTakeTheTemporaryImagesOfTheirRoute) {
  ForEachPair([](const Conversion& c) {
    if (c.IsRefused()) return;
    ForEachMethod(c, [](const Conversion& each, std::size_t share) {
      ExpectTheTemporaryImages(each, PeakOnLentMemory(each, 16), share);
    });
  });
}

TEST(MemoryUse, ADestinationIsTakenOnce) {
  ForEachPair([](const Conversion& c) {
    if (c.IsRefused() || c.Demosaics()) return;
    Image source;
    Image destination;
    const Taken taken = TakenBy(c, source, destination);
    EXPECT_GE(taken.kept, PackedSize(*FindPixelFormat(c.to), c.size.Pixels())) << Describe(c);
    EXPECT_EQ(taken.peak, taken.kept) << Describe(c);
  });
}

TEST(MemoryUse, ADestinationThatGrowsGivesItsFormerBufferBackOnceItHasTheNewOne) {
  ForEachPair([](const Conversion& c) {
    if (c.IsRefused() || c.Demosaics()) return;
    Image source;
    Image destination;
    Shape({32, 640}, c.to, 0, destination);
    const std::size_t former = PackedSize(*FindPixelFormat(c.to), Size{32, 640}.Pixels());
    const Taken taken = TakenBy(c, source, destination);
    EXPECT_NEAR(static_cast<double>(taken.peak), static_cast<double>(taken.kept + former), kSmall)
        << Describe(c);
  });
}

// A copy takes the stride along, after the destination was shaped without padding.
TEST(MemoryUse, ACopyOfPaddedRowsTakesAPackedBufferBesides) {
  ForEachPair([](Conversion c) {
    if (c.from != c.to) return;
    c.padding = 13;
    Image source;
    Image destination;
    const std::size_t packed = PackedSize(*FindPixelFormat(c.to), c.size.Pixels());
    const Taken taken = TakenBy(c, source, destination);
    EXPECT_GE(taken.kept, packed + c.size.rows * c.padding) << Describe(c);
    EXPECT_NEAR(static_cast<double>(taken.peak), static_cast<double>(taken.kept + packed), kSmall)
        << Describe(c);
  });
}

// --- The engine by itself.

bool HasWords(BayerPixelFormat format) {
  return format == BAYER_PIXEL_FORMAT_BGR16 || format == BAYER_PIXEL_FORMAT_BGRU16 ||
         format == BAYER_PIXEL_FORMAT_RGB16 || format == BAYER_PIXEL_FORMAT_RGBU16;
}

std::size_t PeakOfEngine(BayerMethod method, const Size& size, BayerPixelFormat input,
                         BayerPixelFormat output) {
  const std::vector<unsigned char> mosaic(size.Pixels() * 2, 'm');
  std::vector<unsigned char> picture(size.Pixels() * 8);
  const HeapWatch watch;
  EXPECT_EQ(
      bayerToColor(input, mosaic.data(), static_cast<int>(size.rows), static_cast<int>(size.cols),
                   output, picture.data(), method, BAYER_PATTERN_RGGB),
      beOK);
  EXPECT_EQ(watch.Held(), 0U);
  return watch.Peak();
}

struct Most {
  std::size_t from8to8 = 0;
  std::size_t otherwise = 0;
};

Most MostOfAllFormats(BayerMethod method, const Size& size) {
  Most most;
  for (const BayerPixelFormat input : {BAYER_PIXEL_FORMAT_RAW8, BAYER_PIXEL_FORMAT_RAW16}) {
    for (int format = BAYER_PIXEL_FORMAT_BGR8; format <= BAYER_PIXEL_FORMAT_RGBU16; ++format) {
      const auto output = static_cast<BayerPixelFormat>(format);
      const bool narrow = input == BAYER_PIXEL_FORMAT_RAW8 && !HasWords(output);
      std::size_t& figure = narrow ? most.from8to8 : most.otherwise;
      figure = std::max(figure, PeakOfEngine(method, size, input, output));
    }
  }
  return most;
}

TEST(MemoryUse, TheEngineStaysWithinItsShareWhateverTheSize) {
  for (const EngineShare& share : kEngineShares) {
    SCOPED_TRACE(share.method);
    const Size& block = share.block;
    const Most most = MostOfAllFormats(share.method, block);
    const std::string suffix = "_method_" + std::to_string(share.method);
    RecordProperty("bytes_8" + suffix, std::to_string(most.from8to8));
    RecordProperty("bytes_16" + suffix, std::to_string(most.otherwise));
    EXPECT_LE(most.from8to8, share.from8to8 * kKiB);
    EXPECT_LE(most.otherwise, share.otherwise * kKiB);
    EXPECT_GT(most.from8to8, share.from8to8 * kKiB * 9 / 10);
    EXPECT_GT(most.otherwise, share.otherwise * kKiB * 9 / 10);
    for (const Size& size :
         {Size{2, 2}, Size{2, 20000}, Size{1500, 16}, Size{block.rows + 2, block.cols + 2}}) {
      SCOPED_TRACE(std::to_string(size.rows) + " x " + std::to_string(size.cols));
      EXPECT_LE(PeakOfEngine(share.method, size, BAYER_PIXEL_FORMAT_RAW8, BAYER_PIXEL_FORMAT_RGBU8),
                most.from8to8);
      EXPECT_LE(
          PeakOfEngine(share.method, size, BAYER_PIXEL_FORMAT_RAW16, BAYER_PIXEL_FORMAT_RGBU16),
          most.otherwise);
    }
  }
}

// --- Stack.

constexpr std::size_t kMostStack = 64 * kKiB;
constexpr Size kLongRow = {6, 700};

template <typename Picture>
std::size_t StackOf(Conversion c) {
  c.size = kLongRow;
  Picture source;
  Picture destination;
  Shape(c.size, c.from, 0, source);
  (void)source.SetColorProcessing(c.method);
  const ProcessDefault method(c.method);
  Fill(source.GetData(), source.GetDataSize(), Content::Random, 3);
  ImageConverter& converter = Converter();
  return StackTaken(0xA5, [&] { (void)converter.Convert(&source, c.to, &destination); });
}

std::size_t StackOfEngine(BayerMethod method, BayerPixelFormat input, BayerPixelFormat output) {
  const Size size = kLongRow;
  const std::vector<unsigned char> mosaic(size.Pixels() * 2, 'm');
  std::vector<unsigned char> picture(size.Pixels() * 8);
  return StackTaken(0xA5, [&] {
    (void)bayerToColor(input, mosaic.data(), static_cast<int>(size.rows),
                       static_cast<int>(size.cols), output, picture.data(), method,
                       BAYER_PATTERN_RGGB);
  });
}

TEST(MemoryUse, AnyConversionRunsOn64KiBOfStack) {
#if KORVEX2_TEST_SANITIZED
  GTEST_SKIP() << "sanitizers make other frames";
#endif
  // Resolves what the linker left open.
  (void)PeakOf({.size = {6, 8}, .from = PIXEL_FORMAT_RAW8, .to = PIXEL_FORMAT_RGB8});
  std::size_t most = 0;
  ForEachPair([&most](const Conversion& c) {
    ForEachMethod(c, [&most](const Conversion& each, std::size_t) {
      if (each.method != NEAREST_NEIGHBOR && !each.Demosaics()) return;
      for (const std::size_t taken : {StackOf<Image>(each), StackOf<DerivedImage>(each)}) {
        EXPECT_LE(taken, kMostStack) << Describe(each);
        most = std::max(most, taken);
      }
    });
  });
  EXPECT_GT(most, 6 * kKiB) << "a chain keeps its pieces there";
  RecordProperty("bytes", std::to_string(most));

  std::size_t mostOfEngine = 0;
  for (const EngineShare& share : kEngineShares) {
    for (const BayerPixelFormat input : {BAYER_PIXEL_FORMAT_RAW8, BAYER_PIXEL_FORMAT_RAW16}) {
      for (const BayerPixelFormat output : {BAYER_PIXEL_FORMAT_BGR8, BAYER_PIXEL_FORMAT_BGRU16}) {
        const std::size_t taken = StackOfEngine(share.method, input, output);
        EXPECT_GT(taken, 0U) << share.method;
        EXPECT_LE(taken, kMostStack) << share.method;
        mostOfEngine = std::max(mostOfEngine, taken);
      }
    }
  }
  RecordProperty("bytes_engine", std::to_string(mostOfEngine));
}

}  // namespace
}  // namespace Korvex2::Test
