#pragma once

/// The library on one side, the oracle on the other.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "Image.h"
#include "reference/Converter.h"
#include "support/Probe.h"

namespace Korvex2::Test {

/// Same bytes on every platform and run.
class Noise {
 public:
  explicit Noise(std::uint32_t seed) : m_engine(seed) {}
  std::uint8_t Byte() { return static_cast<std::uint8_t>(m_engine() >> 24); }
  std::uint32_t Word() { return static_cast<std::uint32_t>(m_engine()); }

 private:
  std::mt19937 m_engine;
};

enum class Content { Random, Ramp, Zero, Ones, Extremes };

inline constexpr Content kContents[] = {Content::Random, Content::Ramp, Content::Zero,
                                        Content::Ones, Content::Extremes};

void Fill(unsigned char* bytes, std::size_t size, Content content, std::uint32_t seed);

/// The oracle's copy of an image, bytes past the last pixel included; zeros where the image holds
/// fewer.
Reference::Frame FrameOf(const Image& image, std::size_t held = SIZE_MAX);

Reference::Outcome OutcomeOf(const Error& error);

/// Code, message and cause, the shape, and every byte that may be touched, as far as the image
/// holds it.
testing::AssertionResult SameResult(const Reference::Outcome& expected,
                                    const Reference::Frame& expectedFrame, const Error& actual,
                                    const Image& actualImage, std::size_t held = SIZE_MAX);

/// bayerToColor behind the oracle's interface.
int RealEngine(int inputFormat, const std::uint8_t* input, int rows, int cols, int outputFormat,
               std::uint8_t* output, int method, int pattern);

/// The oracle's engine: the definitions of reference/Demosaic.h, and bayerToColor for the methods
/// that they leave out.
int OracleEngine(int inputFormat, const std::uint8_t* input, int rows, int cols, int outputFormat,
                 std::uint8_t* output, int method, int pattern);

/// One conversion, on both sides.
struct Case {
  Reference::Format source = 0;
  Reference::Format target = 0;
  unsigned rows = 0;
  unsigned cols = 0;
  unsigned padding = 0;
  unsigned tile = 0;
  unsigned method = 0;
  Content content = Content::Random;
  bool littleEndian = true;
  /// Byte with which the destination, already in its shape, is filled beforehand; -1: a new one.
  int garbage = -1;
};

std::string Describe(const Case& c);

/// Converts with the library and the oracle and compares everything.
testing::AssertionResult Agrees(const Case& c, Reference::Engine engine = OracleEngine);

}  // namespace Korvex2::Test
