/// Rows taken apart into their even and their odd columns, so that steps for red and blue places or
/// for green ones compute those only. Place i of a half holds column 2 * i or 2 * i + 1. See
/// FloatRows-inl.h.

#if defined(KORVEX2_BAYER_HALF_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_BAYER_HALF_ROWS_INL_H_
#undef KORVEX2_BAYER_HALF_ROWS_INL_H_
#else
#define KORVEX2_BAYER_HALF_ROWS_INL_H_
#endif

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "Stages-inl.h"

KORVEX2_BAYER_BEGIN_TARGET_CODE

// Two neighbours as one word. Compilers shift words where they would shuffle single elements.
template <typename T>
using PairWord = std::conditional_t<sizeof(T) == 1, std::uint16_t, std::uint32_t>;

template <typename T, int kParity>
inline constexpr bool kLowInPair = (kParity == 0) == (std::endian::native == std::endian::little);

// Element i of a half of a whole row.
template <int kParity, typename T>
std::int32_t IntAt(const T* row, int i) {
  if constexpr (sizeof(T) == 4) {
    return row[2 * i + kParity];
  } else {
    constexpr int kBits = 8 * sizeof(T);
    PairWord<T> pair;
    std::memcpy(&pair, row + 2 * i, sizeof(pair));
    const auto word = static_cast<std::uint32_t>(pair) << (32 - 2 * kBits);
    const auto high = kLowInPair<T, kParity> ? word << kBits : word;
    if constexpr (std::is_signed_v<T>) return static_cast<std::int32_t>(high) >> (32 - kBits);
    return static_cast<std::int32_t>(high >> (32 - kBits));
  }
}

template <int kParity, typename T>
float FloatAt(const T* row, int i) {
  return static_cast<float>(IntAt<kParity>(row, i));
}

// Writes element i of both halves, that of columns of kParity first in the arguments.
template <int kParity, typename T>
void Put(T* row, int i, std::int32_t one, std::int32_t other) {
  const std::int32_t low = kLowInPair<T, kParity> ? one : other;
  const std::int32_t high = kLowInPair<T, kParity> ? other : one;
  const auto pair = static_cast<PairWord<T>>(static_cast<std::uint32_t>(low) |
                                             static_cast<std::uint32_t>(high) << (8 * sizeof(T)));
  std::memcpy(row + 2 * i, &pair, sizeof(pair));
}

// The same of rows of stages. The pair's other element is dropped, so this looks at no other
// column.
template <int kParity, typename T, int kLeft, int kRight>
std::int32_t IntAt(WholeRow<T, kLeft, kRight> row, int i) {
  return IntAt<kParity>(row.Start(), i);
}

template <int kParity, typename T, int kLeft, int kRight>
float FloatAt(WholeRow<T, kLeft, kRight> row, int i) {
  return FloatAt<kParity>(row.Start(), i);
}

template <int kParity, auto kName, typename T>
void Put(OutRow<kName, T> row, int i, std::int32_t one, std::int32_t other) {
  Put<kParity>(row.Start(), i, one, other);
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
