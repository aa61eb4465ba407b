#include "golden/Golden.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "reference/Demosaic.h"
#include "support/Comparison.h"
#include "vorbayer.h"

namespace Korvex2::Test::Golden {
namespace {

constexpr bool kLittleEndian = std::endian::native == std::endian::little;

/// FNV-1a, 64 bits.
class Digest {
 public:
  void Add(const std::uint8_t* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
      m_value = (m_value ^ bytes[i]) * 0x100000001B3U;
    }
  }
  /// The same on every machine.
  void Add(std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
      const auto byte = static_cast<std::uint8_t>(number >> shift);
      Add(&byte, 1);
    }
  }
  std::string Text() const {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(m_value));
    return text;
  }

 private:
  std::uint64_t m_value = 0xCBF29CE484222325U;
};

std::string Label(const char* format, auto... values) {
  char text[64];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

// --- Conversions

struct Shape {
  unsigned rows, cols, padding;
  Content content;
};

// A single pixel, odd groups, the border of colours' range, and runs longer than a piece of the
// walk, of an even and of an odd number of pixels.
constexpr Shape kShapes[] = {{1, 1, 0, Content::Random},
                             {3, 5, 3, Content::Ramp},
                             {6, 130, 0, Content::Extremes},
                             {4, 1030, 0, Content::Random},
                             {3, 1029, 0, Content::Random}};

Image Source(Reference::Format format, const Shape& shape) {
  Image image;
  const unsigned stride = Reference::RowBytes(shape.cols, Reference::BitsPerPixel(format));
  if (image.SetDimensions(shape.rows, shape.cols, stride + shape.padding,
                          static_cast<PixelFormat>(format), GRBG) != VORERROR_OK) {
    throw std::runtime_error("no memory for a picture");
  }
  image.SetColorProcessing(HQ_LINEAR);
  Fill(image.GetData(), image.GetDataSize(), shape.content, format ^ shape.cols);
  return image;
}

std::string DigestOf(const Reference::Outcome& outcome, const Reference::Frame& frame) {
  Digest digest;
  digest.Add(static_cast<std::uint32_t>(outcome.code));
  for (const char c : outcome.message) digest.Add(static_cast<std::uint32_t>(c));
  for (const std::uint32_t number :
       {frame.rows, frame.cols, frame.stride, frame.format, frame.tile, frame.dataSize}) {
    digest.Add(number);
  }
  digest.Add(frame.data, static_cast<std::size_t>(Reference::BufferBytes(
                             frame.rows, frame.cols, frame.stride, frame.format)));
  return digest.Text();
}

std::string ByTheReference(const Image& source, Reference::Format target) {
  Reference::Converter reference;
  reference.littleEndian = kLittleEndian;
  reference.engine = OracleEngine;
  const Reference::Frame from = FrameOf(source);
  Reference::Frame to;
  const Reference::Outcome outcome = reference.Convert(&from, target, &to);
  return DigestOf(outcome, to);
}

std::string ByTheConverter(const Image& source, Reference::Format target) {
  Image to;
  const Error error = ImageConverter().Convert(&source, static_cast<PixelFormat>(target), &to);
  Reference::Frame frame = FrameOf(to);
  frame.dataSize = to.GetDataSize();
  return DigestOf(OutcomeOf(error), frame);
}

Table Conversions(std::string convert(const Image&, Reference::Format)) {
  Table table;
  for (const Reference::FormatRow& source : Reference::Formats()) {
    for (const Reference::FormatRow& target : Reference::Formats()) {
      if (!source.convertible || !target.convertible) continue;
      std::string line = Label("%-6s %-6s", source.name, target.name);
      for (const Shape& shape : kShapes) {
        line += ' ' + convert(Source(source.value, shape), target.value);
      }
      table.push_back(line);
    }
  }
  return table;
}

// --- Demosaicing

struct Mosaic {
  int rows, cols;
  Content content;
};

// Smaller than the conversions' pictures: emulated, the methods in floating point take their time.
constexpr Mosaic kMosaics[] = {{2, 2, Content::Random},
                               {6, 10, Content::Ramp},
                               {10, 34, Content::Extremes},
                               {4, 270, Content::Random}};

struct ColourFormat {
  BayerPixelFormat value;
  const char* name;
  unsigned channels;
  bool words;
};

constexpr ColourFormat kColourFormats[] = {
    {BAYER_PIXEL_FORMAT_BGR8, "BGR8", 3, false},  {BAYER_PIXEL_FORMAT_BGRU8, "BGRU8", 4, false},
    {BAYER_PIXEL_FORMAT_BGR16, "BGR16", 3, true}, {BAYER_PIXEL_FORMAT_BGRU16, "BGRU16", 4, true},
    {BAYER_PIXEL_FORMAT_RGB8, "RGB8", 3, false},  {BAYER_PIXEL_FORMAT_RGBU8, "RGBU8", 4, false},
    {BAYER_PIXEL_FORMAT_RGB16, "RGB16", 3, true}, {BAYER_PIXEL_FORMAT_RGBU16, "RGBU16", 4, true},
};

struct Method {
  BayerMethod value;
  const char* name;
};

// Those that the reference defines come first.
constexpr Method kMethods[] = {
    {BAYER_METHOD_NEAREST_NEIGHBOR, "NEAREST_NEIGHBOR"},
    {BAYER_METHOD_EDGE_SENSING, "EDGE_SENSING"},
    {BAYER_METHOD_HQLINEAR, "HQLINEAR"},
    {BAYER_METHOD_DIRECTIONAL_FILTER, "DIRECTIONAL_FILTER"},
    {BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER, "WEIGHTED_DIRECTIONAL_FILTER"},
    {BAYER_METHOD_RIGOROUS, "RIGOROUS"},
};

std::string DigestOf(const Mosaic& mosaic, BayerPixelFormat input, const ColourFormat& output,
                     BayerMethod method, BayerPattern pattern, Reference::Engine engine) {
  const auto pixels = static_cast<std::size_t>(mosaic.rows) * static_cast<std::size_t>(mosaic.cols);
  std::vector<std::uint8_t> samples(pixels * (input == BAYER_PIXEL_FORMAT_RAW16 ? 2 : 1));
  Fill(samples.data(), samples.size(), mosaic.content, static_cast<std::uint32_t>(mosaic.cols));
  std::vector<std::uint8_t> picture(pixels * output.channels * (output.words ? 2 : 1));
  const int error = engine(input, samples.data(), mosaic.rows, mosaic.cols, output.value,
                           picture.data(), method, pattern);
  if (output.words && !kLittleEndian) {
    for (std::size_t i = 0; i < picture.size(); i += 2) std::swap(picture[i], picture[i + 1]);
  }
  Digest digest;
  digest.Add(static_cast<std::uint32_t>(error));
  digest.Add(picture.data(), picture.size());
  return digest.Text();
}

Table Demosaicing(Reference::Engine engine, std::span<const Method> methods) {
  Table table;
  for (const Method& method : methods) {
    for (const BayerPixelFormat input : {BAYER_PIXEL_FORMAT_RAW8, BAYER_PIXEL_FORMAT_RAW16}) {
      for (const ColourFormat& output : kColourFormats) {
        std::string line = Label("%-27s %-5s %-6s", method.name,
                                 input == BAYER_PIXEL_FORMAT_RAW8 ? "RAW8" : "RAW16", output.name);
        std::size_t tile = table.size();
        for (const Mosaic& mosaic : kMosaics) {
          line += ' ' + DigestOf(mosaic, input, output, method.value,
                                 static_cast<BayerPattern>(tile++ % 4), engine);
        }
        table.push_back(line);
      }
    }
  }
  return table;
}

}  // namespace

