// No byte of a destination shows what memory held before: heap, stack, and a destination of another
// shape are filled with one byte, then with another, and the conversion must come out the same.
// Only a destination that has its shape already, or that the caller lends, keeps bytes of its own.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ostream>
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

namespace Korvex2::Test {
namespace {

using Bytes = std::vector<unsigned char>;

/// What a destination holds that may keep it.
constexpr unsigned char kFrame = 0x3C;

/// Converted through temporary images, step by step.
class DerivedImage : public Image {};

enum class Destination {
  New,
  Derived,  // of a subclass, and so the source
  Larger,   // held a larger frame before
  SameShape,
  Lent,  // on the caller's buffer
};

constexpr Destination kDestinations[] = {Destination::New, Destination::Derived,
                                         Destination::Larger, Destination::SameShape,
                                         Destination::Lent};

struct Conversion {
  PixelFormat from = UNSPECIFIED_PIXEL_FORMAT;
  PixelFormat to = UNSPECIFIED_PIXEL_FORMAT;
  unsigned rows = 0;
  unsigned cols = 0;
  int padding = 0;  // of the source's rows; negative: the stride falls short of the pixels
  int tile = RGGB;
  int method = NEAREST_NEIGHBOR;
  Destination destination = Destination::New;
  bool written = true;       // whether anyone wrote the source's pixels
  bool outOfMemory = false;  // for all but the destination
};

std::ostream& operator<<(std::ostream& out, const Conversion& c) {
  return out << Reference::FormatName(c.from) << " -> " << Reference::FormatName(c.to) << ", "
             << c.rows << " x " << c.cols << " + " << c.padding << ", tile " << c.tile
             << ", method " << c.method << ", destination " << static_cast<int>(c.destination)
             << (c.written ? "" : ", source never written")
             << (c.outOfMemory ? ", out of memory" : "");
}

struct Outcome {
  ErrorType answer = VORERROR_UNDEFINED;
  std::string message;
  Bytes bytes;
};

unsigned Stride(const Conversion& c) {
  const unsigned packed = PackedStride(c.cols, Image::DetermineBitsPerPixel(c.from));
  return static_cast<unsigned>(std::max(0, static_cast<int>(packed) + c.padding));
}

template <typename Picture>
void ShapeSource(const Conversion& c, Picture& source) {
  ASSERT_EQ(
      source.SetDimensions(c.rows, c.cols, Stride(c), c.from, static_cast<BayerTileFormat>(c.tile))
          .GetType(),
      VORERROR_OK);
  source.SetColorProcessing(static_cast<ColorProcessingAlgorithm>(c.method));
  if (c.written)
    Fill(source.GetData(), source.GetDataSize(), Content::Random, c.rows * 31 + c.cols);
}

/// All bytes of an image, those included that complete its last group of pixels.
std::size_t HeldBytes(const Image& image) {
  return static_cast<std::size_t>(Reference::BufferBytes(
      image.GetRows(), image.GetCols(), image.GetStride(), image.GetPixelFormat()));
}

/// Gives the destination a frame of this byte beforehand.
void Use(Image& destination, unsigned rows, unsigned cols, PixelFormat format, unsigned char byte) {
  const unsigned stride = PackedStride(cols, Image::DetermineBitsPerPixel(format));
  ASSERT_EQ(destination.SetDimensions(rows, cols, stride, format, NONE).GetType(), VORERROR_OK);
  std::memset(destination.GetData(), byte, HeldBytes(destination));
}

template <typename Picture>
Outcome ConvertInto(const Conversion& c, unsigned char old, Picture& destination) {
  static ImageConverter converter;
  Picture source;
  ShapeSource(c, source);
  PaintStack(old);
  Outcome outcome;
  {
    const LargestPiece limit(c.outOfMemory ? 16 : SIZE_MAX);
    const Error error = converter.Convert(&source, c.to, &destination);
    outcome.answer = error.GetType();
    outcome.message = error.GetMessage();
  }
  outcome.bytes.assign(destination.GetData(), destination.GetData() + HeldBytes(destination));
  return outcome;
}

/// The conversion in a world in which all old memory holds this byte.
Outcome Convert(const Conversion& c, unsigned char old) {
  SetOldMemory(old);
  Image destination;
  switch (c.destination) {
    case Destination::New:
      break;
    case Destination::Derived: {
      DerivedImage derived;
      return ConvertInto(c, old, derived);
    }
    case Destination::Larger:
      Use(destination, c.rows + 3, c.cols + 5, PIXEL_FORMAT_BGRU16, old);
      break;
    case Destination::SameShape:
      Use(destination, c.rows, c.cols, c.to, kFrame);
      break;
    case Destination::Lent: {
      Bytes buffer(std::size_t{8} * (c.rows + 1) * (c.cols + 64), kFrame);
      Image lent(buffer.data(), buffer.size());
      return ConvertInto(c, old, lent);
    }
  }
  return ConvertInto(c, old, destination);
}

int compared = 0;

void Expect(const Conversion& c) {
  ++compared;
  const Outcome once = Convert(c, 0xA5);
  const Outcome again = Convert(c, 0x5A);
  ASSERT_EQ(once.answer, again.answer) << c;
  ASSERT_EQ(once.message, again.message) << c;
  ASSERT_EQ(once.bytes.size(), again.bytes.size()) << c;
  for (std::size_t i = 0; i < once.bytes.size(); ++i) {
    ASSERT_EQ(once.bytes[i], again.bytes[i]) << "byte " << i << " shows old memory: " << c;
  }
}

class OldMemory : public testing::TestWithParam<PixelFormat> {
 protected:
  void SetUp() override { compared = 0; }
  void TearDown() override {
    SetOldMemory(0xA5);
    RecordProperty("conversions", compared);
  }

