#include "support/Comparison.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include "reference/Demosaic.h"
#include "vorbayer.h"

namespace Korvex2::Test {

void Fill(unsigned char* bytes, std::size_t size, Content content, std::uint32_t seed) {
  Noise noise(seed);
  for (std::size_t i = 0; i < size; ++i) {
    switch (content) {
      case Content::Random:
        bytes[i] = noise.Byte();
        break;
      case Content::Ramp:
        bytes[i] = static_cast<unsigned char>(i / 3);
        break;
      case Content::Zero:
        bytes[i] = 0;
        break;
      case Content::Ones:
        bytes[i] = 255;
        break;
      case Content::Extremes:
        bytes[i] = noise.Byte() < 128 ? 0 : 255;
        break;
    }
  }
}

Reference::Frame FrameOf(const Image& image, std::size_t held) {
  Reference::Frame frame;
  frame.Shape(image.GetRows(), image.GetCols(), image.GetStride(), image.GetPixelFormat(),
              static_cast<std::uint32_t>(image.GetBayerTileFormat()));
  frame.method = static_cast<std::uint32_t>(image.GetColorProcessing());
  const std::size_t bytes =
      std::min(held, static_cast<std::size_t>(Reference::BufferBytes(frame.rows, frame.cols,
                                                                     frame.stride, frame.format)));
  if (image.GetData() == nullptr) {
    frame.data = nullptr;
  } else if (bytes > 0) {
    std::memcpy(frame.data, image.GetData(), bytes);
  }
  return frame;
}

Reference::Outcome OutcomeOf(const Error& error) {
  Reference::Outcome outcome;
  outcome.code = error.GetType();
  outcome.message = error.GetMessage();
  if (error.GetCause() != nullptr) {
    outcome.hasCause = true;
    outcome.causeCode = error.GetCause()->GetType();
  }
  return outcome;
}

testing::AssertionResult SameResult(const Reference::Outcome& expected,
                                    const Reference::Frame& expectedFrame, const Error& actual,
                                    const Image& actualImage, std::size_t held) {
  const Reference::Outcome outcome = OutcomeOf(actual);
  if (!(outcome == expected)) {
    return testing::AssertionFailure() << "answers " << Reference::Describe(outcome)
                                       << ", expected " << Reference::Describe(expected);
  }
  unsigned int rows = 0;
  unsigned int cols = 0;
  unsigned int stride = 0;
  PixelFormat format = UNSPECIFIED_PIXEL_FORMAT;
  BayerTileFormat tile = NONE;
  actualImage.GetDimensions(&rows, &cols, &stride, &format, &tile);
  if (rows != expectedFrame.rows || cols != expectedFrame.cols || stride != expectedFrame.stride ||
      format != expectedFrame.format || static_cast<std::uint32_t>(tile) != expectedFrame.tile ||
      actualImage.GetDataSize() != expectedFrame.dataSize) {
    return testing::AssertionFailure()
           << "shape " << rows << " x " << cols << " stride " << stride << " format " << format
           << " tile " << tile << ", expected " << expectedFrame.rows << " x " << expectedFrame.cols
           << " stride " << expectedFrame.stride << " format " << expectedFrame.format << " tile "
           << expectedFrame.tile;
  }
  const unsigned char* bytes = actualImage.GetData();
  const std::size_t size = std::min(held, static_cast<std::size_t>(Reference::BufferBytes(
                                              rows, cols, stride, expectedFrame.format)));
  if (size == 0 || std::memcmp(bytes, expectedFrame.data, size) == 0) {
    return testing::AssertionSuccess();
  }
  std::size_t at = 0;
  while (bytes[at] == expectedFrame.data[at]) ++at;
  return testing::AssertionFailure()
         << "byte " << at << " of " << size << " is " << unsigned{bytes[at]} << ", expected "
         << unsigned{expectedFrame.data[at]};
}

int RealEngine(int inputFormat, const std::uint8_t* input, int rows, int cols, int outputFormat,
               std::uint8_t* output, int method, int pattern) {
  return bayerToColor(static_cast<BayerPixelFormat>(inputFormat), input, rows, cols,
                      static_cast<BayerPixelFormat>(outputFormat), output,
                      static_cast<BayerMethod>(method), static_cast<BayerPattern>(pattern));
}

int OracleEngine(int inputFormat, const std::uint8_t* input, int rows, int cols, int outputFormat,
                 std::uint8_t* output, int method, int pattern) {
  if (Reference::DefinesMethod(method)) {
    return Reference::DemosaicByDefinition(inputFormat, input, rows, cols, outputFormat, output,
                                           method, pattern);
  }
  return RealEngine(inputFormat, input, rows, cols, outputFormat, output, method, pattern);
}

std::string Describe(const Case& c) {
  std::ostringstream text;
  text << Reference::FormatName(c.source) << " -> " << Reference::FormatName(c.target) << ", "
       << c.rows << " rows x " << c.cols << " cols + " << c.padding << ", tile " << c.tile
       << ", method " << c.method << ", content " << static_cast<int>(c.content) << ", "
       << (c.littleEndian ? "little" : "big") << " endian, destination "
       << (c.garbage < 0 ? "new" : "used");
  return text.str();
}

testing::AssertionResult Agrees(const Case& c, Reference::Engine engine) {
  Image source;
  const unsigned stride =
      Reference::RowBytes(c.cols, Reference::BitsPerPixel(c.source)) + c.padding;
  const Error shaped =
      source.SetDimensions(c.rows, c.cols, stride, static_cast<PixelFormat>(c.source),
                           static_cast<BayerTileFormat>(c.tile));
  if (shaped != VORERROR_OK) return testing::AssertionFailure() << shaped;
  source.SetColorProcessing(static_cast<ColorProcessingAlgorithm>(c.method));
  Fill(source.GetData(), source.GetDataSize(), c.content, c.source ^ (c.rows * 31 + c.cols));

  const Reference::Frame frame = FrameOf(source);
  Image destination;
  Reference::Frame expected;
  if (c.garbage >= 0) {
    const unsigned packed = Reference::RowBytes(c.cols, Reference::BitsPerPixel(c.target));
    destination.SetDimensions(c.rows, c.cols, packed, static_cast<PixelFormat>(c.target), NONE);
    const auto held =
        static_cast<std::size_t>(Reference::BufferBytes(c.rows, c.cols, packed, c.target));
    std::memset(destination.GetData(), c.garbage, held);
    expected.Shape(c.rows, c.cols, packed, c.target, 0);
    std::memset(expected.data, c.garbage, held);
  }

  Probe probe(c.littleEndian);
  Reference::Converter oracle;
  oracle.littleEndian = c.littleEndian;
  oracle.defaultMethod = static_cast<std::uint32_t>(Image::GetDefaultColorProcessing());
  oracle.engine = engine;

  const Error error = probe.Convert(&source, static_cast<PixelFormat>(c.target), &destination);
  const Reference::Outcome outcome = oracle.Convert(&frame, c.target, &expected);
  const testing::AssertionResult result = SameResult(outcome, expected, error, destination);
  return result ? result : testing::AssertionFailure() << Describe(c) << ": " << result.message();
}

}  // namespace Korvex2::Test
