// Every conversion on images that hold rows x stride bytes and not one more, with a page behind or
// before them that faults when touched: what is missing of a begun group, or of pixels for which
// the stride falls short, counts as zero where it is read and is dropped where it is written.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "reference/Routes.h"
#include "support/Bytes.h"
#include "support/Comparison.h"
#include "support/GuardedMemory.h"
#include "support/LentImage.h"
#include "support/Walk.h"

namespace Korvex2::Test {
namespace {

using Place = std::uint8_t* (GuardedMemory::*)(std::size_t);

constexpr unsigned char kOld = 0xEE;

struct Size {
  unsigned rows = 0, cols = 0;
};

/// One image of a conversion: what class it is of, how far its stride falls short of its pixels,
/// and whether it has the bytes of the completed group all the same.
struct Side {
  bool plain = true;
  unsigned lacking = 0;
  bool whole = false;
};

struct Conversion {
  Reference::Format from = 0;
  Reference::Format to = 0;
  Size size = {};
  Side source = {};
  Side destination = {};
  unsigned tile = RGGB;
  unsigned method = NEAREST_NEIGHBOR;
};

std::ostream& operator<<(std::ostream& out, const Side& side) {
  return out << (side.plain ? "plain" : "of a subclass") << ", " << side.lacking << " bytes short"
             << (side.whole ? ", with its last group whole" : "");
}

std::ostream& operator<<(std::ostream& out, const Conversion& c) {
  return out << Reference::FormatName(c.from) << " -> " << Reference::FormatName(c.to) << ", "
             << c.size.rows << " x " << c.size.cols << ", tile " << c.tile << ", source "
             << c.source << ", destination " << c.destination;
}

/// An image on memory of exactly its size, plain or of a subclass.
class Exact {
 public:
  Exact(const Conversion& c, const Side& side, Reference::Format format, std::uint8_t* bytes)
      : m_plain(bytes, SizeOf(c, side, format)),
        m_subclass(c.size.rows, c.size.cols, static_cast<PixelFormat>(format), bytes,
                   SizeOf(c, side, format)) {
    const auto tile = static_cast<BayerTileFormat>(c.tile);
    const unsigned stride = StrideOf(c, side, format);
    m_subclass.stride = stride;
    m_subclass.tile = tile;
    m_subclass.method = static_cast<ColorProcessingAlgorithm>(c.method);
    EXPECT_EQ(
        m_plain
            .SetDimensions(c.size.rows, c.size.cols, stride, static_cast<PixelFormat>(format), tile)
            .GetType(),
        VORERROR_OK);
    (void)m_plain.SetColorProcessing(m_subclass.method);
    image = side.plain ? &m_plain : &m_subclass;
  }
  Exact(const Exact&) = delete;
  Exact& operator=(const Exact&) = delete;

  static unsigned StrideOf(const Conversion& c, const Side& side, Reference::Format format) {
    const unsigned packed = Reference::RowBytes(c.size.cols, Reference::BitsPerPixel(format));
    return packed - std::min(packed, side.lacking);
  }

  static std::size_t SizeOf(const Conversion& c, const Side& side, Reference::Format format) {
    const unsigned stride = StrideOf(c, side, format);
    return side.whole ? static_cast<std::size_t>(
                            Reference::BufferBytes(c.size.rows, c.size.cols, stride, format))
                      : std::size_t{c.size.rows} * stride;
  }

  Image* image = nullptr;

 private:
  Image m_plain;
  LentImage m_subclass;
};

/// The oracle's frame: all bytes that any step may touch.
Reference::Frame WholeFrame(const Conversion& c, const Side& side, Reference::Format format,
                            int byte) {
  Reference::Frame frame;
  frame.Shape(c.size.rows, c.size.cols, Exact::StrideOf(c, side, format), format, c.tile);
  frame.method = c.method;
  std::memset(frame.data, byte, frame.owned.size());
  return frame;
}

// Every distance from a whole group, a run that vectors begin and steps end, more than one piece.
constexpr Size kSizes[] = {{1, 1},   {1, 2},   {1, 3}, {3, 3},  {5, 3},  {7, 1},
                           {5, 1},   {2, 2},   {4, 6}, {3, 5},  {3, 43}, {1, 130},
                           {1, 131}, {3, 343}, {0, 3}, {1, 67}, {2, 34}, {1, 1025}};

class ExactImages : public testing::Test {
 protected:
  void TearDown() override { RecordProperty("conversions", m_conversions); }

