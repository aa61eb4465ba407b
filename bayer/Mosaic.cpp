#include "Mosaic.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace Korvex2::Bayer {

using std::ptrdiff_t;

namespace {

// Each layout reads one sample, and a run of them.

struct Raw8 {
  static constexpr int kBytes = 1;
  static std::uint8_t One(const unsigned char* in) { return *in; }
  static void Run(const unsigned char* in, ptrdiff_t count, std::uint8_t* out) {
    std::memcpy(out, in, static_cast<std::size_t>(count));
  }
};

struct Raw8Widened {
  static constexpr int kBytes = 1;
  static std::uint16_t One(const unsigned char* in) {
    return static_cast<std::uint16_t>(*in * 257);
  }
  static void Run(const unsigned char* in, ptrdiff_t count, std::uint16_t* out) {
    for (ptrdiff_t i = 0; i < count; ++i) out[i] = One(in + i);
  }
};

struct Raw16 {
  static constexpr int kBytes = 2;
  static std::uint16_t One(const unsigned char* in) {
    return static_cast<std::uint16_t>(in[0] | in[1] << 8);
  }
  static void Run(const unsigned char* in, ptrdiff_t count, std::uint16_t* out) {
    if constexpr (std::endian::native == std::endian::little) {
      std::memcpy(out, in, static_cast<std::size_t>(count) * 2);
    } else {
      for (ptrdiff_t i = 0; i < count; ++i) out[i] = One(in + i * 2);
    }
  }
};

template <typename Layout, typename Sample>
void Load(const unsigned char* row, ptrdiff_t cols, ptrdiff_t from, ptrdiff_t to, Sample* out) {
  const ptrdiff_t insideFrom = std::max(from, ptrdiff_t{0});
  const ptrdiff_t insideTo = std::min(to, cols);
  const auto at = [row](ptrdiff_t x) { return row + x * Layout::kBytes; };
  for (ptrdiff_t x = from; x < insideFrom; ++x) out[x - from] = Layout::One(at(Mirrored(x, cols)));
  Layout::Run(at(insideFrom), insideTo - insideFrom, out + (insideFrom - from));
  for (ptrdiff_t x = insideTo; x < to; ++x) out[x - from] = Layout::One(at(Mirrored(x, cols)));
}

}  // namespace

ptrdiff_t Mirrored(ptrdiff_t position, ptrdiff_t size) {
  const ptrdiff_t period = 2 * (size - 1);
  const ptrdiff_t phase = (position % period + period) % period;
  return phase < size ? phase : period - phase;
}

void LoadRow8(const unsigned char* row, ptrdiff_t cols, ptrdiff_t from, ptrdiff_t to,
              std::uint8_t* out) {
  Load<Raw8>(row, cols, from, to, out);
}

void LoadRow8(const unsigned char* row, ptrdiff_t cols, ptrdiff_t from, ptrdiff_t to,
              std::uint16_t* out) {
  Load<Raw8Widened>(row, cols, from, to, out);
}

void LoadRow16(const unsigned char* row, ptrdiff_t cols, ptrdiff_t from, ptrdiff_t to,
               std::uint16_t* out) {
  Load<Raw16>(row, cols, from, to, out);
}

}  // namespace Korvex2::Bayer
