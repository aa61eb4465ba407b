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

void Convert(std::uint8_t sample, std::uint8_t& channel) {
  channel = sample;
}
void Convert(std::uint16_t sample, std::uint16_t& channel) {
  channel = sample;
}
void Convert(std::uint16_t sample, std::uint8_t& channel) {
  channel = static_cast<std::uint8_t>(sample >> 8);
}

template <typename Channel, int channels, typename Sample>
void Write(const Sample* first, const Sample* second, const Sample* third, int cols,
           unsigned char* out) {
  Channel pixel[4];
  pixel[3] = std::numeric_limits<Channel>::max();
  for (int x = 0; x < cols; ++x) {
    Convert(first[x], pixel[0]);
    Convert(second[x], pixel[1]);
    Convert(third[x], pixel[2]);
    std::memcpy(out + std::ptrdiff_t{x} * channels * static_cast<int>(sizeof(Channel)), pixel,
                channels * sizeof(Channel));
  }
}

}  // namespace

const OutputFormat* FindOutputFormat(int format) {
  if (format < BAYER_PIXEL_FORMAT_BGR8 || format > BAYER_PIXEL_FORMAT_RGBU16) return nullptr;
  return &kFormats[format - BAYER_PIXEL_FORMAT_BGR8];
}

RowWriters PlainRowWriters() {
  return {.three8 = Write<std::uint8_t, 3>,
          .four8 = Write<std::uint8_t, 4>,
          .three8Narrowed = Write<std::uint8_t, 3>,
          .four8Narrowed = Write<std::uint8_t, 4>,
          .three16 = Write<std::uint16_t, 3>,
          .four16 = Write<std::uint16_t, 4>};
}

RowWriters RowWritersFor([[maybe_unused]] InstructionSet set) {
#if KORVEX2_WITH_HIGHWAY
  if (set != InstructionSet::Plain) return SimdRowWriters(set);
#endif
  return PlainRowWriters();
}

}  // namespace Korvex2::Bayer