  void Check(const Conversion& c, Place place) {
    const Probe::TargetMember& target = *std::ranges::find(
        Probe::Targets(), static_cast<PixelFormat>(c.to), &Probe::TargetMember::target);
    const std::size_t read = Exact::SizeOf(c, c.source, c.from);
    const std::size_t written = Exact::SizeOf(c, c.destination, c.to);
    std::uint8_t* const in = (m_source.*place)(read);
    std::uint8_t* const out = (m_destination.*place)(written);
    Fill(in, read, Content::Random, c.size.cols);
    std::memset(out, kOld, written);
    Reference::Frame from = WholeFrame(c, c.source, c.from, 0);
    Reference::Frame to = WholeFrame(c, c.destination, c.to, kOld);
    std::memcpy(from.data, in, read);
    const Bytes original(in, in + read);

    Exact source(c, c.source, c.from, in);
    Exact destination(c, c.destination, c.to, out);
    to.dataSize = destination.image->GetDataSize();
    Probe probe;
    Reference::Converter oracle;
    oracle.littleEndian = probe.IsLittleEndian();
    oracle.engine = OracleEngine;
    const Error error = probe.Call(target.member, source.image, destination.image);
    const Reference::Outcome outcome = oracle.ConvertTo(c.to, &from, &to);
    ASSERT_EQ(OutcomeOf(error), outcome) << c;
    for (std::size_t i = 0; i < written; ++i) {
      ASSERT_EQ(unsigned{out[i]}, unsigned{to.data[i]}) << "byte " << i << ": " << c;
    }
    ASSERT_TRUE(std::equal(original.begin(), original.end(), in)) << c;
    ASSERT_TRUE(m_source.CanariesIntact()) << c;
    ASSERT_TRUE(m_destination.CanariesIntact()) << c;
    ++m_conversions;
  }

  /// Both classes on both sides, both places.
  void CheckAll(Conversion c) {
    for (const bool plainSource : {true, false}) {
      for (const bool plainDestination : {true, false}) {
        for (const Place place : {&GuardedMemory::AtEnd, &GuardedMemory::AtStart}) {
          c.source.plain = plainSource;
          c.destination.plain = plainDestination;
          Check(c, place);
          if (HasFatalFailure()) return;
        }
      }
    }
  }

  void CheckEverySize(const Side& destination) {
    Walk walk;
    ForEachPair([&](Conversion c) {
      c.destination = destination;
      for (const Size& size : kSizes) {
        if (!walk.Takes()) continue;
        c.size = size;
        CheckAll(c);
        if (HasFatalFailure()) return;
      }
    });
  }

  template <typename Pair>
  void ForEachPair(Pair check) {
    for (const Probe::TargetMember& target : Probe::Targets()) {
      for (const Reference::FormatRow& source : Reference::Formats()) {
        const char* const routine = Reference::Dispatch(source.value, target.target);
        if (routine == nullptr || *routine == *Reference::SameFormat) continue;
        check(Conversion{.from = source.value, .to = target.target});
        if (HasFatalFailure()) return;
      }
    }
  }

