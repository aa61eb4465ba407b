#include "Image.h"
#include "ImageConverterARMStub.h"
#include "PixelFormats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "reference/Formats.h"
#include "support/Allocation.h"

namespace Korvex2::Test {
namespace {

static_assert(PIXEL_FORMAT_RGB == PIXEL_FORMAT_RGB8);
static_assert(sizeof(PixelFormat) == 4 && std::is_unsigned_v<std::underlying_type_t<PixelFormat>>);
static_assert(PIXEL_FORMAT_422YUV8_JPEG == 0x40000001 && NUM_PIXEL_FORMATS == 20 &&
              UNSPECIFIED_PIXEL_FORMAT == 0);
static_assert(NONE == 0 && RGGB == 1 && GRBG == 2 && GBRG == 3 && BGGR == 4);
static_assert(sizeof(BayerTileFormat) == 4 && sizeof(ColorProcessingAlgorithm) == 4);
static_assert(DEFAULT == 0 && NO_COLOR_PROCESSING == 1 && NEAREST_NEIGHBOR == 2 &&
              EDGE_SENSING == 3 && HQ_LINEAR == 4 && RIGOROUS == 5 && IPP == 6 &&
              DIRECTIONAL_FILTER == 7 && WEIGHTED_DIRECTIONAL_FILTER == 8);
static_assert(std::is_nothrow_default_constructible_v<Image> &&
              std::is_nothrow_copy_constructible_v<Image> &&
              std::is_nothrow_move_constructible_v<Image> &&
              std::is_nothrow_copy_assignable_v<Image> &&
              std::is_nothrow_move_assignable_v<Image> && std::has_virtual_destructor_v<Image>);

bool AllBytesAre(const unsigned char* bytes, std::size_t from, std::size_t to, int value) {
  for (std::size_t i = from; i < to; ++i) {
    if (bytes[i] != value) return false;
  }
  return true;
}

/// A filled image of its own.
Image Filled(unsigned rows, unsigned cols, unsigned stride, PixelFormat format, int value) {
  Image image;
  EXPECT_EQ(image.SetDimensions(rows, cols, stride, format, GRBG).GetType(), VORERROR_OK);
  std::memset(image.GetData(), value, image.GetDataSize());
  return image;
}

struct ShapeOf {
  unsigned int rows = 0, cols = 0, stride = 0;
  PixelFormat format = UNSPECIFIED_PIXEL_FORMAT;
  BayerTileFormat tile = NONE;
  const unsigned char* data = nullptr;