Table ConversionsByTheReference() {
  return Conversions(ByTheReference);
}

Table ConversionsByTheConverter() {
  return Conversions(ByTheConverter);
}

Table DemosaicingByTheReference() {
  const auto* const rest =
      std::ranges::find_if_not(kMethods, Reference::DefinesMethod, &Method::value);
  return Demosaicing(Reference::DemosaicByDefinition, {std::begin(kMethods), rest});
}

Table DemosaicingByTheEngine() {
  return Demosaicing(RealEngine, kMethods);
}

std::string ConversionsFile() {
  return std::string(KORVEX2_GOLDEN_FOLDER) +
         (kLittleEndian ? "/little-endian.txt" : "/big-endian.txt");
}

std::string DemosaicingFile() {
  return std::string(KORVEX2_GOLDEN_FOLDER) + "/demosaicing.txt";
}

Table Read(const std::string& file) {
  std::ifstream stream(file);
  Table table;
  for (std::string line; std::getline(stream, line);) table.push_back(line);
  return table;
}

void Write(const std::string& file, const Table& table) {
  std::ofstream stream(file);
  for (const std::string& line : table) stream << line << '\n';
  if (!stream.flush()) throw std::runtime_error("cannot write " + file);
}

}  // namespace Korvex2::Test::Golden