 private:
  GuardedMemory m_source{1 << 14};
  GuardedMemory m_destination{1 << 14};
  int m_conversions = 0;
};

TEST_F(ExactImages, ConvertWithoutAByteBeyondTheirRows) {
  CheckEverySize(Side());
}

TEST_F(ExactImages, GetTheCompletedGroupWhereTheyHaveRoomForIt) {
  CheckEverySize({.plain = true, .lacking = 0, .whole = true});
}

// As beyond 16,777,216 bits a row, where strides go through single precision.
TEST_F(ExactImages, ConvertWhereStridesFallShortOfTheirPixels) {
  Walk walk;
  ForEachPair([&](Conversion c) {
    for (const Size& size : {Size{1, 6}, Size{3, 7}, Size{2, 34}, Size{4, 66}, Size{1, 1030}}) {
      for (const auto& [source, destination] :
           {std::pair{1U, 0U}, {0U, 1U}, {2U, 16U}, {16U, 5U}, {17U, 33U}, {4000U, 4000U}}) {
        if (!walk.Takes()) continue;
        c.size = size;
        c.source.lacking = source;
        c.destination.lacking = destination;
        CheckAll(c);
        if (HasFatalFailure()) return;
      }
    }
  });
}

TEST_F(ExactImages, OfMosaicsConvertForEveryTileAndMethod) {
  Walk walk;
  ForEachPair([&](Conversion c) {
    if (!Reference::IsRaw(c.from)) return;
    for (unsigned tile = 0; tile <= 5; ++tile) {
      for (unsigned method = 1; method <= 8; ++method) {
        for (const unsigned lacking : {0U, 3U}) {
          for (const Size& size : {Size{4, 6}, Size{3, 5}}) {
            if (!walk.Takes()) continue;
            c.size = size;
            c.tile = tile;
            c.method = method;
            c.source.lacking = c.destination.lacking = lacking;
            CheckAll(c);
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  });
}

TEST(ExactImage, OfNineBytesHoldsNineGreyPixelsAndConverts) {
  unsigned char ring[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 0x99, 0x99, 0x99};  // and the next frame
  unsigned char packed[16];
  std::memset(packed, kOld, sizeof packed);
  Image source(ring, 9);
  ASSERT_EQ(source.SetDimensions(3, 3, 3, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
  Image destination(packed, 15);
  ASSERT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_MONO12, &destination).GetType(),
            VORERROR_OK);
  EXPECT_EQ(Bytes(packed, packed + 16),
            (Bytes{1, 0x21, 2, 3, 0x43, 4, 5, 0x65, 6, 7, 0x87, 8, 9, 0x09, 0, kOld}));
  EXPECT_EQ(Bytes(ring + 9, ring + 12), (Bytes{0x99, 0x99, 0x99}));
}

// The caller lent more than the frame: what follows may be another one, and is no pixel of this.
TEST(ExactImage, InARingIsReadAsIfItWereAlone) {
  for (const PixelFormat format :
       {PIXEL_FORMAT_MONO8, PIXEL_FORMAT_MONO16, PIXEL_FORMAT_RGB8, PIXEL_FORMAT_RAW8}) {
    unsigned char ring[64];
    std::memset(ring, 0x99, sizeof ring);
    Image lent(ring, sizeof ring);
    const unsigned stride = 3 * Image::DetermineBitsPerPixel(format) / 8;
    ASSERT_EQ(lent.SetDimensions(1, 3, stride, format, NONE).GetType(), VORERROR_OK);
    const Image alone(lent);
    for (const PixelFormat target :
         {PIXEL_FORMAT_MONO12, PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_411YUV8, PIXEL_FORMAT_RAW12}) {
      Image fromRing;
      Image expected;
      const Error error = ImageConverter().Convert(&lent, target, &fromRing);
      EXPECT_EQ(ImageConverter().Convert(&alone, target, &expected).GetType(), error.GetType());
      const std::size_t size =
          static_cast<std::size_t>(Reference::BufferBytes(1, 3, fromRing.GetStride(), target));
      EXPECT_EQ(std::memcmp(fromRing.GetData(), expected.GetData(), size), 0)
          << Reference::FormatName(format) << " -> " << Reference::FormatName(target);
    }
    EXPECT_TRUE(std::all_of(ring, ring + sizeof ring, [](auto byte) { return byte == 0x99; }));
  }
}

}  // namespace
}  // namespace Korvex2::Test
