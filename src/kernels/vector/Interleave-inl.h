// Pixels of 3 and 4 interleaved channels, as one vector a channel.
//
// A Load reads the pixels of one vector of bytes from a format, a Store writes them to another; a
// pixel is (red, green, blue, alpha), 8 bits each; kBytesOfTwo are the bytes of two pixels. Formats
// of 16 bits keep the high byte of what they load and repeat the byte in what they store. Included
// once per instruction set.

#if defined(KORVEX2_INTERLEAVE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_INTERLEAVE_INL_H_
#undef KORVEX2_INTERLEAVE_INL_H_
#else
#define KORVEX2_INTERLEAVE_INL_H_
#endif

#include "kernels/vector/Highway-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

// --- Three and four channels of bytes to and from one run

#if KORVEX2_VBMI

// A vector of bytes chosen from a run that two loads reach, the second of which starts at `second`.
struct Picks {
  ByteTable place;
  std::uint64_t fromSecond;
};

template <typename Place>
constexpr Picks MakePicks(std::size_t second, Place place) {
  Picks picks = {};
  for (std::size_t i = 0; i < 64; ++i) {
    const std::size_t at = place(i);
    const bool late = at >= 64;
    picks.place.at[i] = static_cast<std::uint8_t>(late ? at - second : at);
    picks.fromSecond |= std::uint64_t{late} << i;
  }
  return picks;
}

HWY_INLINE Vec8 Pick(const Picks& picks, Vec8 first, Vec8 second) {
  const __m512i place = _mm512_load_si512(picks.place.at);
  const __m512i v = _mm512_permutexvar_epi8(place, first.raw);
  return Vec8{_mm512_mask_permutexvar_epi8(v, picks.fromSecond, place, second.raw)};
}

// Byte i of a run of three channels belongs to pixel i / 3, channel i % 3.
struct ThreeChannels {
  ByteTable pixel[3];        // of the bytes of three vectors of the run
  std::uint64_t mask[3][3];  // which bytes of a vector of the run are of a channel
  ByteTable place[3];        // of the pixels of a channel, within their vector of the run
  std::uint64_t from[3][3];  // which pixels of a channel lie in a vector of the run
};

constexpr ThreeChannels MakeThreeChannels() {
  ThreeChannels t = {};
  for (unsigned at = 0; at < 192; ++at) {
    const unsigned vector = at / 64;
    const unsigned pixel = at / 3;
    const unsigned channel = at % 3;
    t.pixel[vector].at[at % 64] = static_cast<std::uint8_t>(pixel);
    t.mask[vector][channel] |= std::uint64_t{1} << (at % 64);
    t.place[channel].at[pixel] = static_cast<std::uint8_t>(at % 64);
    t.from[channel][vector] |= std::uint64_t{1} << pixel;
  }
  return t;
}
inline constexpr ThreeChannels kThreeChannels = MakeThreeChannels();

// Bytes of three vectors, chosen by a table and a mask for each.
HWY_INLINE Vec8 Choose(const ByteTable& table, const std::uint64_t (&masks)[3], Vec8 a, Vec8 b,
                       Vec8 c) {
  const __m512i index = _mm512_load_si512(table.at);
  __m512i v = _mm512_maskz_permutexvar_epi8(masks[0], index, a.raw);
  v = _mm512_mask_permutexvar_epi8(v, masks[1], index, b.raw);
  return Vec8{_mm512_mask_permutexvar_epi8(v, masks[2], index, c.raw)};
}

HWY_INLINE void JoinThree(Vec8 a, Vec8 b, Vec8 c, Vec8 (&run)[3]) {
  for (int k = 0; k < 3; ++k) {
    run[k] = Choose(kThreeChannels.pixel[k], kThreeChannels.mask[k], a, b, c);
  }
}

HWY_INLINE void LoadThree(const std::uint8_t* p, Vec8& a, Vec8& b, Vec8& c) {
  const Tag8 d;
  const Vec8 v0 = hn::LoadU(d, p);
  const Vec8 v1 = hn::LoadU(d, p + 64);
  const Vec8 v2 = hn::LoadU(d, p + 128);
  a = Choose(kThreeChannels.place[0], kThreeChannels.from[0], v0, v1, v2);
  b = Choose(kThreeChannels.place[1], kThreeChannels.from[1], v0, v1, v2);
  c = Choose(kThreeChannels.place[2], kThreeChannels.from[2], v0, v1, v2);
}

