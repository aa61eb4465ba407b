#include "io/Y4m.h"

#include <cstring>
#include <string_view>
#include <vector>

#include "io/Failure.h"
#include "io/Names.h"

namespace Korvex2::Io {
namespace {

// Which bytes of a group are luma, and where its chroma lies.
struct Planes {
  PixelFormat format;
  std::string_view name;
  std::string_view luma;  // offsets, as digits
  int u, v;               // negative: there is none
};

constexpr Planes kPlanes[] = {
    {PIXEL_FORMAT_MONO8, "mono", "0", -1, -1},
    {PIXEL_FORMAT_444YUV8, "444", "1", 0, 2},
    {PIXEL_FORMAT_422YUV8, "422", "13", 0, 2},
    {PIXEL_FORMAT_411YUV8, "411", "1245", 0, 3},
};

const Planes* Find(PixelFormat format) {
  for (const Planes& planes : kPlanes) {
    if (planes.format == format) {
      return &planes;
    }
  }
  return nullptr;
}

void AppendPlane(const Image& image, const PixelFormatInfo& format, int offset,
                 std::vector<unsigned char>& frame) {
  const std::size_t groups = std::size_t{image.GetCols()} * image.GetRows() / format.pixelsPerGroup;
  const unsigned char* source = image.GetData() + offset;
  for (std::size_t i = 0; i < groups; ++i, source += format.bytesPerGroup) {
    frame.push_back(*source);
  }
}

void AppendLuma(const Image& image, const PixelFormatInfo& format, std::string_view offsets,
                std::vector<unsigned char>& frame) {
  const std::size_t groups = std::size_t{image.GetCols()} * image.GetRows() / format.pixelsPerGroup;
  const unsigned char* source = image.GetData();
  for (std::size_t i = 0; i < groups; ++i, source += format.bytesPerGroup) {
    for (const char offset : offsets) {
      frame.push_back(source[offset - '0']);
    }
  }
}

constexpr std::string_view kMark = "FRAME\n";

std::string HeaderOf(const Planes& planes, std::uint32_t cols, std::uint32_t rows, FrameRate rate) {
  return fmt::format("YUV4MPEG2 W{} H{} F{}:{} Ip A1:1 C{} XCOLORRANGE=FULL\n", cols, rows,
                     rate.frames, rate.seconds, planes.name);
}

}  // namespace

bool FitsY4m(PixelFormat format) {
  return Find(format) != nullptr;
}

void WriteY4m(const Image& image, OutputFile& file, const WriteOptions& options) {
  const PixelFormatInfo& format = *FindPixelFormat(image.GetPixelFormat());
  const Planes& planes = *Find(format.format);
  if (image.GetCols() % format.pixelsPerGroup != 0) {
    throw Failure("rows of {} pixels of {} have no planes; the width must be a multiple of {}",
                  image.GetCols(), format.name, format.pixelsPerGroup);
  }
  if (file.empty()) {
    const std::string header = HeaderOf(planes, image.GetCols(), image.GetRows(), options.rate);
    file.Write(header.data(), header.size());
  }
  std::vector<unsigned char> frame;
  frame.reserve(std::size_t{image.GetCols()} * image.GetRows() * (planes.u < 0 ? 1 : 3));
  AppendLuma(image, format, planes.luma, frame);
  for (const int offset : {planes.u, planes.v}) {
    if (offset >= 0) {
      AppendPlane(image, format, offset, frame);
    }
  }
  file.Write(kMark.data(), kMark.size());
  file.Write(frame.data(), frame.size());
}

std::uint64_t Y4mSize(const PixelFormatInfo& format, std::uint32_t cols, std::uint32_t rows,
                      const WriteOptions& options) {
  const std::uint64_t groups = std::uint64_t{cols} * rows / format.pixelsPerGroup;
  return HeaderOf(*Find(format.format), cols, rows, options.rate).size() + kMark.size() +
         groups * format.bytesPerGroup;
}

}  // namespace Korvex2::Io
