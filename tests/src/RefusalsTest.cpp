// A call that is refused before it writes leaves what was there: which calls those are, and what
// the destination shows afterwards.

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <vector>

#include "ImageConverterARMStub.h"
#include "PixelFormats.h"
#include "reference/Formats.h"
#include "reference/Routes.h"
#include "support/Allocation.h"
#include "support/Comparison.h"
#include "support/LentImage.h"

namespace Korvex2::Test {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned kRows = 6;
constexpr unsigned kCols = 10;
constexpr unsigned char kOld = 0xA7;

struct Pair {
  PixelFormat from, to;
  bool IsCopy() const { return from == to; }
  bool IsRefused() const { return Reference::Dispatch(from, to) == nullptr && !IsCopy(); }
};

std::string Describe(const Pair& pair) {
  return std::string(Reference::FormatName(pair.from)) + " -> " + Reference::FormatName(pair.to);
}

template <typename Check>
void ForEachPair(Check check) {
  for (const PixelFormatInfo& from : PixelFormats()) {
    for (const PixelFormatInfo& to : PixelFormats()) {
      const Pair pair{from.format, to.format};
      SCOPED_TRACE(Describe(pair));
      check(pair);
    }
  }
}

unsigned Stride(unsigned cols, PixelFormat format) {
  return Reference::RowBytes(cols, Reference::BitsPerPixel(format));
}

void Shape(Image& image, unsigned rows, unsigned cols, PixelFormat format, unsigned padding = 0) {
  ASSERT_EQ(image.SetDimensions(rows, cols, Stride(cols, format) + padding, format, GRBG),
            VORERROR_OK);
}

Bytes BytesOf(const Image& image) {
  const auto size = static_cast<std::size_t>(Reference::BufferBytes(
      image.GetRows(), image.GetCols(), image.GetStride(), image.GetPixelFormat()));
  return image.GetData() == nullptr ? Bytes() : Bytes(image.GetData(), image.GetData() + size);
}

/// An image's shape, buffer and bytes.
struct State {
  explicit State(const Image& image) : data(image.GetData()), bytes(BytesOf(image)) {
    image.GetDimensions(&rows, &cols, &stride, &format, &tile);
  }

  unsigned rows = 0, cols = 0, stride = 0;
  PixelFormat format = UNSPECIFIED_PIXEL_FORMAT;
  BayerTileFormat tile = NONE;
  const unsigned char* data;
  Bytes bytes;

