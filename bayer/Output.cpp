#include "Output.h"

#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>

#include "vorbayer.h"

namespace Korvex2::Bayer {
namespace {

// In the order of BayerPixelFormat, from BGR8 on.
constexpr OutputFormat kFormats[] = {
    {.channels = 3, .bytesPerChannel = 1, .blueFirst = true},   // BGR8
    {.channels = 4, .bytesPerChannel = 1, .blueFirst = true},   // BGRU8
    {.channels = 3, .bytesPerChannel = 2, .blueFirst = true},   // BGR16
    {.channels = 4, .bytesPerChannel = 2, .blueFirst = true},   // BGRU16
    {.channels = 3, .bytesPerChannel = 1, .blueFirst = false},  // RGB8
    {.channels = 4, .bytesPerChannel = 1, .blueFirst = false},  // RGBU8
    {.channels = 3, .bytesPerChannel = 2, .blueFirst = false},  // RGB16
    {.channels = 4, .bytesPerChannel = 2, .blueFirst = false},  // RGBU16
};

void convert(std::uint8_t sample, std::uint8_t& channel) {
  channel = sample;
}
void convert(std::uint16_t sample, std::uint16_t& channel) {
  channel = sample;
}
void convert(std::uint16_t sample, std::uint8_t& channel) {
  channel = static_cast<std::uint8_t>(sample >> 8);
}

template <typename Channel, int channels, typename Sample>
void write(const Sample* first, const Sample* second, const Sample* third, int cols,
           unsigned char* out) {
  Channel pixel[4];
  pixel[3] = std::numeric_limits<Channel>::max();
  for (int x = 0; x < cols; ++x) {
    convert(first[x], pixel[0]);
    convert(second[x], pixel[1]);
    convert(third[x], pixel[2]);
    std::memcpy(out + std::ptrdiff_t{x} * channels * static_cast<int>(sizeof(Channel)), pixel,
                channels * sizeof(Channel));
  }
}

}  // namespace

const OutputFormat* findOutputFormat(int format) {
  if (format < BAYER_PIXEL_FORMAT_BGR8 || format > BAYER_PIXEL_FORMAT_RGBU16) return nullptr;
  return &kFormats[format - BAYER_PIXEL_FORMAT_BGR8];
}

RowWriters rowWritersPlain() {
  return {.three8 = write<std::uint8_t, 3>,
          .four8 = write<std::uint8_t, 4>,
          .three8Narrowed = write<std::uint8_t, 3>,
          .four8Narrowed = write<std::uint8_t, 4>,
          .three16 = write<std::uint16_t, 3>,
          .four16 = write<std::uint16_t, 4>};
}

RowWriters rowWriters([[maybe_unused]] Target target) {
#if KORVEX2_WITH_HIGHWAY
  if (target != Target::kPlain) return rowWritersSimd(target);
#endif
  return rowWritersPlain();
}

}  // namespace Korvex2::Bayer