HWY_INLINE void StoreThree(Vec8 a, Vec8 b, Vec8 c, std::uint8_t* p) {
  Vec8 run[3];
  JoinThree(a, b, c, run);
  for (int k = 0; k < 3; ++k) {
    hn::StoreU(run[k], Tag8(), p + 64 * k);
  }
}

#else

HWY_INLINE void LoadThree(const std::uint8_t* p, Vec8& a, Vec8& b, Vec8& c) {
  hn::LoadInterleaved3(Tag8(), p, a, b, c);
}
HWY_INLINE void StoreThree(Vec8 a, Vec8 b, Vec8 c, std::uint8_t* p) {
  hn::StoreInterleaved3(a, b, c, Tag8(), p);
}

#endif

#if KORVEX2_X86

constexpr std::size_t kBlocks = HWY_MAX_BYTES / 16;

// The double words of a vector, 4 in each block, as a matrix: row block, column place.
struct alignas(64) DoubleWordTable {
  std::int32_t at[16];
};
constexpr DoubleWordTable MakeTransposition() {
  DoubleWordTable t = {};
  for (std::size_t i = 0; i < 4 * kBlocks; ++i) {
    t.at[i] = static_cast<std::int32_t>(i % 4 * kBlocks + i / 4);
  }
  return t;
}
constexpr DoubleWordTable MakeInverse() {
  DoubleWordTable t = {};
  for (std::size_t i = 0; i < 4 * kBlocks; ++i) {
    t.at[i] = static_cast<std::int32_t>(i % kBlocks * 4 + i / kBlocks);
  }
  return t;
}
inline constexpr DoubleWordTable kTransposition = MakeTransposition();
inline constexpr DoubleWordTable kInverse = MakeInverse();

HWY_INLINE Vec8 Permute(Vec8 v, const DoubleWordTable& table) {
  const Tag32 d;
  return AsBytes(hn::TableLookupLanes(AsDoubleWords(v), hn::SetTableIndices(d, table.at)));
}

// Four channels as four vectors of pixels of four bytes: block b of vector k holds pixels 16 b + 4
// k to 16 b + 4 k + 3.
HWY_INLINE void JoinFour(Vec8 a, Vec8 b, Vec8 c, Vec8 d, Vec8 (&quads)[4]) {
  const Vec16 ab0 = AsWords(hn::InterleaveLower(Tag8(), a, b));
  const Vec16 ab1 = AsWords(hn::InterleaveUpper(Tag8(), a, b));
  const Vec16 cd0 = AsWords(hn::InterleaveLower(Tag8(), c, d));
  const Vec16 cd1 = AsWords(hn::InterleaveUpper(Tag8(), c, d));
  quads[0] = AsBytes(hn::InterleaveLower(Tag16(), ab0, cd0));
  quads[1] = AsBytes(hn::InterleaveUpper(Tag16(), ab0, cd0));
  quads[2] = AsBytes(hn::InterleaveLower(Tag16(), ab1, cd1));
  quads[3] = AsBytes(hn::InterleaveUpper(Tag16(), ab1, cd1));
}

// The same with the pixels in order throughout.
HWY_INLINE void JoinFourInOrder(Vec8 a, Vec8 b, Vec8 c, Vec8 d, Vec8 (&run)[4]) {
  JoinFour(Permute(a, kTransposition), Permute(b, kTransposition), Permute(c, kTransposition),
           Permute(d, kTransposition), run);
}

HWY_INLINE void StoreFour(Vec8 a, Vec8 b, Vec8 c, Vec8 d, std::uint8_t* p) {
  Vec8 run[4];
  JoinFourInOrder(a, b, c, d, run);
  for (std::size_t k = 0; k < 4; ++k) {
    hn::StoreU(run[k], Tag8(), p + k * HWY_MAX_BYTES);
  }
}

#else

HWY_INLINE void StoreFour(Vec8 a, Vec8 b, Vec8 c, Vec8 d, std::uint8_t* p) {
  hn::StoreInterleaved4(a, b, c, d, Tag8(), p);
}

#endif

HWY_INLINE void LoadFour(const std::uint8_t* p, Vec8& a, Vec8& b, Vec8& c, Vec8& d) {
  hn::LoadInterleaved4(Tag8(), p, a, b, c, d);
}

// --- Bytes and words

// The high, or the low, bytes of two vectors of words, in order.
#if KORVEX2_VBMI

HWY_INLINE Vec8 HighBytes(Vec16 low, Vec16 high) {
  static constexpr Picks kOdd = MakePicks(64, [](std::size_t i) { return 2 * i + 1; });
  return Pick(kOdd, AsBytes(low), AsBytes(high));
}
HWY_INLINE Vec8 LowBytesInOrder(Vec16 low, Vec16 high) {
  static constexpr Picks kEven = MakePicks(64, [](std::size_t i) { return 2 * i; });
  return Pick(kEven, AsBytes(low), AsBytes(high));
}

