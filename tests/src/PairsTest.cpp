// Every pair of formats through the public entry, against the oracle: result, shape, every byte.

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "reference/Routes.h"
#include "support/Comparison.h"
#include "support/Walk.h"

namespace Korvex2::Test {
namespace {

std::vector<Reference::Format> AllFormats() {
  std::vector<Reference::Format> formats;
  for (const Reference::FormatRow& row : Reference::Formats()) formats.push_back(row.value);
  formats.push_back(Reference::UNSPECIFIED);
  formats.push_back(0x12345);
  return formats;
}

struct Size {
  unsigned rows, cols;
};

constexpr Size kSmallSizes[] = {{0, 0}, {0, 7}, {7, 0}, {1, 1}, {1, 2},  {2, 1},
                                {1, 3}, {3, 1}, {3, 5}, {5, 7}, {3, 641}};

/// Names for the cases counted, so that ctest's properties show them.
int compared = 0;

void Expect(const Case& c) {
  ++compared;
  ASSERT_TRUE(Agrees(c));
}

class NonRawPairs : public testing::TestWithParam<Reference::Format> {
 protected:
  void SetUp() override { compared = 0; }
  void TearDown() override { RecordProperty("conversions", compared); }
};

TEST_P(NonRawPairs, AgreeAtSmallSizesWithEveryContentPaddingAndByteOrder) {
  for (const Reference::Format target : AllFormats()) {
    for (const Size& size : kSmallSizes) {
      for (const Content content : kContents) {
        for (const bool littleEndian : {true, false}) {
          for (const unsigned padding : {0U, 1U, 13U}) {
            for (const int garbage : {-1, 0xA5, 0x5A}) {
              // The long row is slow enough to be taken with some of these only.
              if (size.cols == 641 && (padding == 1 || garbage == 0x5A)) continue;
              Expect({GetParam(), target, size.rows, size.cols, padding, 1, 0, content,
                      littleEndian, garbage});
              if (HasFatalFailure()) return;
            }
          }
        }
      }
    }
  }
}

TEST_P(NonRawPairs, AgreeAt640x480) {
  for (const Reference::FormatRow& target : Reference::Formats()) {
    for (const bool littleEndian : {true, false}) {
      Expect({GetParam(), target.value, 480, 640, littleEndian ? 0U : 8U, 0, 0,
              littleEndian ? Content::Random : Content::Ramp, littleEndian, -1});
      if (HasFatalFailure()) return;
    }
  }
}

TEST_P(NonRawPairs, AgreeOnRowsOfMoreThanAMebibyte) {
  for (const Reference::FormatRow& target : Reference::Formats()) {
    if (Reference::IsRaw(target.value)) continue;
    const unsigned bits = std::max(8U, Reference::BitsPerPixel(GetParam()));
    Expect({GetParam(), target.value, 1, (1U << 23) / bits + 4099, 0, 0, 0, Content::Random,
            target.bits % 16 == 0, -1});
    if (HasFatalFailure()) return;
  }
}

std::vector<Reference::Format> NonRawSources() {
  std::vector<Reference::Format> formats;
  for (const Reference::Format format : AllFormats()) {
    if (!Reference::IsRaw(format)) formats.push_back(format);
  }
  return formats;
}

std::string FormatParam(const testing::TestParamInfo<Reference::Format>& param) {
  switch (param.param) {
    case Reference::UNSPECIFIED:
      return "Unspecified";
    case 0x12345:
      return "Unknown";
    default:
      return Reference::FormatName(param.param);
  }
}

INSTANTIATE_TEST_SUITE_P(From, NonRawPairs, testing::ValuesIn(NonRawSources()), FormatParam);

class RawPairs : public testing::TestWithParam<Reference::Format> {
 protected:
  void SetUp() override { compared = 0; }
  void TearDown() override {
    RecordProperty("conversions", compared);
    Image::SetDefaultColorProcessing(NEAREST_NEIGHBOR);
  }
};

constexpr Size kRawSizes[] = {{0, 0}, {1, 1}, {1, 2}, {2, 1}, {1, 3},
                              {2, 2}, {4, 6}, {3, 5}, {5, 7}, {6, 10}};

TEST_P(RawPairs, AgreeForEveryTileAndMethodAtSmallSizes) {
  Walk walk;
  for (const Reference::Format target : AllFormats()) {
    for (const Size& size : kRawSizes) {
      for (unsigned tile = 0; tile <= 5; ++tile) {
        for (unsigned method = 0; method <= 9; ++method) {
          for (const bool littleEndian : {true, false}) {
            if (!walk.Takes()) continue;
            Expect({GetParam(), target, size.rows, size.cols, 0, tile, method, Content::Random,
                    littleEndian, littleEndian ? -1 : 0xA5});
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  }
}

TEST_P(RawPairs, AgreeForEveryDefaultMethod) {
  for (unsigned method = 0; method <= 9; ++method) {
    Image::SetDefaultColorProcessing(static_cast<ColorProcessingAlgorithm>(method));
    for (const Reference::FormatRow& target : Reference::Formats()) {
      for (const unsigned own : {0U, 4U}) {
        Expect({GetParam(), target.value, 6, 8, 0, 2, own, Content::Random, true, -1});
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_P(RawPairs, AgreeWithPaddedRowsAndStructuredContent) {
  for (const Reference::FormatRow& target : Reference::Formats()) {
    for (const Content content : kContents) {
      for (const unsigned tile : {0U, 3U}) {
        Expect({GetParam(), target.value, 6, 10, 5, tile, 4, content, true, -1});
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_P(RawPairs, AgreeAtLargeSizes) {
  Walk walk;
  unsigned turn = 0;
  for (const Reference::FormatRow& target : Reference::Formats()) {
    for (const unsigned method : {1U, 2U, 3U, 4U, 5U, 7U}) {
      ++turn;
      if (!walk.Takes()) continue;
      Expect({GetParam(), target.value, 480, 640, 0, 1 + turn % 4, method, Content::Random,
              turn % 2 == 0, -1});
      if (HasFatalFailure()) return;
    }
    Expect({GetParam(), target.value, 3, 641, 0, 1, 2, Content::Random, true, -1});
    Expect({GetParam(), target.value, 3, 641, 0, 0, 2, Content::Random, true, -1});
    if (walk.Takes()) {
      Expect({GetParam(), target.value, 2, (1U << 20) + 6, 0, 4, 2, Content::Random, true, -1});
    }
    if (HasFatalFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(From, RawPairs,
                         testing::Values(Reference::RAW8, Reference::RAW12, Reference::RAW16),
                         FormatParam);

}  // namespace
}  // namespace Korvex2::Test
