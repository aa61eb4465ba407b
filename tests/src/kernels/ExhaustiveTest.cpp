// Whole domains: all RGB triples, all YUV triples, all 16-bit samples, against the oracle's loops.
// On plain images, so that the kernels of the instruction set in use are what runs.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "reference/Converter.h"
#include "reference/Kernels.h"
#include "support/Comparison.h"
#include "support/PlainImage.h"
#include "support/Probe.h"
#include "support/Walk.h"

namespace Korvex2::Test {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// Both sides on one run; the sizes are those of the kernel's whole steps.
void Check(const char* name, Bytes& source, unsigned pixels, bool littleEndian = true) {
  const Reference::KernelRow& kernel = *Reference::FindKernel(name);
  const std::size_t written = Reference::BytesWritten(kernel, pixels);
  ASSERT_EQ(Reference::BytesRead(kernel, pixels), source.size()) << name;
  Bytes expected(written);
  kernel.loop({source.data(), expected.data(), pixels, littleEndian, written});
  Bytes actual(written);
  const Image from = PlainImage(pixels, source.data(), source.size());
  Image to = PlainImage(pixels, actual.data(), actual.size());
  ASSERT_EQ(Probe(littleEndian).Call(name, &from, &to).GetType(), VORERROR_OK);
  if (actual == expected) return;
  std::size_t at = 0;
  while (actual[at] == expected[at]) ++at;
  FAIL() << name << ": byte " << at << " is " << unsigned{actual[at]} << ", expected "
         << unsigned{expected[at]};
}

constexpr unsigned kChunk = 1U << 18;

/// Runs over all triples, in this order and in one that mixes far colours within a group.
void CheckAllTriples(const char* name) {
  Bytes source(3UL * kChunk);
  for (const bool mixed : {false, true}) {
    for (std::uint32_t start = 0; start < (1U << 24); start += kChunk * kOneIn) {
      for (std::uint32_t i = 0; i < kChunk; ++i) {
        std::uint32_t triple = start + i;
        if (mixed) triple = (triple * 0x9E3779B1U) & 0xFFFFFF;  // odd factor: a permutation
        source[3UL * i] = static_cast<std::uint8_t>(triple >> 16);
        source[3UL * i + 1] = static_cast<std::uint8_t>(triple >> 8);
        source[3UL * i + 2] = static_cast<std::uint8_t>(triple);
      }
      Check(name, source, kChunk);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

class AllTriples : public testing::TestWithParam<const char*> {};

TEST_P(AllTriples, AgreeWithTheOracle) {
  CheckAllTriples(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Exhaustive, AllTriples,
                         testing::Values("ConvertRGBToY8", "ConvertRGBToYUV444",
                                         "ConvertRGBToYUV422", "ConvertRGBToYUV411",
                                         "ConvertYUV444ToRGB"),
                         [](const auto& param) { return std::string(param.param); });

constexpr std::array<std::uint8_t, 8> kLumas = {0, 1, 16, 77, 128, 200, 254, 255};

TEST(Exhaustive, Yuv422OverAllChromasAndSomeLumas) {
  Bytes source;
  for (unsigned uv = 0; uv < 65536; ++uv) {
    for (std::size_t y = 0; y < kLumas.size(); y += 2) {
      source.insert(source.end(), {static_cast<std::uint8_t>(uv >> 8), kLumas[y],
                                   static_cast<std::uint8_t>(uv), kLumas[y + 1]});
    }
  }
  Check("ConvertYUV422ToRGB", source, static_cast<unsigned>(source.size() / 2));
}

TEST(Exhaustive, Yuv411OverAllChromasAndSomeLumas) {
  Bytes source;
  for (unsigned uv = 0; uv < 65536; ++uv) {
    for (std::size_t y = 0; y < kLumas.size(); y += 4) {
      source.insert(source.end(), {static_cast<std::uint8_t>(uv >> 8), kLumas[y], kLumas[y + 1],
                                   static_cast<std::uint8_t>(uv), kLumas[y + 2], kLumas[y + 3]});
    }
  }
  Check("ConvertYUV411ToRGB", source, static_cast<unsigned>(source.size() / 6 * 4));
}

// A chain that is one kernel on x86.
TEST(Exhaustive, Yuv411ToY12OverAllTriples) {
  constexpr unsigned kPixels = 256 * 256;
  Bytes source(kPixels / 4 * 6);
  Bytes expected(kPixels / 2 * 3);
  Bytes actual(expected.size());
  const Image from = PlainImage(kPixels, source.data(), source.size());
  Image to = PlainImage(kPixels, actual.data(), actual.size());
  Reference::Frame fromFrame;
  fromFrame.rows = 1;
  fromFrame.cols = kPixels;
  fromFrame.data = source.data();
  Reference::Frame toFrame;
  toFrame.data = expected.data();
  toFrame.dataSize = static_cast<std::uint32_t>(expected.size());
  for (unsigned u = 0; u < 256; u += kOneIn) {
    for (unsigned v = 0; v < 256; ++v) {
      for (unsigned y = 0; y < 256; y += 4) {
        const unsigned group[] = {u, y, y + 1, v, y + 2, y + 3};
        std::transform(std::begin(group), std::end(group), &source[(v * 64 + y / 4) * 6],
                       [](unsigned sample) { return static_cast<std::uint8_t>(sample); });
      }
    }
    ASSERT_EQ(Reference::Converter().Run("ConvertYUV411ToY12", &fromFrame, &toFrame).code, 0);
    ASSERT_EQ(Probe(true).Call("ConvertYUV411ToY12", &from, &to).GetType(), VORERROR_OK);
    ASSERT_TRUE(actual == expected) << "U " << u;
  }
}

/// All samples in each channel in turn, the others random, then all equal.
Bytes AllSamples(unsigned channels) {
  Noise noise(7);
  Bytes source;
  for (unsigned varying = 0; varying <= channels; ++varying) {
    for (unsigned sample = 0; sample < 65536; ++sample) {
      for (unsigned c = 0; c < channels; ++c) {
        const bool random = varying < channels && c != varying;
        const auto value = static_cast<std::uint16_t>(random ? noise.Word() : sample);
        const auto* p = reinterpret_cast<const std::uint8_t*>(&value);
        source.insert(source.end(), p, p + 2);
      }
    }
  }
  return source;
}

TEST(Exhaustive, All16BitSamplesOfEveryKernelThatReadsThem) {
  struct Kernel {
    const char* name;
    unsigned channels;
  };
  const Kernel kernels[] = {
      {"ConvertY16ToY8", 1},           {"ConvertY16ToY12", 1},
      {"ConvertY16ToRGB16", 1},        {"ConvertY16ToRGBU16", 1},
      {"ConvertRGB16ToY16", 3},        {"ConvertRGB16ToRGB", 3},
      {"AddAlphaChannel_16bit", 3},    {"DropAlphaChannel_16bit", 4},
      {"Truncate_16To8_3Channel", 3},  {"Truncate_16To8_4Channel", 4},
      {"Swap_C1C3_3Channel_16bit", 3}, {"Swap_C1C3_4Channel_16bit", 4},
  };
  for (const Kernel& kernel : kernels) {
    Bytes source = AllSamples(kernel.channels);
    const auto pixels = static_cast<unsigned>(source.size() / (2UL * kernel.channels));
    for (const bool littleEndian : {true, false}) Check(kernel.name, source, pixels, littleEndian);
  }
}

TEST(Exhaustive, AllPairsOf8BitSamplesAndAll24BitGroupsOf12BitOnes) {
  Bytes pairs;
  for (unsigned pair = 0; pair < 65536; ++pair) {
    pairs.push_back(static_cast<std::uint8_t>(pair >> 8));
    pairs.push_back(static_cast<std::uint8_t>(pair));
  }
  Check("ConvertY8ToY12", pairs, 131072);
  Check("ConvertY8ToY16", pairs, 131072);
  Check("ConvertY8ToRGB", pairs, 131072);

  Bytes groups(3UL * kChunk);
  for (std::uint32_t start = 0; start < (1U << 24); start += kChunk * kOneIn) {
    for (std::uint32_t i = 0; i < kChunk; ++i) {
      groups[3UL * i] = static_cast<std::uint8_t>((start + i) >> 16);
      groups[3UL * i + 1] = static_cast<std::uint8_t>((start + i) >> 8);
      groups[3UL * i + 2] = static_cast<std::uint8_t>(start + i);
    }
    for (const bool littleEndian : {true, false}) {
      Check("ConvertY12ToY16", groups, 2 * kChunk, littleEndian);
    }
    Check("ConvertY12ToY8", groups, 2 * kChunk);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// Three channels of 16 bits cannot be walked whole; sums that are exact multiples of 1000 are where
// double precision decides, so they are sought out.
TEST(Exhaustive, Luma16WhereTheSumIsAMultipleOf1000) {
  Noise noise(11);
  Bytes source;
  unsigned pixels = 0;
  while (pixels < 200000 / kOneIn) {
    const std::uint32_t word = noise.Word();
    const std::uint32_t r = word & 0xFFFF;
    const std::uint32_t g = word >> 16;
    std::uint32_t b = noise.Word() & 0xFFFF;
    // 114 b = -(299 r + 587 g) mod 1000 has an answer for even sums; step to it.
    for (int tries = 0; tries < 500 && (299 * r + 587 * g + 114 * b) % 1000 != 0; ++tries) {
      b = (b + 1) & 0xFFFF;
    }
    for (const std::uint32_t sample : {r, g, b}) {
      const auto value = static_cast<std::uint16_t>(sample);
      const auto* p = reinterpret_cast<const std::uint8_t*>(&value);
      source.insert(source.end(), p, p + 2);
    }
    ++pixels;
  }
  Check("ConvertRGB16ToY16", source, pixels);
}

}  // namespace
}  // namespace Korvex2::Test
