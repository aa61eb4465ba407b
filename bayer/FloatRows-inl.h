/// What the methods that compute in floating point share: rows of floats, their arithmetic, the
/// colour differences along rows and columns.
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

// Steps compute whole vectors, from kBeside columns before the block to columnsEnd(): more columns
// than are looked at, and those farthest out from columns that mean nothing. These still are finite
// numbers, and no step divides by zero.
constexpr int kBeside = 16;
constexpr int columnsEnd(int cols) {
  return (cols + kBeside - 1) / kBeside * kBeside + kBeside;
}

// A ring of rows: row y takes the place of row y - kRows. Columns count from the block's left edge
// and reach `kFloatMargin` and some beyond it on either side.
template <int kRows>
class Ring {
 public:
  static_assert((kRows & (kRows - 1)) == 0);
  Ring(float*& scratch, std::ptrdiff_t stride) : start_(scratch + kFloatMargin), stride_(stride) {
    scratch += kRows * stride;
  }
  float* operator[](int y) const { return start_ + (y & (kRows - 1)) * stride_; }

 private:
  float* start_;
  std::ptrdiff_t stride_;
};

inline float square(float v) {
  return v * v;
}
inline float magnitude(float v) {
  return v < 0 ? -v : v;
}

// One where a row's columns hold red or blue and zero where they hold green, or the reverse; rows
// are told apart by colourParity(). Places are chosen by arithmetic because compilers make vectors
// of it, and the result is that of a choice: the values are finite, so x * 1 + y * 0 is x.
class Places {
 public:
  Places(float*& scratch, std::ptrdiff_t stride) : row_(scratch + kFloatMargin) {
    for (std::ptrdiff_t x = 0; x < stride; ++x) scratch[x] = x % 2 == 0 ? 1.0F : 0.0F;
    scratch += stride;
  }
  const float* colour(int parity) const { return row_ + parity; }
  const float* green(int parity) const { return row_ + 1 - parity; }

 private:
  float* row_;
};

// The parity of the columns that hold red or blue.
template <typename Sample>
int colourParity(const Block<Sample>& block, int y) {
  return (y ^ block.redRow ^ block.redColumn) & 1;
}

// Differences of one level in eight bits, in the unit of the samples.
template <typename Sample>
constexpr float levelOf() {
  return sizeof(Sample) == 1 ? 1.0F : 257.0F;
}

template <typename Sample>
Sample rounded(float v) {
  constexpr float kMost = std::numeric_limits<Sample>::max();
  const float low = v < 0 ? 0.0F : v;
  return static_cast<Sample>(static_cast<std::int32_t>((low > kMost ? kMost : low) + 0.5F));
}

template <typename Sample>
void floatRow(const Sample* __restrict samples, int end, Row out) {
  for (int x = -kBeside; x < end; ++x) out[x] = static_cast<float>(samples[x]);
}

// Green minus red or blue at every place, the missing one of both estimated from five samples of
// the row: (-c + 2g - 2c + 2g - c) / 4 where the middle is red or blue, the
// negative of it where the middle is green.
inline void differenceAlong(In m, In colour, int end, Row out) {
  for (int x = -kBeside; x < end; ++x) {
    const float other = 2 * (m[x - 1] + m[x + 1]) - 2 * m[x] - (m[x - 2] + m[x + 2]);
    out[x] = (0.5F * colour[x] - 0.25F) * other;
  }
}

// The same along columns; m2 is the row itself.
inline void differenceAcross(In m0, In m1, In m2, In m3, In m4, In colour, int end, Row out) {
  for (int x = -kBeside; x < end; ++x) {
    const float other = 2 * (m1[x] + m3[x]) - 2 * m2[x] - (m0[x] + m4[x]);
    out[x] = (0.5F * colour[x] - 0.25F) * other;
  }
}

inline void changeAlong(In d, int end, Row out) {
  for (int x = -kBeside; x < end; ++x) out[x] = magnitude(d[x + 1] - d[x - 1]);
}

inline void changeAcross(In above, In below, int end, Row out) {
  for (int x = -kBeside; x < end; ++x) out[x] = magnitude(below[x] - above[x]);
}

inline void sum3(In a, int end, Row out) {
  for (int x = -kBeside; x < end; ++x) out[x] = (a[x - 1] + a[x + 1]) + a[x];
}

inline void sumOf3(In a, In b, In c, int end, Row out) {
  for (int x = -kBeside; x < end; ++x) out[x] = (a[x] + c[x]) + b[x];
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