  bool operator==(const State&) const = default;
};

std::ostream& operator<<(std::ostream& out, const State& state) {
  return out << state.rows << " x " << state.cols << ", stride " << state.stride << ", "
             << Reference::FormatName(state.format) << ", tile " << state.tile;
}

/// Gives the destination an earlier frame.
void Use(Image& destination, unsigned rows, unsigned cols, PixelFormat format) {
  Shape(destination, rows, cols, format);
  std::memset(destination.GetData(), kOld, BytesOf(destination).size());
}

Error Convert(const Image* source, PixelFormat to, Image* destination) {
  return ImageConverter().Convert(source, to, destination);
}

::testing::AssertionResult Refuses(const Error& error, ErrorType type, ErrorType cause) {
  const Reference::Outcome outcome = OutcomeOf(error);
  return outcome.code == type && outcome.causeCode == cause
             ? testing::AssertionSuccess()
             : testing::AssertionFailure() << "answers " << Reference::Describe(outcome);
}

TEST(Refusals, OfASourceWithoutABufferTouchNothing) {
  ForEachPair([](const Pair& pair) {
    Image destination;
    Use(destination, 2, 4, pair.to);
    const State before(destination);
    const Image empty;
    for (const Image* source : {static_cast<const Image*>(nullptr), &empty}) {
      EXPECT_EQ(Convert(source, pair.to, &destination), VORERROR_INVALID_PARAMETER);
      EXPECT_EQ(State(destination), before);
    }
  });
}

// Whatever the destination held, its shape included.
TEST(Refusals, OfAShapeTooLargeTouchNothing) {
  ForEachPair([](const Pair& pair) {
    unsigned char byte = 0;
    const LentImage source(0x10000, 0x10000, pair.from, &byte, 1);
    Image destination;
    Use(destination, kRows, kCols, pair.to);
    const State before(destination);
    EXPECT_TRUE(Refuses(Convert(&source, pair.to, &destination), VORERROR_FAILED,
                        VORERROR_INVALID_PARAMETER));
    EXPECT_EQ(State(destination), before);
  });
}

TEST(Refusals, ForWantOfMemoryTouchNothing) {
  ForEachPair([](const Pair& pair) {
    Image source;
    Shape(source, kRows, kCols, pair.from);
    Image destination;
    Use(destination, 2, 4, pair.to);
    const State before(destination);
    const AllocationFault fault(AllocationFault::Of::PixelBuffers, 1);
    EXPECT_TRUE(Refuses(Convert(&source, pair.to, &destination), VORERROR_FAILED,
                        VORERROR_MEMORY_ALLOCATION_FAILED));
    EXPECT_TRUE(fault.Happened());
    EXPECT_EQ(State(destination), before);
  });
}

TEST(Refusals, OfLentMemoryThatIsTooSmallTouchNothing) {
  ForEachPair([](const Pair& pair) {
    Image source;
    Shape(source, kRows, kCols, pair.from);
    const std::size_t needed = std::size_t{Stride(kCols, pair.to)} * kRows;
    Bytes memory(needed, kOld);
    Image destination(memory.data(), needed - 1);
    Use(destination, 2, 4, pair.to);
    const State before(destination);
    EXPECT_TRUE(Refuses(Convert(&source, pair.to, &destination), VORERROR_FAILED,
                        VORERROR_BUFFER_TOO_SMALL));
    EXPECT_EQ(State(destination), before);
    EXPECT_EQ(memory, Bytes(needed, kOld));
  });
}

void ExpectNewShapeOver(unsigned char byte, PixelFormat format, const Image& destination) {
  EXPECT_EQ(destination.GetRows(), kRows);
  EXPECT_EQ(destination.GetCols(), kCols);
  EXPECT_EQ(destination.GetPixelFormat(), format);
  EXPECT_EQ(destination.GetStride(), Stride(kCols, format));
  const Bytes bytes = BytesOf(destination);
  EXPECT_EQ(bytes, Bytes(bytes.size(), byte));
}

// Once it is shaped, a destination shows a frame of its own of this very shape, the caller's bytes,
// or nothing.
template <typename Refuse>
void ExpectWhatWasThere(PixelFormat to, Refuse refuse) {
  Image fresh;
  refuse(fresh);
  ExpectNewShapeOver(0, to, fresh);

  Image ofTheShape;
  Use(ofTheShape, kRows, kCols, to);
  refuse(ofTheShape);
  ExpectNewShapeOver(kOld, to, ofTheShape);

  Image ofAnotherShape;
  Use(ofAnotherShape, kCols, kRows, to);
  refuse(ofAnotherShape);
  ExpectNewShapeOver(0, to, ofAnotherShape);

  Bytes memory(std::size_t{Stride(kCols, to)} * kRows, kOld);
  Image lent(memory.data(), memory.size());
  refuse(lent);
  ExpectNewShapeOver(kOld, to, lent);
}

TEST(Refusals, OfAPairLeaveWhatWasThereInTheNewShape) {
  ForEachPair([](const Pair& pair) {
    if (!pair.IsRefused()) return;
    Image source;
    Shape(source, kRows, kCols, pair.from);
    Fill(source.GetData(), source.GetDataSize(), Content::Random, 1);
    ExpectWhatWasThere(pair.to, [&](Image& destination) {
      EXPECT_EQ(Convert(&source, pair.to, &destination), VORERROR_INVALID_PARAMETER);
    });
  });
}

// The packed shape is there already when the padded one finds no room.
TEST(Refusals, OfAPaddedCopyLeaveWhatWasThereInThePackedShape) {
  for (const PixelFormatInfo& info : PixelFormats()) {
    SCOPED_TRACE(info.name);
    Image source;
    Shape(source, kRows, kCols, info.format, 5);
    Fill(source.GetData(), source.GetDataSize(), Content::Random, 1);
    ExpectWhatWasThere(info.format, [&](Image& destination) {
      const bool isEmpty = destination.GetData() == nullptr;
      const AllocationFault fault(AllocationFault::Of::PixelBuffers, isEmpty ? 2 : 1);
      const ErrorType type = Convert(&source, info.format, &destination).GetType();
      EXPECT_TRUE(type == VORERROR_MEMORY_ALLOCATION_FAILED || type == VORERROR_BUFFER_TOO_SMALL)
          << GetErrorTypeName(type);
    });
  }
}

}  // namespace
}  // namespace Korvex2::Test