  explicit ShapeOf(const Image& image) : data(image.GetData()) {
    image.GetDimensions(&rows, &cols, &stride, &format, &tile);
  }
  bool operator==(const ShapeOf&) const = default;
};

TEST(Image, StartsWithoutBufferAndShape) {
  const Image image;
  EXPECT_EQ(image.GetData(), nullptr);
  EXPECT_EQ(image.GetRows(), 0U);
  EXPECT_EQ(image.GetCols(), 0U);
  EXPECT_EQ(image.GetStride(), 0U);
  EXPECT_EQ(image.GetDataSize(), 0U);
  EXPECT_EQ(image.GetBitsPerPixel(), 0U);
  EXPECT_EQ(image.GetPixelFormat(), UNSPECIFIED_PIXEL_FORMAT);
  EXPECT_EQ(image.GetBayerTileFormat(), NONE);
  EXPECT_EQ(image.GetColorProcessing(), DEFAULT);
}

TEST(Image, KnowsTheBitsOfEveryFormat) {
  for (const Reference::FormatRow& row : Reference::Formats()) {
    EXPECT_EQ(Image::DetermineBitsPerPixel(static_cast<PixelFormat>(row.value)), row.bits)
        << row.name;
  }
  EXPECT_EQ(Image::DetermineBitsPerPixel(PIXEL_FORMAT_S_MONO16), 16U);
  EXPECT_EQ(Image::DetermineBitsPerPixel(PIXEL_FORMAT_S_RGB16), 48U);
  EXPECT_EQ(Image::DetermineBitsPerPixel(PIXEL_FORMAT_422YUV8_JPEG), 16U);
  EXPECT_EQ(Image::DetermineBitsPerPixel(UNSPECIFIED_PIXEL_FORMAT), 0U);
  EXPECT_EQ(Image::DetermineBitsPerPixel(static_cast<PixelFormat>(0x12345)), 0U);
}

TEST(Image, RecordsItsShape) {
  Image image;
  EXPECT_EQ(image.SetDimensions(3, 5, 100, PIXEL_FORMAT_BGRU16, GBRG).GetType(), VORERROR_OK);
  EXPECT_EQ(image.GetRows(), 3U);
  EXPECT_EQ(image.GetCols(), 5U);
  EXPECT_EQ(image.GetStride(), 100U);
  EXPECT_EQ(image.GetDataSize(), 300U);
  EXPECT_EQ(image.GetBitsPerPixel(), 64U);
  EXPECT_EQ(image.GetPixelFormat(), PIXEL_FORMAT_BGRU16);
  EXPECT_EQ(image.GetBayerTileFormat(), GBRG);
}

TEST(Image, GetDimensionsSkipsNullOutputs) {
  const Image image = Filled(3, 5, 7, PIXEL_FORMAT_MONO8, 0);
  image.GetDimensions(nullptr, nullptr, nullptr, nullptr, nullptr);
  unsigned int stride = 0;
  image.GetDimensions(nullptr, nullptr, &stride, nullptr, nullptr);
  EXPECT_EQ(stride, 7U);
}

TEST(Image, HoldsEveryByteThatAKernelMayTouchAndAllAreZero) {
  for (const Reference::FormatRow& row : Reference::Formats()) {
    for (unsigned rows = 0; rows <= 5; ++rows) {
      for (unsigned cols = 0; cols <= 9; ++cols) {
        for (const unsigned stride : {0U, Reference::RowBytes(cols, row.bits), 100U}) {
          Image image;
          ASSERT_EQ(
              image.SetDimensions(rows, cols, stride, static_cast<PixelFormat>(row.value), NONE)
                  .GetType(),
              VORERROR_OK);
          ASSERT_NE(image.GetData(), nullptr) << row.name << ' ' << rows << ' ' << cols;
          const auto size =
              static_cast<std::size_t>(Reference::BufferBytes(rows, cols, stride, row.value));
          ASSERT_TRUE(AllBytesAre(image.GetData(), 0, size, 0)) << row.name;
          std::memset(image.GetData(), 0xA5, size);  // a sanitizer sees what lies outside
        }
      }
    }
  }
}

TEST(Image, KeepsALargeEnoughBufferAndClearsItForANewShape) {
  Image image = Filled(8, 8, 24, PIXEL_FORMAT_RGB8, 0xA5);
  const unsigned char* const data = image.GetData();
  ASSERT_EQ(image.SetDimensions(3, 5, 5, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
  EXPECT_EQ(image.GetData(), data);
  EXPECT_TRUE(AllBytesAre(data, 0, 16, 0));
  ASSERT_EQ(image.SetDimensions(8, 8, 24, PIXEL_FORMAT_RGB8, NONE).GetType(), VORERROR_OK);
  EXPECT_EQ(image.GetData(), data);
  EXPECT_TRUE(AllBytesAre(data, 0, 192, 0));
}

TEST(Image, KeepsThePixelsOfAnUnchangedShapeAndClearsWhatLiesPastThem) {
  Image image = Filled(1, 3, 9, PIXEL_FORMAT_RGB8, 0xA5);
  std::memset(image.GetData(), 0xA5, 12);  // the fourth pixel, which 4:1:1 reaches
  ASSERT_EQ(image.SetDimensions(1, 3, 9, PIXEL_FORMAT_RGB8, BGGR).GetType(), VORERROR_OK);
  EXPECT_TRUE(AllBytesAre(image.GetData(), 0, 9, 0xA5));
  EXPECT_TRUE(AllBytesAre(image.GetData(), 9, 12, 0));
  EXPECT_EQ(image.GetBayerTileFormat(), BGGR);
}

TEST(Image, KeepsTheColourProcessingWhenReshaped) {
  Image image;
  EXPECT_EQ(image.SetColorProcessing(RIGOROUS).GetType(), VORERROR_OK);
  image.SetDimensions(2, 2, 2, PIXEL_FORMAT_RAW8, RGGB);
  EXPECT_EQ(image.GetColorProcessing(), RIGOROUS);
}

TEST(Image, RefusesShapesOverFourGigabytesAndStaysAsItWas) {
  struct Large {
    unsigned rows, cols, stride;
    PixelFormat format;
  };
  const Large larges[] = {
      {2, 1, 0x80000000, PIXEL_FORMAT_MONO8},  // rows x stride is 4 GiB
      {65536, 65536, 1, PIXEL_FORMAT_MONO8},   // the packed pixels are
      {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, PIXEL_FORMAT_BGRU16},
      {65536, 65536, 0, PIXEL_FORMAT_BGRU16},
      {1, 0xFFFFFFFF, 8, PIXEL_FORMAT_MONO16},
  };
  Image image = Filled(2, 3, 3, PIXEL_FORMAT_MONO8, 0x5A);
  const ShapeOf before(image);
  for (const Large& large : larges) {
    const Error error =
        image.SetDimensions(large.rows, large.cols, large.stride, large.format, RGGB);
    EXPECT_EQ(error.GetType(), VORERROR_INVALID_PARAMETER);
    EXPECT_STRNE(error.GetMessage(), "");
    EXPECT_EQ(ShapeOf(image), before);
    EXPECT_TRUE(AllBytesAre(image.GetData(), 0, 6, 0x5A));
  }
}

TEST(Image, RefusesAShapeForWhichThereIsNoMemoryAndStaysAsItWas) {
  Image image = Filled(2, 3, 3, PIXEL_FORMAT_MONO8, 0x5A);
  const ShapeOf before(image);
  const MemoryShortage shortage;
  Error error = image.SetDimensions(100, 100, 300, PIXEL_FORMAT_RGB8, RGGB);
  EXPECT_EQ(error.GetType(), VORERROR_MEMORY_ALLOCATION_FAILED);
  EXPECT_STRNE(error.GetMessage(), "");
  EXPECT_EQ(ShapeOf(image), before);
  EXPECT_TRUE(AllBytesAre(image.GetData(), 0, 6, 0x5A));
  // The largest shape that is not refused for its size.
  error = image.SetDimensions(1, 8, 0xFFFFFFFF, PIXEL_FORMAT_MONO8, NONE);
  EXPECT_EQ(error.GetType(), VORERROR_MEMORY_ALLOCATION_FAILED);
  EXPECT_EQ(ShapeOf(image), before);
}

TEST(Image, NeedsNoMemoryWhereTheBufferIsLargeEnough) {
  Image image = Filled(10, 10, 30, PIXEL_FORMAT_RGB8, 1);
  const MemoryShortage shortage;
  EXPECT_EQ(image.SetDimensions(10, 10, 10, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
}

TEST(Image, HasABufferEvenWithoutPixels) {
  for (const auto& [rows, cols] : {std::pair{0U, 0U}, {0U, 9U}, {9U, 0U}}) {
    Image image;
    EXPECT_EQ(image.SetDimensions(rows, cols, 0, PIXEL_FORMAT_RGB8, NONE).GetType(), VORERROR_OK);
    EXPECT_NE(image.GetData(), nullptr);
    EXPECT_EQ(image.GetDataSize(), 0U);
  }
}

TEST(LentBuffer, IsShapedInPlaceAndNotWritten) {
  std::vector<unsigned char> bytes(16, 0x77);
  Image image(bytes.data(), bytes.size());
  EXPECT_EQ(image.GetData(), nullptr);  // no shape yet
  for (const auto& [cols, stride, format] : {std::tuple{3U, 9U, PIXEL_FORMAT_RGB8},
                                             {3U, 16U, PIXEL_FORMAT_MONO8},
                                             {1U, 2U, PIXEL_FORMAT_MONO12}}) {
    ASSERT_EQ(image.SetDimensions(1, cols, stride, format, NONE).GetType(), VORERROR_OK);
    EXPECT_EQ(image.GetData(), bytes.data());
    EXPECT_TRUE(AllBytesAre(bytes.data(), 0, 16, 0x77));
  }
}

TEST(LentBuffer, TakesAnyShapeWhoseRowsFitAndNoOther) {
  struct Shape {
    unsigned rows, cols, stride;
    PixelFormat format;
  };
  const Shape shapes[] = {
      {3, 3, 3, PIXEL_FORMAT_MONO8},
      {1, 1, 3, PIXEL_FORMAT_RGB8},
      {1, 1, 2, PIXEL_FORMAT_MONO12},
      {3, 3, 5, PIXEL_FORMAT_411YUV8},
      {1, 3, 6, PIXEL_FORMAT_422YUV8},
      {1, 1, 50, PIXEL_FORMAT_MONO8},
      {1, 4, 8, PIXEL_FORMAT_BGRU16},  // a stride that falls short of the pixels
      {3, 5, 10, PIXEL_FORMAT_422YUV8_JPEG},
      {5, 1, 2, PIXEL_FORMAT_MONO12},  // rows that end within a byte: more than the packed pixels
  };
  for (const Shape& shape : shapes) {
    const std::size_t exact = std::size_t{shape.rows} * shape.stride;
    std::vector<unsigned char> bytes(exact, 0x11);
    Image fits(bytes.data(), exact);
    EXPECT_EQ(
        fits.SetDimensions(shape.rows, shape.cols, shape.stride, shape.format, NONE).GetType(),
        VORERROR_OK)
        << exact;
    EXPECT_EQ(fits.GetDataSize(), exact);
    Image small(bytes.data(), exact - 1);
    const ShapeOf before(small);
    const Error error =
        small.SetDimensions(shape.rows, shape.cols, shape.stride, shape.format, NONE);
    EXPECT_EQ(error.GetType(), VORERROR_BUFFER_TOO_SMALL) << exact;
    EXPECT_STRNE(error.GetMessage(), "");
    EXPECT_EQ(ShapeOf(small), before);
  }
}

TEST(LentBuffer, OfNoBytesTakesAShapeOfNone) {
  unsigned char nothing = 0x11;
  Image image(&nothing, 0);
  EXPECT_EQ(image.SetDimensions(0, 7, 21, PIXEL_FORMAT_RGB8, NONE).GetType(), VORERROR_OK);
  EXPECT_EQ(image.GetData(), &nothing);
  EXPECT_EQ(image.SetDimensions(1, 1, 3, PIXEL_FORMAT_RGB8, NONE).GetType(),
            VORERROR_BUFFER_TOO_SMALL);
}

TEST(LentBuffer, NeverAllocatesAndIsNeverFreed) {
  auto bytes = std::make_unique<unsigned char[]>(1000);
  {
    const std::size_t before = AlignedAllocations();
    Image image(bytes.get(), 1000);
    image.SetDimensions(10, 10, 30, PIXEL_FORMAT_RGB8, NONE);
    image.SetDimensions(10, 10, 10, PIXEL_FORMAT_MONO8, NONE);
    image.SetDimensions(100, 100, 100, PIXEL_FORMAT_MONO8, NONE);
    EXPECT_EQ(AlignedAllocations(), before);
    EXPECT_EQ(image.GetData(), bytes.get());
  }
  bytes[999] = 1;
}

TEST(LentBuffer, OfNullMakesAnImageThatOwns) {
  Image image(nullptr, 1000);
  EXPECT_EQ(image.SetDimensions(50, 50, 50, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
  EXPECT_NE(image.GetData(), nullptr);
}

TEST(Image, CopiesAreDeep) {
  Image image = Filled(2, 3, 4, PIXEL_FORMAT_RAW8, 0x42);
  image.SetColorProcessing(HQ_LINEAR);
  const Image copy(image);
  Image assigned;
  assigned = image;
  image.GetData()[0] = 0;
  for (const Image* other : {&copy, static_cast<const Image*>(&assigned)}) {
    EXPECT_NE(other->GetData(), image.GetData());
    EXPECT_TRUE(AllBytesAre(other->GetData(), 0, 8, 0x42));
    EXPECT_EQ(other->GetColorProcessing(), HQ_LINEAR);
    EXPECT_EQ(other->GetStride(), 4U);
    EXPECT_EQ(other->GetBayerTileFormat(), GRBG);
    EXPECT_EQ(other->GetPixelFormat(), PIXEL_FORMAT_RAW8);
  }
}

TEST(Image, CopyOfALentBufferOwnsItsBytes) {
  std::vector<unsigned char> bytes(8, 9);
  Image lent(bytes.data(), bytes.size());
  ASSERT_EQ(lent.SetDimensions(2, 2, 2, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
  Image copy(lent);
  EXPECT_NE(copy.GetData(), lent.GetData());
  EXPECT_EQ(copy.SetDimensions(20, 20, 20, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
}

TEST(Image, CopyOfNothingIsNothing) {
  const Image nothing;
  const Image copy(nothing);
  EXPECT_EQ(copy.GetData(), nullptr);
  Image assigned = Filled(2, 2, 2, PIXEL_FORMAT_MONO8, 1);
  assigned = nothing;
  EXPECT_EQ(assigned.GetRows(), 0U);
}

TEST(Image, CopyWithoutMemoryHasNoBuffer) {
  const Image image = Filled(20, 30, 30, PIXEL_FORMAT_MONO8, 1);
  const MemoryShortage shortage;
  const Image copy(image);
  EXPECT_EQ(copy.GetData(), nullptr);
}

TEST(Image, MovesLeaveADefaultImage) {
  Image image = Filled(2, 3, 3, PIXEL_FORMAT_RAW8, 0x42);
  image.SetColorProcessing(HQ_LINEAR);
  const unsigned char* const data = image.GetData();
  Image moved(std::move(image));
  EXPECT_EQ(moved.GetData(), data);
  EXPECT_EQ(moved.GetColorProcessing(), HQ_LINEAR);
  const ShapeOf nothing{Image()};
  EXPECT_EQ(ShapeOf(image), nothing);  // NOLINT: what a move leaves is promised
  EXPECT_EQ(image.GetColorProcessing(), DEFAULT);
  Image assigned = Filled(5, 5, 5, PIXEL_FORMAT_MONO8, 1);
  assigned = std::move(moved);
  EXPECT_EQ(assigned.GetData(), data);
  EXPECT_EQ(ShapeOf(moved), nothing);  // NOLINT
  EXPECT_EQ(moved.SetDimensions(2, 2, 2, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
}

TEST(Image, SelfAssignmentChangesNothing) {
  Image image = Filled(2, 3, 3, PIXEL_FORMAT_MONO8, 0x42);
  const ShapeOf before(image);
  Image& same = image;
  image = same;
  EXPECT_EQ(ShapeOf(image), before);
  image = std::move(same);
  EXPECT_EQ(ShapeOf(image), before);
  EXPECT_TRUE(AllBytesAre(image.GetData(), 0, 6, 0x42));
}

TEST(Image, DeepCopyTakesShapeAndPixels) {
  Image image = Filled(2, 3, 4, PIXEL_FORMAT_RAW8, 0x42);
  image.SetColorProcessing(EDGE_SENSING);
  Image copy = Filled(9, 9, 9, PIXEL_FORMAT_MONO8, 1);
  EXPECT_EQ(copy.DeepCopy(&image).GetType(), VORERROR_OK);
  EXPECT_EQ(copy.GetStride(), 4U);
  EXPECT_EQ(copy.GetDataSize(), 8U);
  EXPECT_EQ(copy.GetPixelFormat(), PIXEL_FORMAT_RAW8);
  EXPECT_EQ(copy.GetBayerTileFormat(), GRBG);
  EXPECT_EQ(copy.GetColorProcessing(), EDGE_SENSING);
  EXPECT_NE(copy.GetData(), image.GetData());
  EXPECT_TRUE(AllBytesAre(copy.GetData(), 0, 8, 0x42));
}

TEST(Image, DeepCopyOfItselfChangesNothing) {
  Image image = Filled(2, 3, 4, PIXEL_FORMAT_RAW8, 0x42);
  const ShapeOf before(image);
  EXPECT_EQ(image.DeepCopy(&image).GetType(), VORERROR_OK);
  EXPECT_EQ(ShapeOf(image), before);
  EXPECT_TRUE(AllBytesAre(image.GetData(), 0, 8, 0x42));
}

TEST(Image, DeepCopyRefusesNull) {
  Image image = Filled(2, 3, 4, PIXEL_FORMAT_RAW8, 0x42);
  EXPECT_EQ(image.DeepCopy(nullptr).GetType(), VORERROR_INVALID_PARAMETER);
  EXPECT_TRUE(AllBytesAre(image.GetData(), 0, 8, 0x42));
}

TEST(Image, DeepCopyFailsAsSetDimensionsDoesAndChangesNothing) {
  const Image large = Filled(100, 100, 100, PIXEL_FORMAT_MONO8, 3);
  Image small = Filled(2, 2, 2, PIXEL_FORMAT_MONO8, 4);
  std::vector<unsigned char> bytes(100, 5);
  Image lent(bytes.data(), bytes.size());
  ASSERT_EQ(lent.SetDimensions(2, 2, 2, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
  const ShapeOf smallBefore(small);
  const ShapeOf lentBefore(lent);
  const MemoryShortage shortage;
  EXPECT_EQ(small.DeepCopy(&large).GetType(), VORERROR_MEMORY_ALLOCATION_FAILED);
  EXPECT_EQ(lent.DeepCopy(&large).GetType(), VORERROR_BUFFER_TOO_SMALL);
  EXPECT_EQ(ShapeOf(small), smallBefore);
  EXPECT_EQ(ShapeOf(lent), lentBefore);
  EXPECT_TRUE(AllBytesAre(small.GetData(), 0, 4, 4));
}

TEST(LentBuffer, TakesADeepCopyIntoItsBytes) {
  const Image image = Filled(2, 3, 4, PIXEL_FORMAT_RAW8, 0x42);
  std::vector<unsigned char> bytes(64, 5);
  Image lent(bytes.data(), bytes.size());
  EXPECT_EQ(lent.DeepCopy(&image).GetType(), VORERROR_OK);
  EXPECT_EQ(lent.GetData(), bytes.data());
  EXPECT_TRUE(AllBytesAre(bytes.data(), 0, 8, 0x42));
}

// Odd runs of 4:2:2 and 4:1:1 have a begun group, of which an exact buffer lacks the last bytes.
TEST(LentBuffer, IsCopiedWithoutAByteBeyondIt) {
  struct Shape {
    unsigned rows, cols, stride;
    PixelFormat format;
    std::size_t group;  // where the group that is begun last ends
  };
  for (const Shape& shape :
       {Shape{3, 3, 5, PIXEL_FORMAT_411YUV8, 18}, Shape{3, 3, 6, PIXEL_FORMAT_422YUV8, 20},
        Shape{1, 4, 16, PIXEL_FORMAT_BGRU16, 32}}) {
    const std::size_t exact = std::size_t{shape.rows} * shape.stride;
    std::vector<unsigned char> bytes(exact + 16, 0x99);  // the next frame in a ring
    std::fill_n(bytes.begin(), exact, 0x42);
    const std::vector<unsigned char> ring = bytes;
    Image lent(bytes.data(), exact);
    ASSERT_EQ(
        lent.SetDimensions(shape.rows, shape.cols, shape.stride, shape.format, NONE).GetType(),
        VORERROR_OK);
    const Image own(lent);
    EXPECT_TRUE(AllBytesAre(own.GetData(), 0, exact, 0x42));
    EXPECT_TRUE(AllBytesAre(own.GetData(), exact, shape.group, 0));

    std::vector<unsigned char> copied(exact + 16, 0x99);
    Image copy(copied.data(), exact);
    for (const Image* source : {&own, static_cast<const Image*>(&lent)}) {
      EXPECT_EQ(copy.DeepCopy(source).GetType(), VORERROR_OK);
      EXPECT_EQ(copied, ring);
    }
    EXPECT_EQ(bytes, ring);
  }
}

TEST(Image, RecordsAnyColourProcessing) {
  Image image;
  for (int method = 0; method <= 9; ++method) {
    EXPECT_EQ(image.SetColorProcessing(static_cast<ColorProcessingAlgorithm>(method)).GetType(),
              VORERROR_OK);
    EXPECT_EQ(image.GetColorProcessing(), method);
  }
}

TEST(DefaultColorProcessing, StartsAsNearestNeighbour) {
  EXPECT_EQ(Image::GetDefaultColorProcessing(), NEAREST_NEIGHBOR);
  EXPECT_EQ(Image::SetDefaultColorProcessing(HQ_LINEAR).GetType(), VORERROR_OK);
  EXPECT_EQ(Image::GetDefaultColorProcessing(), HQ_LINEAR);
  EXPECT_EQ(Image::SetDefaultColorProcessing(NEAREST_NEIGHBOR).GetType(), VORERROR_OK);
  EXPECT_EQ(Image::GetDefaultColorProcessing(), NEAREST_NEIGHBOR);
}

// An odd run of 4:2:2 has the V of its last pixel, and an odd run of 4:1:1 more, past the bytes
// that its pixels alone would take.
class BegunGroup : public testing::TestWithParam<PixelFormat> {
 protected:
  static constexpr unsigned char kGroup[6] = {84, 76, 77, 255, 78, 79};
};

TEST_P(BegunGroup, IsKeptByCopiesAndByTheSameShape) {
  const PixelFormatInfo& format = *FindPixelFormat(GetParam());
  Image image;
  ASSERT_EQ(image.SetDimensions(1, 1, 2, GetParam(), NONE).GetType(), VORERROR_OK);
  std::memcpy(image.GetData(), kGroup, format.bytesPerGroup);

  const Image copy(image);
  EXPECT_EQ(std::memcmp(copy.GetData(), kGroup, format.bytesPerGroup), 0);
  Image deep;
  ASSERT_EQ(deep.DeepCopy(&image).GetType(), VORERROR_OK);
  EXPECT_EQ(std::memcmp(deep.GetData(), kGroup, format.bytesPerGroup), 0);
  Image converted;
  ASSERT_EQ(ImageConverter().Convert(&image, GetParam(), &converted).GetType(), VORERROR_OK);
  EXPECT_EQ(std::memcmp(converted.GetData(), kGroup, format.bytesPerGroup), 0);
  ASSERT_EQ(image.SetDimensions(1, 1, 2, GetParam(), NONE).GetType(), VORERROR_OK);
  EXPECT_EQ(std::memcmp(image.GetData(), kGroup, format.bytesPerGroup), 0);
}

TEST_P(BegunGroup, OfTheCallersFrameIsLeftAlone) {
  const PixelFormatInfo& format = *FindPixelFormat(GetParam());
  unsigned char frame[6];
  std::memcpy(frame, kGroup, sizeof frame);
  Image image(frame, format.bytesPerGroup);
  ASSERT_EQ(image.SetDimensions(1, 1, 2, GetParam(), NONE).GetType(), VORERROR_OK);
  EXPECT_EQ(std::memcmp(frame, kGroup, sizeof frame), 0);
}

INSTANTIATE_TEST_SUITE_P(Yuv, BegunGroup,
                         testing::Values(PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_411YUV8));

}  // namespace
}  // namespace Korvex2::Test