  /// The conversion into every format, a value that is none included.
  static void ExpectAllTargets(Conversion c) {
    for (const PixelFormatInfo& to : PixelFormats()) {
      c.to = to.format;
      Expect(c);
      if (HasFatalFailure()) return;
    }
    c.to = static_cast<PixelFormat>(0x12345);
    Expect(c);
  }
};

struct Size {
  unsigned rows, cols;
};

// Odd counts at every distance from a whole group, and one run of more than two pieces.
constexpr Size kSizes[] = {{0, 5}, {1, 1}, {1, 2}, {1, 3}, {3, 3},  {2, 2},
                           {3, 5}, {5, 7}, {6, 8}, {4, 6}, {3, 701}};

TEST_P(OldMemory, ShowsInNoDestination) {
  for (const Size& size : kSizes) {
    for (const int padding : {-1, 0, 1, 13}) {
      for (const Destination destination : kDestinations) {
        for (const bool written : {true, false}) {
          ExpectAllTargets({.from = GetParam(),
                            .rows = size.rows,
                            .cols = size.cols,
                            .padding = padding,
                            .destination = destination,
                            .written = written});
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

TEST_P(OldMemory, ShowsInNoDestinationForAnyTileAndMethod) {
  if (!Reference::IsRaw(GetParam())) return;
  Walk walk;
  for (const Size& size : {Size{6, 10}, Size{5, 7}}) {
    for (int tile = 0; tile <= 5; ++tile) {
      for (int method = 1; method <= 9; ++method) {
        for (const Destination destination : kDestinations) {
          if (!walk.Takes()) continue;
          ExpectAllTargets({.from = GetParam(),
                            .rows = size.rows,
                            .cols = size.cols,
                            .tile = tile,
                            .method = method,
                            .destination = destination});
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

TEST_P(OldMemory, ShowsInNoDestinationWhenMemoryRunsOut) {
  for (const Size& size : kSizes) {
    for (const int method : {NEAREST_NEIGHBOR, RIGOROUS}) {
      ExpectAllTargets({.from = GetParam(),
                        .rows = size.rows,
                        .cols = size.cols,
                        .method = method,
                        .destination = Destination::SameShape,
                        .outOfMemory = true});
      if (HasFatalFailure()) return;
    }
  }
}

std::vector<PixelFormat> AllFormats() {
  std::vector<PixelFormat> formats;
  for (const PixelFormatInfo& row : PixelFormats()) formats.push_back(row.format);
  return formats;
}

INSTANTIATE_TEST_SUITE_P(From, OldMemory, testing::ValuesIn(AllFormats()), [](const auto& param) {
  return std::string(FindPixelFormat(param.param)->name);
});

// What the tests above go by.
TEST(OldMemoryItself, IsWhatTheHeapHandsOut) {
  for (const unsigned char byte : Bytes{0xA5, 0x5A}) {
    SetOldMemory(byte);
    auto* const piece = static_cast<unsigned char*>(::operator new(1000));
    EXPECT_EQ(std::count(piece, piece + 1000, byte), 1000);
    ::operator delete(piece);
  }
  SetOldMemory(0xA5);
}

}  // namespace
}  // namespace Korvex2::Test
