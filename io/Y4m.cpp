#include "io/Y4m.h"

#include <string_view>
#include <vector>

#include "io/Failure.h"
#include "io/Names.h"

namespace Korvex2::Io {
namespace {

// What the header calls the way in which pixels share chroma; empty for what has no such planes.
std::string_view ChromaName(const PixelFormatInfo& format) {
  if (!format.convertible || format.order != SampleOrder::Bytes) {
    return {};
  }
  if (format.family == PixelFamily::Grey) {
    return "mono";
  }
  if (format.family != PixelFamily::Yuv) {
    return {};
  }
  switch (format.pixelsPerGroup) {
    case 1:
      return "444";
    case 2:
      return "422";
    case 4:
      return "411";
    default:
      return {};
  }
}

// The bytes of a channel in a group, by their place.
std::vector<std::size_t> PlacesOf(std::string_view samples, char channel) {
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < samples.size(); ++place) {
    if (samples[place] == channel) {
      places.push_back(place);
    }
  }
  return places;
}

void AppendPlane(const Image& image, const PixelFormatInfo& format, char channel,
                 std::vector<unsigned char>& frame) {
  const std::vector<std::size_t> places = PlacesOf(format.samples, channel);
  const std::size_t groups = std::size_t{image.GetCols()} * image.GetRows() / format.pixelsPerGroup;
  const unsigned char* source = image.GetData();
  for (std::size_t i = 0; i < groups; ++i, source += format.bytesPerGroup) {
    for (const std::size_t place : places) {
      frame.push_back(source[place]);
    }
  }
}

constexpr std::string_view kMark = "FRAME\n";

std::string HeaderOf(const PixelFormatInfo& format, std::uint32_t cols, std::uint32_t rows,
                     FrameRate rate) {
  return fmt::format("YUV4MPEG2 W{} H{} F{}:{} Ip A1:1 C{} XCOLORRANGE=FULL\n", cols, rows,
                     rate.frames, rate.seconds, ChromaName(format));
}

}  // namespace

bool FitsY4m(PixelFormat format) {
  const PixelFormatInfo* info = FindPixelFormat(format);
  return info != nullptr && !ChromaName(*info).empty();
}

void WriteY4m(const Image& image, OutputFile& file, const WriteOptions& options) {
  const PixelFormatInfo& format = *FindPixelFormat(image.GetPixelFormat());
  if (image.GetCols() % format.pixelsPerGroup != 0) {
    throw Failure("rows of {} pixels of {} have no planes; the width must be a multiple of {}",
                  image.GetCols(), format.name, format.pixelsPerGroup);
  }
  if (file.empty()) {
    const std::string header = HeaderOf(format, image.GetCols(), image.GetRows(), options.rate);
    file.Write(header.data(), header.size());
  }
  std::vector<unsigned char> frame;
  frame.reserve(std::size_t{image.GetCols()} * image.GetRows() / format.pixelsPerGroup *
                format.bytesPerGroup);
  for (const char channel : {'Y', 'U', 'V'}) {
    AppendPlane(image, format, channel, frame);
  }
  file.Write(kMark.data(), kMark.size());
  file.Write(frame.data(), frame.size());
}

std::uint64_t Y4mSize(const PixelFormatInfo& format, std::uint32_t cols, std::uint32_t rows,
                      const WriteOptions& options) {
  const std::uint64_t groups = std::uint64_t{cols} * rows / format.pixelsPerGroup;
  return HeaderOf(format, cols, rows, options.rate).size() + kMark.size() +
         groups * format.bytesPerGroup;
}

}  // namespace Korvex2::Io
