#pragma once

/// A routine on bytes: for tests that say what goes in and what comes out.

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

#include "support/LentImage.h"
#include "support/PlainImage.h"
#include "support/Probe.h"

namespace Korvex2::Test {

using Bytes = std::vector<std::uint8_t>;

/// What `routine` writes for a row of `pixels` pixels into `size` zero bytes, by the plain loops
/// and by whatever is fastest.
inline Bytes Converted(std::string_view routine, Bytes source, unsigned pixels, std::size_t size,
                       bool littleEndian = true) {
  Bytes fastest(size, 0);
  const Image plainFrom = PlainImage(pixels, source.data(), source.size());
  Image plainTo = PlainImage(pixels, fastest.data(), fastest.size());
  EXPECT_EQ(Probe(littleEndian).Call(routine, &plainFrom, &plainTo).GetType(), VORERROR_OK);

  Bytes destination(size, 0);
  const LentImage from(1, pixels, UNSPECIFIED_PIXEL_FORMAT, source.data(), source.size());
  LentImage to(1, pixels, UNSPECIFIED_PIXEL_FORMAT, destination.data(), destination.size());
  const Error error = Probe(littleEndian).Call(routine, &from, &to);
  EXPECT_EQ(error.GetType(), VORERROR_OK) << routine << ": " << error;
  EXPECT_EQ(fastest, destination) << routine;
  return destination;
}

/// 16-bit words of the host as bytes.
inline Bytes Words(std::initializer_list<unsigned> words) {
  Bytes bytes;
  for (const unsigned word : words) {
    const auto value = static_cast<std::uint16_t>(word);
    const auto* p = reinterpret_cast<const std::uint8_t*>(&value);
    bytes.insert(bytes.end(), p, p + 2);
  }
  return bytes;
}

/// 16-bit samples, low byte first.
inline Bytes LowFirst(std::initializer_list<unsigned> samples) {
  Bytes bytes;
  for (const unsigned sample : samples) {
    bytes.push_back(static_cast<std::uint8_t>(sample & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(sample >> 8));
  }
  return bytes;
}

}  // namespace Korvex2::Test
