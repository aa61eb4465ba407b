#pragma once

/// Pictures, mosaics and calls that the tests of the demosaic engine share.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>
#include <random>
#include <vector>

#include "Demosaic.h"
#include "vorbayer.h"

namespace Korvex2::Bayer {

inline constexpr BayerMethod kAllMethods[] = {BAYER_METHOD_NEAREST_NEIGHBOR,
                                              BAYER_METHOD_EDGE_SENSING,
                                              BAYER_METHOD_HQLINEAR,
                                              BAYER_METHOD_DIRECTIONAL_FILTER,
                                              BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER,
                                              BAYER_METHOD_RIGOROUS};

inline constexpr BayerPattern kAllPatterns[] = {BAYER_PATTERN_RGGB, BAYER_PATTERN_GRBG,
                                                BAYER_PATTERN_GBRG, BAYER_PATTERN_BGGR};

inline constexpr BayerPixelFormat kInputFormats[] = {BAYER_PIXEL_FORMAT_RAW8,
                                                     BAYER_PIXEL_FORMAT_RAW16};

inline constexpr BayerPixelFormat kOutputFormats[] = {
    BAYER_PIXEL_FORMAT_BGR8,   BAYER_PIXEL_FORMAT_BGRU8, BAYER_PIXEL_FORMAT_BGR16,
    BAYER_PIXEL_FORMAT_BGRU16, BAYER_PIXEL_FORMAT_RGB8,  BAYER_PIXEL_FORMAT_RGBU8,
    BAYER_PIXEL_FORMAT_RGB16,  BAYER_PIXEL_FORMAT_RGBU16};

/// The name of a method as part of a test's name.
const char* MethodName(BayerMethod method);

/// Layouts, written out once more, apart from the engine's own table.
int ChannelsOf(BayerPixelFormat format);
int ChannelBytesOf(BayerPixelFormat format);
bool BlueFirstIn(BayerPixelFormat format);

/// 0 red, 1 green, 2 blue.
int ColourAt(BayerPattern pattern, int y, int x);

/// Rows of samples or of RGB triples. Values are at most 255 or 65535, as the test sees fit.
struct Mosaic {
  int rows;
  int cols;
  std::vector<std::uint16_t> samples;

  Mosaic(int rows, int cols)
      : rows(rows),
        cols(cols),
        samples(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols)) {}
  std::uint16_t& at(int y, int x) { return samples[static_cast<std::size_t>(y * cols + x)]; }
  std::uint16_t at(int y, int x) const { return samples[static_cast<std::size_t>(y * cols + x)]; }
};

using Rgb = std::array<std::uint16_t, 3>;

struct Picture {
  int rows;
  int cols;
  std::vector<Rgb> pixels;

  Picture(int rows, int cols)
      : rows(rows),
        cols(cols),
        pixels(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols)) {}
  Rgb& at(int y, int x) { return pixels[static_cast<std::size_t>(y * cols + x)]; }
  const Rgb& at(int y, int x) const { return pixels[static_cast<std::size_t>(y * cols + x)]; }
  bool operator==(const Picture&) const = default;
};

Mosaic MosaicOf(const Picture& picture, BayerPattern pattern);

/// A block of the heap of exactly this many bytes, so that a sanitizer sees every step outside.
class Bytes {
 public:
  explicit Bytes(std::size_t size, unsigned char fill = 0)
      : m_size(size), m_data(new unsigned char[size]) {
    std::memset(m_data.get(), fill, size);
  }
  unsigned char* data() { return m_data.get(); }
  const unsigned char* data() const { return m_data.get(); }
  std::size_t size() const { return m_size; }
  bool operator==(const Bytes& other) const {
    return m_size == other.m_size && std::memcmp(data(), other.data(), m_size) == 0;
  }

 private:
  std::size_t m_size;
  std::unique_ptr<unsigned char[]> m_data;
};

/// The mosaic as RAW8 (values up to 255) or RAW16, low byte first.
Bytes Encoded(const Mosaic& mosaic, BayerPixelFormat format);

/// Bytes of a picture of that size.
std::size_t PictureBytes(int rows, int cols, BayerPixelFormat format);

/// The colours of a picture in any of the eight formats; fails the test if an alpha is not opaque.
Picture Decoded(const Bytes& bytes, int rows, int cols, BayerPixelFormat format);

/// What to do with a mosaic.
struct Call {
  BayerMethod method = BAYER_METHOD_HQLINEAR;
  BayerPattern pattern = BAYER_PATTERN_RGGB;
  BayerPixelFormat input = BAYER_PIXEL_FORMAT_RAW8;
  BayerPixelFormat output = BAYER_PIXEL_FORMAT_RGB8;
  Settings settings = {};
};

/// Runs the engine between blocks of exactly the right size; fails the test if it does not succeed.
Bytes DemosaicedBytes(const Mosaic& mosaic, const Call& call, unsigned char fill = 0);
Picture Demosaiced(const Mosaic& mosaic, const Call& call);

/// Random samples 0 .. most.
Mosaic RandomMosaic(int rows, int cols, std::uint16_t most, std::uint32_t seed);

/// Samples that are 0 or `most`.
Mosaic ExtremeMosaic(int rows, int cols, std::uint16_t most, std::uint32_t seed);

/// Calls compare(mosaic, input, output) with random samples in every format, and with what
/// saturates and what ties at every depth.
template <typename Compare>
void ForEachContent(int rows, int cols, Compare compare) {
  const auto seed = static_cast<std::uint32_t>(rows * 1000 + cols);
  for (const BayerPixelFormat input : kInputFormats) {
    const std::uint16_t most = input == BAYER_PIXEL_FORMAT_RAW8 ? 255 : 65535;
    const Mosaic random = RandomMosaic(rows, cols, most, seed);
    const Mosaic extreme = ExtremeMosaic(rows, cols, most, seed);
    const Mosaic dim = RandomMosaic(rows, cols, 3, seed);
    for (const BayerPixelFormat output : kOutputFormats) compare(random, input, output);
    for (const BayerPixelFormat output : {BAYER_PIXEL_FORMAT_BGR8, BAYER_PIXEL_FORMAT_RGB16}) {
      compare(extreme, input, output);
      compare(dim, input, output);
    }
  }
}

/// A made-up 8-bit scene: shaded ground, discs with soft edges, gratings, grain, colours that
/// follow the brightness as those of real scenes do. Looks the same everywhere, the border
/// included.
Picture Scene(int rows, int cols, std::uint32_t seed);

}  // namespace Korvex2::Bayer
