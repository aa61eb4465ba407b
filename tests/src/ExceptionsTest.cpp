// Images of a subclass that throws at any of its operations in turn: the exception comes out, the
// conversion keeps nothing, and the same images convert afterwards.

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <vector>

#include "CheckConversion.h"
#include "ImageConverterARMStub.h"
#include "reference/Routes.h"
#include "support/Allocation.h"
#include "support/Comparison.h"

namespace Korvex2::Test {
namespace {

struct Refusal {};

// Both images of a conversion count down together. Declared as a user would, without noexcept.
class ThrowingImage : public Image {
 public:
  static inline std::optional<unsigned> callsLeft;

  Error DeepCopy(const Image* pSrc) override { return CountDown(), Image::DeepCopy(pSrc); }
  Error SetDimensions(unsigned int rows, unsigned int cols, unsigned int stride, PixelFormat format,
                      BayerTileFormat tile) override {
    return CountDown(), Image::SetDimensions(rows, cols, stride, format, tile);
  }
  PixelFormat GetPixelFormat() const override { return CountDown(), Image::GetPixelFormat(); }
  ColorProcessingAlgorithm GetColorProcessing() const override {
    return CountDown(), Image::GetColorProcessing();
  }
  unsigned int GetRows() const override { return CountDown(), Image::GetRows(); }
  unsigned int GetCols() const override { return CountDown(), Image::GetCols(); }
  BayerTileFormat GetBayerTileFormat() const override {
    return CountDown(), Image::GetBayerTileFormat();
  }
  unsigned int GetDataSize() const override { return CountDown(), Image::GetDataSize(); }
  void GetDimensions(unsigned int* rows, unsigned int* cols, unsigned int* stride,
                     PixelFormat* format, BayerTileFormat* tile) const override {
    CountDown(), Image::GetDimensions(rows, cols, stride, format, tile);
  }
  unsigned char* GetData() override { return CountDown(), Image::GetData(); }
  const unsigned char* GetData() const override { return CountDown(), Image::GetData(); }

 private:
  static void CountDown() {
    if (callsLeft && (*callsLeft)-- == 0) {
      callsLeft.reset();
      throw Refusal();
    }
  }
};

constexpr unsigned kRows = 2;
constexpr unsigned kCols = 6;

void Shape(Reference::Format format, Image& image) {
  const unsigned stride = Reference::RowBytes(kCols, Reference::BitsPerPixel(format));
  ASSERT_EQ(image.SetDimensions(kRows, kCols, stride, static_cast<PixelFormat>(format), GRBG),
            VORERROR_OK);
  Fill(image.GetData(), image.GetDataSize(), Content::Random, format);
}

bool ThrowsAtCall(unsigned call, const Image& source, PixelFormat target, Image* destination) {
  ThrowingImage::callsLeft = call;
  bool thrown = false;
  try {
    (void)ImageConverter().Convert(&source, target, destination);
  } catch (const Refusal&) {
    thrown = true;
  }
  ThrowingImage::callsLeft.reset();
  return thrown;
}

std::vector<Reference::Format> ConvertibleFormats() {
  std::vector<Reference::Format> formats;
  for (const Reference::FormatRow& row : Reference::Formats()) {
    if (row.convertible) formats.push_back(row.value);
  }
  return formats;
}

class Exceptions : public testing::TestWithParam<Reference::Format> {};

TEST_P(Exceptions, OfAnImageComeOutAndNothingIsKept) {
  for (const Reference::FormatRow& row : Reference::Formats()) {
    const auto target = static_cast<PixelFormat>(row.value);
    Image plainSource;
    Image expected;
    Shape(GetParam(), plainSource);
    const Error answer = ImageConverter().Convert(&plainSource, target, &expected);

    bool thrown = true;
    unsigned call = 0;
    for (; thrown; ++call) {
      const std::ptrdiff_t before = OutstandingAllocations();
      {
        ThrowingImage source;
        ThrowingImage destination;
        Shape(GetParam(), source);
        thrown = ThrowsAtCall(call, source, target, &destination);
        const Error error = ImageConverter().Convert(&source, target, &destination);
        ASSERT_EQ(error.GetType(), answer.GetType()) << row.name << ", call " << call;
        ASSERT_EQ(destination.GetDataSize(), expected.GetDataSize());
        ASSERT_EQ(std::memcmp(destination.GetData(), expected.GetData(), expected.GetDataSize()), 0)
            << row.name << ", call " << call;
      }
      ASSERT_EQ(OutstandingAllocations(), before) << row.name << ", call " << call;
    }
    EXPECT_GE(call, 4U) << row.name;  // even a refused pair: buffer, shape, the new shape
  }
}

INSTANTIATE_TEST_SUITE_P(From, Exceptions, testing::ValuesIn(ConvertibleFormats()),
                         [](const auto& info) { return Reference::FormatName(info.param); });

TEST(ExceptionsOfCopies, LeaveTheDestinationAsItWas) {
  ThrowingImage source;
  Shape(Reference::RGB8, source);
  Image copy;
  Shape(Reference::MONO16, copy);
  const Image before(copy);
  unsigned call = 0;
  for (bool thrown = true; thrown; ++call) {
    const std::ptrdiff_t outstanding = OutstandingAllocations();
    ThrowingImage::callsLeft = call;
    try {
      EXPECT_EQ(copy.DeepCopy(&source), VORERROR_OK);
      thrown = false;
    } catch (const Refusal&) {
      ASSERT_EQ(OutstandingAllocations(), outstanding);
      ASSERT_EQ(copy.GetPixelFormat(), PIXEL_FORMAT_MONO16);
      ASSERT_EQ(std::memcmp(copy.GetData(), before.GetData(), before.GetDataSize()), 0);
    }
    ThrowingImage::callsLeft.reset();
  }
  EXPECT_EQ(call, 5U);  // after shape, buffer, size and colour processing
  EXPECT_EQ(copy.GetPixelFormat(), PIXEL_FORMAT_RGB8);
  EXPECT_EQ(std::memcmp(copy.GetData(), source.GetData(), source.GetDataSize()), 0);
}

TEST(ExceptionsOfCopies, LeaveACopyWithoutABufferWhereNothingMayThrow) {
  ThrowingImage source;
  Shape(Reference::RGB8, source);
  ThrowingImage::callsLeft = 3;
  const Image constructed(source);
  EXPECT_EQ(constructed.GetData(), nullptr);
  Image assigned;
  Shape(Reference::MONO16, assigned);
  ThrowingImage::callsLeft = 3;
  assigned = source;
  EXPECT_EQ(assigned.GetData(), nullptr);
}

TEST(ExceptionsOfForesight, AreAnErrorSinceNothingIsToBeThrownThere) {
  ThrowingImage source;
  Shape(Reference::RAW8, source);
  ThrowingImage::callsLeft = 0;
  const Error error = CheckConversion(source, PIXEL_FORMAT_RGB8);
  EXPECT_EQ(error.GetType(), VORERROR_FAILED);
  EXPECT_STREQ(error.GetMessage(), "The source image threw an exception.");
}

}  // namespace
}  // namespace Korvex2::Test
