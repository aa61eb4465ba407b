/// What the methods that compute in floating point share: rows of floats and their arithmetic.
///
/// These are plain loops over rows that the compiler turns into vectors. Like the methods' own
/// -inl.h files, this one is compiled for plain C++ and once more for every instruction set, each
/// in a namespace of its own. All of them give the same bytes: the operations are those of IEEE
/// arithmetic, no product is contracted with a sum, nothing is reassociated. Terms that a flip or a
/// transposition of the picture exchanges are added as pairs, so the result turns with the picture
/// to the last bit.

#if defined(KORVEX2_BAYER_FLOAT_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_BAYER_FLOAT_ROWS_INL_H_
#undef KORVEX2_BAYER_FLOAT_ROWS_INL_H_
#else
#define KORVEX2_BAYER_FLOAT_ROWS_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <limits>

#include "FloatRows.h"
#include "Method.h"
#include "TargetCode-inl.h"

KORVEX2_BAYER_BEGIN_TARGET_CODE

using Row = float* __restrict;
using In = const float* __restrict;

// The columns that a step computes: whole vectors, and more than are looked at. Those farthest out
// come from columns that mean nothing and mean nothing themselves.
struct Columns {
  int begin;
  int end;
};

constexpr int kColumnStep = 16;
constexpr int RoundedUp(int cols) {
  return (cols + kColumnStep - 1) / kColumnStep * kColumnStep;
}

// The block's columns and at least `beside` on either side.
constexpr Columns ColumnsAround(int cols, int beside) {
  return {-RoundedUp(beside), RoundedUp(cols) + RoundedUp(beside)};
}

// A ring of rows: row y takes the place of row y - kRows. Columns count from the block's left edge
// and reach `kFloatMargin` and some beyond it on either side.
template <int kRows>
class Ring {
 public:
  static_assert((kRows & (kRows - 1)) == 0);
  Ring(float*& scratch, std::ptrdiff_t stride) : m_start(scratch + kFloatMargin), m_stride(stride) {
    scratch += kRows * stride;
  }
  float* operator[](int y) const { return m_start + (y & (kRows - 1)) * m_stride; }

 private:
  float* m_start;
  std::ptrdiff_t m_stride;
};

inline float Square(float v) {
  return v * v;
}
inline float Magnitude(float v) {
  return v < 0 ? -v : v;
}

// One where a row's columns hold red or blue and zero where they hold green, or the reverse; rows
// are told apart by ColourParity(). Places are chosen by arithmetic because compilers make vectors
// of it, and the result is that of a choice: the values are finite, so x * 1 + y * 0 is x.
class Places {
 public:
  Places(float*& scratch, std::ptrdiff_t stride) : m_row(scratch + kFloatMargin) {
    for (std::ptrdiff_t x = 0; x < stride; ++x) scratch[x] = x % 2 == 0 ? 1.0F : 0.0F;
    scratch += stride;
  }
  const float* Colour(int parity) const { return m_row + parity; }
  const float* Green(int parity) const { return m_row + 1 - parity; }

 private:
  float* m_row;
};

// The parity of the columns that hold red or blue.
template <typename Sample>
int ColourParity(const Block<Sample>& block, int y) {
  return (y ^ block.redRow ^ block.redColumn) & 1;
}

// Differences of one level in eight bits, in the unit of the samples.
template <typename Sample>
constexpr float LevelOf() {
  return sizeof(Sample) == 1 ? 1.0F : 257.0F;
}

// Within the range of samples.
template <typename Sample>
std::int32_t RoundedInt(float v) {
  constexpr float kMost = std::numeric_limits<Sample>::max();
  const float low = v < 0 ? 0.0F : v;
  return static_cast<std::int32_t>((low > kMost ? kMost : low) + 0.5F);
}
template <typename Sample>
Sample Rounded(float v) {
  return static_cast<Sample>(RoundedInt<Sample>(v));
}

template <typename Sample>
void FloatRow(const Sample* __restrict samples, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = static_cast<float>(samples[x]);
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
