// Channels moved, added, dropped, widened and narrowed; no arithmetic.
//
// Each channel is read right before it is written, so that a conversion in place gives what these
// loops spell out: a swap of channels 1 and 3 onto itself yields (c3, c2, c3).

#include "kernels/scalar/Scalar.h"
#include "kernels/scalar/Word.h"

namespace Korvex2::Kernels::Scalar {
namespace {

// Copies the first Copied channels of each pixel, in order.
template <typename Sample, std::size_t SourceChannels, std::size_t DestinationChannels,
          std::size_t Copied>
void CopyChannels(const std::uint8_t*& src, std::uint8_t*& dst) {
  for (std::size_t channel = 0; channel < Copied; ++channel) {
    Store(dst + channel * sizeof(Sample), Load<Sample>(src + channel * sizeof(Sample)));
  }
  src += SourceChannels * sizeof(Sample);
  dst += DestinationChannels * sizeof(Sample);
}

template <typename Sample>
void AddAlpha(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels) {
  for (std::size_t i = 0; i < pixels; ++i) {
    CopyChannels<Sample, 3, 4, 3>(src, dst);
    Store(dst - sizeof(Sample), static_cast<Sample>(~Sample{0}));
  }
}

template <typename Sample>
void DropAlpha(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels) {
  for (std::size_t i = 0; i < pixels; ++i) {
    CopyChannels<Sample, 4, 3, 3>(src, dst);
  }
}

void Truncate16To8(const std::uint8_t* src, std::uint8_t* dst, std::size_t samples) {
  for (std::size_t i = 0; i < samples; ++i) {
    dst[i] = static_cast<std::uint8_t>(Load<std::uint16_t>(src + 2 * i) >> 8);
  }
}

// v * 257: the byte repeated, so that 0xFF becomes 0xFFFF.
void Pad8To16(const std::uint8_t* src, std::uint8_t* dst, std::size_t samples) {
  for (std::size_t i = 0; i < samples; ++i) {
    Store(dst + 2 * i, static_cast<std::uint16_t>((src[i] << 8) | src[i]));
  }
}

template <typename Sample>
void SwapC1C3(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels) {
  constexpr std::size_t kSize = sizeof(Sample);
  for (std::size_t i = 0; i < pixels; ++i) {
    Store(dst, Load<Sample>(src + 2 * kSize));
    Store(dst + kSize, Load<Sample>(src + kSize));
    Store(dst + 2 * kSize, Load<Sample>(src));
    src += 3 * kSize;
    dst += 3 * kSize;
  }
}

// Writes the bytes of one word, each taken from the bit position that `shifts` names.
struct Shifts {
  int byte0, byte1, byte2, byte3;
};

void SwapWordBytes(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Shifts shifts) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const auto word = Load<std::uint32_t>(src + 4 * i);
    dst[4 * i + 0] = static_cast<std::uint8_t>(word >> shifts.byte0);
    dst[4 * i + 1] = static_cast<std::uint8_t>(word >> shifts.byte1);
    dst[4 * i + 2] = static_cast<std::uint8_t>(word >> shifts.byte2);
    dst[4 * i + 3] = static_cast<std::uint8_t>(word >> shifts.byte3);
  }
}

}  // namespace

void AddAlphaChannel_8bit(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  AddAlpha<std::uint8_t>(src, dst, pixels);
}

void AddAlphaChannel_16bit(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  AddAlpha<std::uint16_t>(src, dst, pixels);
}

void DropAlphaChannel_8bit(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  DropAlpha<std::uint8_t>(src, dst, pixels);
}

void DropAlphaChannel_16bit(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  DropAlpha<std::uint16_t>(src, dst, pixels);
}

void Truncate_16To8_3Channel(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                             Flags) {
  Truncate16To8(src, dst, 3 * pixels);
}

// The alpha channel is narrowed like the others, not reset.
void Truncate_16To8_4Channel(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                             Flags) {
  Truncate16To8(src, dst, 4 * pixels);
}

void Pad_8To16_3Channel(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  Pad8To16(src, dst, 3 * pixels);
}

void Pad_8To16_4Channel(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels, Flags) {
  Pad8To16(src, dst, 4 * pixels);
}

void Swap_C1C3_3Channel_8bit(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                             Flags) {
  SwapC1C3<std::uint8_t>(src, dst, pixels);
}

void Swap_C1C3_3Channel_16bit(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                              Flags) {
  SwapC1C3<std::uint16_t>(src, dst, pixels);
}

void Swap_C1C3_4Channel_8bit(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                             Flags flags) {
  constexpr Shifts kLittleEndian = {16, 8, 0, 24};
  constexpr Shifts kBigEndian = {8, 16, 24, 0};
  SwapWordBytes(src, dst, pixels, flags.littleEndian ? kLittleEndian : kBigEndian);
}

// Half-words are exchanged by their place in the word, not in memory. On a little-endian host that
// turns (c1, c2, c3, c4) into (c4, c1, c2, c3), which clients have come to rely on; no route of the
// dispatch matrix runs it.
void Swap_C1C3_4Channel_16bit(const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
                              Flags) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const auto first = Load<std::uint32_t>(src + 8 * i);
    const auto second = Load<std::uint32_t>(src + 8 * i + 4);
    Store(dst + 8 * i + 4, static_cast<std::uint16_t>(first >> 16));
    Store(dst + 8 * i + 2, static_cast<std::uint16_t>(first));
    Store(dst + 8 * i + 0, static_cast<std::uint16_t>(second >> 16));
    Store(dst + 8 * i + 6, static_cast<std::uint16_t>(second));
  }
}

}  // namespace Korvex2::Kernels::Scalar