#else

HWY_INLINE hn::Vec<Half8> ToHalf(Vec16 bytes) {
  return hn::DemoteTo(Half8(), hn::BitCast(hn::RebindToSigned<Tag16>(), bytes));
}
HWY_INLINE Vec8 HighBytes(Vec16 low, Vec16 high) {
  return hn::Combine(Tag8(), ToHalf(hn::ShiftRight<8>(high)), ToHalf(hn::ShiftRight<8>(low)));
}
HWY_INLINE Vec8 LowBytesInOrder(Vec16 low, Vec16 high) {
  const Vec16 mask = hn::Set(Tag16(), 0x00FF);
  return hn::Combine(Tag8(), ToHalf(hn::And(high, mask)), ToHalf(hn::And(low, mask)));
}

#endif

// v * 257 of the first and of the second half of a vector of bytes, in order.
HWY_INLINE Vec16 Repeat(hn::Vec<Half8> bytes) {
  const Vec16 words = hn::PromoteTo(Tag16(), bytes);
  return hn::Or(hn::ShiftLeft<8>(words), words);
}
HWY_INLINE Vec16 RepeatLower(Vec8 bytes) {
  return Repeat(hn::LowerHalf(bytes));
}
HWY_INLINE Vec16 RepeatUpper(Vec8 bytes) {
  return Repeat(hn::UpperHalf(Half8(), bytes));
}

#if KORVEX2_VBMI
// Every byte of the lower and of the upper half of a vector twice.
inline constexpr Picks kTwiceLower = MakePicks(0, [](std::size_t i) { return i / 2; });
inline constexpr Picks kTwiceUpper = MakePicks(0, [](std::size_t i) { return 32 + i / 2; });
#endif

struct LoadY8 {
  static constexpr std::size_t kBytesOfTwo = 2;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    r = g = b = hn::LoadU(Tag8(), p);
    a = hn::Set(Tag8(), 0xFF);
  }
};

struct LoadRgb {
  static constexpr std::size_t kBytesOfTwo = 6;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    LoadThree(p, r, g, b);
    a = hn::Set(Tag8(), 0xFF);
  }
};

struct LoadRgbu {
  static constexpr std::size_t kBytesOfTwo = 8;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    LoadFour(p, r, g, b, a);
  }
};

struct LoadY16 {
  static constexpr std::size_t kBytesOfTwo = 4;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    const auto* words = reinterpret_cast<const std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    r = g = b = HighBytes(hn::LoadU(Tag16(), words), hn::LoadU(Tag16(), words + n));
    a = hn::Set(Tag8(), 0xFF);
  }
};

struct LoadRgb16 {
  static constexpr std::size_t kBytesOfTwo = 12;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    const auto* words = reinterpret_cast<const std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    Vec16 r0, g0, b0, r1, g1, b1;
    hn::LoadInterleaved3(Tag16(), words, r0, g0, b0);
    hn::LoadInterleaved3(Tag16(), words + 3 * n, r1, g1, b1);
    r = HighBytes(r0, r1);
    g = HighBytes(g0, g1);
    b = HighBytes(b0, b1);
    a = hn::Set(Tag8(), 0xFF);
  }
};

struct LoadRgbu16 {
  static constexpr std::size_t kBytesOfTwo = 16;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    const auto* words = reinterpret_cast<const std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    Vec16 r0, g0, b0, a0, r1, g1, b1, a1;
    hn::LoadInterleaved4(Tag16(), words, r0, g0, b0, a0);
    hn::LoadInterleaved4(Tag16(), words + 4 * n, r1, g1, b1, a1);
    r = HighBytes(r0, r1);
    g = HighBytes(g0, g1);
    b = HighBytes(b0, b1);
    a = HighBytes(a0, a1);
  }
};

struct StoreRgb {
  static constexpr std::size_t kBytesOfTwo = 6;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
    StoreThree(r, g, b, p);
  }
};

struct StoreRgbu {
  static constexpr std::size_t kBytesOfTwo = 8;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8 a, std::uint8_t* p) {
    StoreFour(r, g, b, a, p);
  }
};

