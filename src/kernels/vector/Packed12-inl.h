// Packed 12-bit samples: two of them, A and B, in three bytes, A high, nibbles, B high. Included
// once per instruction set.

#if defined(KORVEX2_PACKED12_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_PACKED12_INL_H_
#undef KORVEX2_PACKED12_INL_H_
#else
#define KORVEX2_PACKED12_INL_H_
#endif

#include "kernels/vector/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

#if KORVEX2_VBMI

// Stores the three bytes of every two pixels of a vector, given as one run of high bytes and the
// nibbles in the low byte of every word.
HWY_INLINE void StoreGroups(Vec8 high, Vec8 nibbles, std::uint8_t* p) {
  constexpr auto kPlace = [](std::size_t i) {
    return i % 3 == 1 ? 64 + i / 3 * 2 : i / 3 * 2 + i % 3 / 2;
  };
  static constexpr Picks kFirst = MakePicks(64, kPlace);
  static constexpr Picks kRest =
      MakePicks(64, [kPlace](std::size_t i) { return kPlace(64 + i % 32); });
  hn::StoreU(Pick(kFirst, high, nibbles), Tag8(), p);
  hn::StoreU(hn::LowerHalf(Pick(kRest, high, nibbles)), Half8(), p + 64);
}

#else

HWY_INLINE void StoreGroups(Vec8 high, Vec8 nibbles, std::uint8_t* p) {
  const Vec16 low = hn::Set(Tag16(), 0x00FF);
  hn::StoreInterleaved3(ToHalf(hn::And(AsWords(high), low)), ToHalf(hn::And(AsWords(nibbles), low)),
                        ToHalf(hn::ShiftRight<8>(AsWords(high))), Half8(), p);
}

#endif

// Stores the upper 12 bits of words that come as their high and their low bytes.
HWY_INLINE void StorePacked12(Vec8 high, Vec8 low, std::uint8_t* p) {
  const Vec16 pairs = AsWords(low);
  const Vec16 ofA = hn::And(hn::ShiftRight<4>(pairs), hn::Set(Tag16(), 0x000F));
  const Vec16 ofB = hn::And(hn::ShiftRight<8>(pairs), hn::Set(Tag16(), 0x00F0));
  StoreGroups(high, AsBytes(hn::Or(ofA, ofB)), p);
}
HWY_INLINE void StorePacked12(Vec16 first, Vec16 second, std::uint8_t* p) {
  StorePacked12(HighBytes(first, second), LowBytesInOrder(first, second), p);
}

// Stores bytes as 12-bit samples: the low nibbles are those of the bytes.
HWY_INLINE void StorePacked12(Vec8 bytes, std::uint8_t* p) {
  const Vec16 pairs = AsWords(bytes);
  const Vec16 ofA = hn::And(pairs, hn::Set(Tag16(), 0x000F));
  const Vec16 ofB = hn::And(hn::ShiftRight<4>(pairs), hn::Set(Tag16(), 0x00F0));
  StoreGroups(bytes, AsBytes(hn::Or(ofA, ofB)), p);
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
