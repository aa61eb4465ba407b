#include "analysis/CodeLength.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <span>

namespace Korvex2::Tool {
namespace {

using Piece = std::vector<std::uint16_t>;
using Counts = std::array<std::uint32_t, 256>;

// Bits of an adaptive code for symbols with these counts. It begins as if it had seen each symbol
// kSeen times, so that new symbols are dear and usual ones soon cheap.
double CodeLength(std::span<const std::uint32_t> counts) {
  constexpr double kSeen = 1.0 / 32;
  const double start = kSeen * static_cast<double>(counts.size());
  double total = start;
  double bits = 0;
  for (const std::uint32_t count : counts) {
    if (count > 0) {
      total += count;
      bits -= std::lgamma(count + kSeen) - std::lgamma(kSeen);
    }
  }
  return (bits + std::lgamma(total) - std::lgamma(start)) / std::numbers::ln2;
}

// Differences, coded in a high part that knows how large the one before was, and a low part that
// knows the high one: so 8-bit samples, which are all high part, and deeper ones are predicted
// alike.
class Coder {
 public:
  explicit Coder(unsigned depth) : m_lowBits(depth - 8), m_mask((1U << depth) - 1) {}

  void Add(int difference) {
    const unsigned value = static_cast<unsigned>(difference) & m_mask;
    const unsigned high = value >> m_lowBits;
    ++m_high[m_before][high];
    m_before = ClassOf(high);
    if (m_lowBits > 0) {
      ++m_low[m_before][value & ((1U << m_lowBits) - 1)];
    }
    ++m_count;
  }

  std::uint64_t count() const { return m_count; }

  double BitsPerSample() const {
    double bits = 0;
    for (std::size_t i = 0; i < kClasses; ++i) {
      bits += CodeLength(m_high[i]);
      bits += CodeLength(std::span(m_low[i]).first(std::size_t{1} << m_lowBits));
    }
    return bits / static_cast<double>(m_count);
  }

 private:
  static constexpr std::size_t kClasses = 5;

  // None, minus one, small, medium, large.
  static std::size_t ClassOf(unsigned high) {
    const unsigned size = high < 128 ? high : 256 - high;
    return size == 0 ? 0 : high == 255 ? 1 : size <= 2 ? 2 : size <= 12 ? 3 : 4;
  }

  unsigned m_lowBits;
  unsigned m_mask;
  std::size_t m_before = 0;
  std::uint64_t m_count = 0;
  std::array<Counts, kClasses> m_high{};
  std::array<Counts, kClasses> m_low{};
};

// --- Predictors ----------------------------------------------------------------------------------

// The neighbours at the left, above, and left of that one.
int Median(int left, int above, int corner) {
  const auto [least, most] = std::minmax(left, above);
  return std::clamp(left + above - corner, least, most);
}
int Mean(int left, int above, int) {
  return (left + above) / 2;
}
int Plain(int left, int above, int corner) {
  return left + above - corner;
}

template <typename Predict>
double Adjacent(const Samples& samples, std::size_t width, Predict predict, std::size_t step) {
  Coder coder(samples.depth);
  const std::size_t up = width * step;
  for (const Piece& piece : samples.pieces) {
    for (std::size_t i = up + step; i < piece.size(); ++i) {
      coder.Add(piece[i] - predict(piece[i - step], piece[i - up], piece[i - up - step]));
    }
  }
  return coder.count() == 0 ? samples.depth : coder.BitsPerSample();
}

// The sample two rows above, changed as the other colour beside it did, and the same along the
// row.
double Crossing(const Samples& samples, std::size_t width) {
  Coder coder(samples.depth);
  for (const Piece& piece : samples.pieces) {
    for (std::size_t i = 2 * width + 2; i < piece.size(); ++i) {
      const int down = piece[i - 2 * width] + piece[i - 1] - piece[i - 2 * width - 1];
      const int across = piece[i - 2] + piece[i - width] - piece[i - width - 2];
      coder.Add(piece[i] - (down + across) / 2);
    }
  }
  return coder.count() == 0 ? samples.depth : coder.BitsPerSample();
}

}  // namespace

double BitsPerSample(const Samples& samples, Neighbours neighbours, std::size_t width) {
  const std::size_t step = neighbours == Neighbours::Mosaic ? 2 : 1;
  const double best =
      std::min({Adjacent(samples, width, Median, step), Adjacent(samples, width, Mean, step),
                neighbours == Neighbours::Mosaic ? Crossing(samples, width)
                                                 : Adjacent(samples, width, Plain, step)});
  return std::min(best, static_cast<double>(samples.depth));
}

bool LowBitsFollow(const Samples& samples, unsigned bits) {
  constexpr int kUnseen = -1;
  std::vector<int> follows(std::size_t{1} << (samples.depth - bits), kUnseen);
  for (const Piece& piece : samples.pieces) {
    for (const std::uint16_t sample : piece) {
      int& low = follows[sample >> bits];
      const int found = sample & ((1 << bits) - 1);
      if (low == kUnseen) {
        low = found;
      } else if (low != found) {
        return false;
      }
    }
  }
  return true;
}

double RowDifference(const Samples& samples, Neighbours neighbours, std::size_t width) {
  constexpr std::size_t kEnough = 1U << 16;
  const std::size_t up = neighbours == Neighbours::Mosaic ? 2 * width : width;
  const std::size_t most = kEnough / std::max<std::size_t>(samples.pieces.size(), 1);
  double sum = 0;
  std::size_t count = 0;
  for (const Piece& piece : samples.pieces) {
    const std::size_t here = piece.size() > up ? piece.size() - up : 0;
    const std::size_t stride = here / most + 1;
    for (std::size_t i = up; i < piece.size(); i += stride, ++count) {
      sum += std::abs(piece[i] - piece[i - up]);
    }
  }
  return count == 0 ? std::numeric_limits<double>::infinity() : sum / static_cast<double>(count);
}

}  // namespace Korvex2::Tool