// Stores v * 257 of every byte.
HWY_INLINE void StoreRepeated(Vec8 v, std::uint8_t* p) {
  auto* words = reinterpret_cast<std::uint16_t*>(p);
#if KORVEX2_VBMI
  const __m512i lower = _mm512_load_si512(kTwiceLower.place.at);
  const __m512i upper = _mm512_load_si512(kTwiceUpper.place.at);
  hn::StoreU(Vec16{_mm512_permutexvar_epi8(lower, v.raw)}, Tag16(), words);
  hn::StoreU(Vec16{_mm512_permutexvar_epi8(upper, v.raw)}, Tag16(), words + 32);
#else
  hn::StoreU(RepeatLower(v), Tag16(), words);
  hn::StoreU(RepeatUpper(v), Tag16(), words + hn::Lanes(Tag16()));
#endif
}

struct StoreRgb16 {
  static constexpr std::size_t kBytesOfTwo = 12;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
#if KORVEX2_VBMI
    Vec8 run[3];
    JoinThree(r, g, b, run);
    for (std::size_t k = 0; k < 3; ++k) {
      StoreRepeated(run[k], p + 2 * k * HWY_MAX_BYTES);
    }
#else
    auto* words = reinterpret_cast<std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    hn::StoreInterleaved3(RepeatLower(r), RepeatLower(g), RepeatLower(b), Tag16(), words);
    hn::StoreInterleaved3(RepeatUpper(r), RepeatUpper(g), RepeatUpper(b), Tag16(), words + 3 * n);
#endif
  }
};

struct StoreRgbu16 {
  static constexpr std::size_t kBytesOfTwo = 16;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8 a, std::uint8_t* p) {
#if KORVEX2_X86
    Vec8 run[4];
    JoinFourInOrder(r, g, b, a, run);
    for (std::size_t k = 0; k < 4; ++k) {
      StoreRepeated(run[k], p + 2 * k * HWY_MAX_BYTES);
    }
#else
    auto* words = reinterpret_cast<std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    hn::StoreInterleaved4(RepeatLower(r), RepeatLower(g), RepeatLower(b), RepeatLower(a), Tag16(),
                          words);
    hn::StoreInterleaved4(RepeatUpper(r), RepeatUpper(g), RepeatUpper(b), RepeatUpper(a), Tag16(),
                          words + 4 * n);
#endif
  }
};

// The same formats in the other order: red and blue change places.
template <typename Rgb>
struct LoadSwapped {
  static constexpr std::size_t kBytesOfTwo = Rgb::kBytesOfTwo;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    Rgb::Get(p, b, g, r, a);
  }
};
using LoadBgr = LoadSwapped<LoadRgb>;
using LoadBgru = LoadSwapped<LoadRgbu>;
using LoadBgr16 = LoadSwapped<LoadRgb16>;
using LoadBgru16 = LoadSwapped<LoadRgbu16>;

template <typename Rgb>
struct StoreSwapped {
  static constexpr std::size_t kBytesOfTwo = Rgb::kBytesOfTwo;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8 a, std::uint8_t* p) {
    Rgb::Put(b, g, r, a, p);
  }
};
using StoreBgr = StoreSwapped<StoreRgb>;
using StoreBgru = StoreSwapped<StoreRgbu>;
using StoreBgr16 = StoreSwapped<StoreRgb16>;
using StoreBgru16 = StoreSwapped<StoreRgbu16>;

// Asks for the bytes of a vector of pixels that are some way ahead, to be read and to be written:
// what arithmetic keeps waiting the memory can use. Past the end of a run it does no harm.
template <std::size_t SourceBytesOfTwo, std::size_t DestinationBytesOfTwo,
          std::size_t Pixels = HWY_MAX_BYTES>
HWY_INLINE void PrefetchAhead([[maybe_unused]] const std::uint8_t* src,
                              [[maybe_unused]] const std::uint8_t* dst) {
#if KORVEX2_X86
  constexpr std::size_t kAhead = 1024;
  for (std::size_t i = 0; i < SourceBytesOfTwo * Pixels / 2; i += 64) {
    __builtin_prefetch(src + kAhead + i, 0);
  }
  for (std::size_t i = 0; i < DestinationBytesOfTwo * Pixels / 2; i += 64) {
    __builtin_prefetch(dst + kAhead + i, 1);
  }
#endif
}

/// Moves whole vectors of pixels from one format to another; answers how many pixels it did.
template <typename Load, typename Store>
std::size_t MovePixels(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                       std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    PrefetchAhead<Load::kBytesOfTwo, Store::kBytesOfTwo>(src, dst);
    Vec8 r, g, b, a;
    Load::Get(src, r, g, b, a);
    Store::Put(r, g, b, a, dst);
    src += n / 2 * Load::kBytesOfTwo;
    dst += n / 2 * Store::kBytesOfTwo;
  }
  return done;
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
