// Conversions that move bytes and compute nothing: channels swapped, added, dropped, widened,
// narrowed.

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/Moves.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "Korvex2Defs.h"
#include "hwy/cache_control.h"
#include "kernels/vector/Interleave-inl.h"
#include "kernels/vector/Vector.h"
#include "simd/DispatchTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

// The order of the channels of a pixel, and the bytes of each.
struct Layout {
  std::size_t channels;
  std::size_t bytes;
  bool blueFirst;

  constexpr std::size_t pixel() const { return channels * bytes; }
};

constexpr Layout LayoutOf(PixelFormat format) {
  switch (format) {
#define KORVEX2_FORMAT(enumerator, value, name, routine, family, bits, sign, order, samples, ...) \
  case PIXEL_FORMAT_##enumerator:                                                                 \
    return {sizeof(samples) - 1, bits / 8, (samples)[0] == 'B'};
#include "Formats.def"
    default:
      return {};
  }
}

constexpr Layout kY8 = LayoutOf(PIXEL_FORMAT_MONO8);
constexpr Layout kRgb = LayoutOf(PIXEL_FORMAT_RGB8);
constexpr Layout kBgr = LayoutOf(PIXEL_FORMAT_BGR);
constexpr Layout kRgbu = LayoutOf(PIXEL_FORMAT_RGBU);
constexpr Layout kBgru = LayoutOf(PIXEL_FORMAT_BGRU);
constexpr Layout kY16 = LayoutOf(PIXEL_FORMAT_MONO16);
constexpr Layout kRgb16 = LayoutOf(PIXEL_FORMAT_RGB16);
constexpr Layout kBgr16 = LayoutOf(PIXEL_FORMAT_BGR16);
constexpr Layout kBgru16 = LayoutOf(PIXEL_FORMAT_BGRU16);
constexpr Layout kRgbu16 = {4, 2, false};  // between two steps only: no format is so

#if KORVEX2_X86

// Which byte of a source pixel becomes byte `at` of a pixel; kOpaque: none, it is 0xFF. A wider
// sample repeats the byte, a narrower one keeps the high byte.
constexpr std::size_t kOpaque = SIZE_MAX;

constexpr std::size_t SourceOf(Layout from, Layout to, std::size_t at) {
  const std::size_t byte = from.bytes == to.bytes ? at % to.bytes : from.bytes - 1;
  const std::size_t channel = at / to.bytes;
  if (channel == 3) {
    return from.channels == 4 ? 3 * from.bytes + byte : kOpaque;
  }
  const std::size_t swapped = from.blueFirst == to.blueFirst ? channel : 2 - channel;
  return (from.channels == 1 ? 0 : swapped * from.bytes) + byte;
}

// As many bytes as one shuffle reaches. As many pixels make whole vectors in every format.
constexpr std::size_t kVector = KORVEX2_VBMI ? 64 : 16;

// One vector of the destination: shuffles of up to three vectors of the source.
struct Gather {
  static constexpr std::size_t kMost = 3;
  static constexpr std::uint8_t kNowhere = 0x80;
  std::size_t loads = 0;
  std::size_t offset[kMost] = {};  // bytes from the first pixel
  ByteTable index[kMost] = {};     // kNowhere: another load has the byte, or none
  std::uint64_t mask[kMost] = {};  // the bytes that a load has
  ByteTable opaque = {};           // 0xFF at the bytes of an alpha that the source lacks
};

constexpr Gather MakeGather(Layout from, Layout to, std::size_t vector) {
  Gather gather;
  std::size_t source[kVector] = {};
  std::size_t first = SIZE_MAX;
  std::size_t last = 0;
  for (std::size_t i = 0; i < kVector; ++i) {
    const std::size_t at = vector * kVector + i;
    const std::size_t inPixel = SourceOf(from, to, at % to.pixel());
    source[i] = inPixel == kOpaque ? kOpaque : at / to.pixel() * from.pixel() + inPixel;
    if (inPixel == kOpaque) {
      gather.opaque.at[i] = 0xFF;
    } else {
      first = std::min(first, source[i]);
      last = std::max(last, source[i]);
    }
  }
  // No load reaches past the last pixel of the group.
  const std::size_t end = std::max(last + 1, first + kVector);
  const std::size_t farthest = std::min(end, kVector * from.pixel()) - kVector;
  gather.loads = (end - first + kVector - 1) / kVector;
  for (std::size_t k = 0; k < gather.loads; ++k) {
    gather.offset[k] = std::min(first + k * kVector, farthest);
    for (std::size_t i = 0; i < kVector; ++i) {
      const bool inReach = source[i] != kOpaque && source[i] >= first + k * kVector &&
                           source[i] < first + (k + 1) * kVector;
      gather.index[k].at[i] =
          inReach ? static_cast<std::uint8_t>(source[i] - gather.offset[k]) : Gather::kNowhere;
      gather.mask[k] |= std::uint64_t{inReach} << i;
    }
  }
  return gather;
}

using TagOfMove = hn::FixedTag<std::uint8_t, kVector>;
using VecOfMove = hn::Vec<TagOfMove>;

template <Layout From, Layout To, std::size_t Vector>
HWY_INLINE VecOfMove GatherVector(const std::uint8_t* src) {
  static constexpr Gather kGather = MakeGather(From, To, Vector);
  const TagOfMove d;
  VecOfMove v = hn::Zero(d);
  for (std::size_t k = 0; k < kGather.loads; ++k) {
    const VecOfMove bytes = hn::LoadU(d, src + kGather.offset[k]);
    const VecOfMove index = hn::Load(d, kGather.index[k].at);
#if KORVEX2_VBMI
    v.raw = _mm512_mask_permutexvar_epi8(v.raw, kGather.mask[k], index.raw, bytes.raw);
#else
    v = hn::Or(v, hn::TableLookupBytesOr0(bytes, index));
#endif
  }
  if constexpr (To.channels == 4 && From.channels != 4) {
    v = hn::Or(v, hn::Load(d, kGather.opaque.at));
  }
  return v;
}

// A destination that no cache will hold until it is read: stores past the caches save reading every
// line before it is overwritten.
constexpr std::size_t kStreamFrom = std::size_t{32} << 20;

template <std::size_t Bytes>
bool ShouldStream(const std::uint8_t* dst, std::size_t pixels) {
  return pixels >= kStreamFrom / Bytes && reinterpret_cast<std::uintptr_t>(dst) % kVector == 0;
}

template <Layout From, Layout To, bool Stream>
std::size_t MoveVectors(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                        std::size_t pixels) {
  const auto put = [](VecOfMove v, std::uint8_t* to) HWY_ATTR {
    Stream ? hn::Stream(v, TagOfMove(), to) : hn::StoreU(v, TagOfMove(), to);
  };
  std::size_t done = 0;
  for (; done + kVector <= pixels; done += kVector) {
    PrefetchAhead<2 * From.pixel(), Stream ? 0 : 2 * To.pixel(), kVector>(src + done * From.pixel(),
                                                                          dst + done * To.pixel());
    // All loads before all stores: where source and destination lie alike within their pages, a
    // load would wait for a store that it has nothing to do with.
    [&]<std::size_t... Vectors>(std::index_sequence<Vectors...>) HWY_ATTR {
      const VecOfMove vectors[] = {GatherVector<From, To, Vectors>(src + done * From.pixel())...};
      (put(vectors[Vectors], dst + done * To.pixel() + Vectors * kVector), ...);
    }
    (std::make_index_sequence<To.pixel()>());
  }
  if constexpr (Stream) hwy::FlushStream();
  return done;
}

template <Layout From, Layout To>
std::size_t Move(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                 std::size_t pixels) {
  return ShouldStream<To.pixel()>(dst, pixels) ? MoveVectors<From, To, true>(src, dst, pixels)
                                               : MoveVectors<From, To, false>(src, dst, pixels);
}

#else

// Words of 16 bits, moved whole.
template <Layout From, Layout To>
std::size_t MoveWords(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                      std::size_t pixels) {
  const Tag16 d;
  const std::size_t n = hn::Lanes(d);
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    const auto* from = reinterpret_cast<const std::uint16_t*>(src + done * From.pixel());
    auto* to = reinterpret_cast<std::uint16_t*>(dst + done * To.pixel());
    Vec16 r, g, b;
    Vec16 a = hn::Set(d, 0xFFFF);
    if constexpr (From.channels == 1) {
      r = g = b = hn::LoadU(d, from);
    } else if constexpr (From.channels == 3) {
      hn::LoadInterleaved3(d, from, r, g, b);
    } else {
      hn::LoadInterleaved4(d, from, r, g, b, a);
    }
    if constexpr (From.blueFirst != To.blueFirst) {
      const Vec16 red = b;
      b = r;
      r = red;
    }
    if constexpr (To.channels == 3) {
      hn::StoreInterleaved3(r, g, b, d, to);
    } else {
      hn::StoreInterleaved4(r, g, b, a, d, to);
    }
  }
  return done / 4 * 4;
}

// v * 257, or the high byte, of every sample.
template <Layout From, Layout To>
std::size_t ChangeDepth(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                        std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  const std::size_t vectors = pixels / n * From.channels;
  for (std::size_t i = 0; i < vectors; ++i) {
    if constexpr (From.bytes == 1) {
      StoreRepeated(hn::LoadU(Tag8(), src + i * n), dst + 2 * i * n);
    } else {
      const auto* words = reinterpret_cast<const std::uint16_t*>(src + 2 * i * n);
      const Vec16 first = hn::LoadU(Tag16(), words);
      hn::StoreU(HighBytes(first, hn::LoadU(Tag16(), words + n / 2)), Tag8(), dst + i * n);
    }
  }
  return pixels / n * n;
}

template <Layout Of>
constexpr auto LoadOf() {
  if constexpr (Of.channels == 1) {
    return std::conditional_t<Of.bytes == 1, LoadY8, LoadY16>();
  } else if constexpr (Of.channels == 3) {
    return std::conditional_t<Of.bytes == 1, LoadRgb, LoadRgb16>();
  } else {
    return std::conditional_t<Of.bytes == 1, LoadRgbu, LoadRgbu16>();
  }
}

template <Layout Of>
constexpr auto StoreOf() {
  if constexpr (Of.channels == 3) {
    return std::conditional_t<Of.bytes == 1, StoreRgb, StoreRgb16>();
  } else {
    return std::conditional_t<Of.bytes == 1, StoreRgbu, StoreRgbu16>();
  }
}

template <Layout From, Layout To>
std::size_t Move(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                 std::size_t pixels) {
  constexpr bool kSwap = From.blueFirst != To.blueFirst;
  if constexpr (From.channels == To.channels && !kSwap) {
    return ChangeDepth<From, To>(src, dst, pixels);
  } else if constexpr (From.bytes == 2 && To.bytes == 2) {
    return MoveWords<From, To>(src, dst, pixels);
  } else {
    using Load = decltype(LoadOf<From>());
    using Store = decltype(StoreOf<To>());
    return MovePixels<Load, std::conditional_t<kSwap, StoreSwapped<Store>, Store> >(src, dst,
                                                                                    pixels);
  }
}

#endif

FastKernel FindMove(Routine routine) {
  // clang-format off
  switch (routine) {
    // 8 bits a channel.
    case Routine::ConvertY8ToRGB:          return Move<kY8, kRgb>;
    case Routine::ConvertY8ToRGBU:         return Move<kY8, kRgbu>;
    case Routine::AddAlphaChannel_8bit:    return Move<kRgb, kRgbu>;
    case Routine::DropAlphaChannel_8bit:   return Move<kRgbu, kRgb>;
    case Routine::Swap_C1C3_3Channel_8bit: return Move<kRgb, kBgr>;
    case Routine::Swap_C1C3_4Channel_8bit: return Move<kRgbu, kBgru>;
    case Routine::ConvertRGBToBGRU:        return Move<kRgb, kBgru>;
    case Routine::ConvertBGRToRGBU:        return Move<kBgr, kRgbu>;
    case Routine::ConvertRGBUToBGR:        return Move<kRgbu, kBgr>;
    case Routine::ConvertBGRUToRGB:        return Move<kBgru, kRgb>;

    // Depth of samples alone.
    case Routine::ConvertY8ToY16:          return Move<kY8, kY16>;
    case Routine::Pad_8To16_3Channel:      return Move<kRgb, kRgb16>;
    case Routine::ConvertRGBToRGB16:       return Move<kRgb, kRgb16>;
    case Routine::Pad_8To16_4Channel:      return Move<kRgbu, kRgbu16>;
    case Routine::ConvertY16ToY8:          return Move<kY16, kY8>;
    case Routine::Truncate_16To8_3Channel: return Move<kRgb16, kRgb>;
    case Routine::ConvertRGB16ToRGB:       return Move<kRgb16, kRgb>;
    case Routine::Truncate_16To8_4Channel: return Move<kRgbu16, kRgbu>;

    // 8 bits a channel to 16.
    case Routine::ConvertY8ToRGB16:        return Move<kY8, kRgb16>;
    case Routine::ConvertY8ToRGBU16:       return Move<kY8, kRgbu16>;
    case Routine::ConvertRGBToBGR16:       return Move<kRgb, kBgr16>;
    case Routine::ConvertRGBToBGRU16:      return Move<kRgb, kBgru16>;
    case Routine::ConvertRGBUToRGB16:      return Move<kRgbu, kRgb16>;
    case Routine::ConvertRGBUToBGR16:      return Move<kRgbu, kBgr16>;
    case Routine::ConvertRGBUToBGRU16:     return Move<kRgbu, kBgru16>;
    case Routine::ConvertBGRToRGB16:       return Move<kBgr, kRgb16>;
    case Routine::ConvertBGRToBGRU16:      return Move<kBgr, kBgru16>;
    case Routine::ConvertBGRUToRGB16:      return Move<kBgru, kRgb16>;
    case Routine::ConvertBGRUToBGR16:      return Move<kBgru, kBgr16>;

    // 16 bits a channel to 8.
    case Routine::ConvertY16ToRGB:         return Move<kY16, kRgb>;
    case Routine::ConvertY16ToRGBU:        return Move<kY16, kRgbu>;
    case Routine::ConvertRGB16ToRGBU:      return Move<kRgb16, kRgbu>;
    case Routine::ConvertRGB16ToBGR:       return Move<kRgb16, kBgr>;
    case Routine::ConvertRGB16ToBGRU:      return Move<kRgb16, kBgru>;
    case Routine::ConvertBGR16ToRGB:       return Move<kBgr16, kRgb>;
    case Routine::ConvertBGR16ToRGBU:      return Move<kBgr16, kRgbu>;
    case Routine::ConvertBGR16ToBGRU:      return Move<kBgr16, kBgru>;
    case Routine::ConvertBGRU16ToRGB:      return Move<kBgru16, kRgb>;
    case Routine::ConvertBGRU16ToRGBU:     return Move<kBgru16, kRgbu>;
    case Routine::ConvertBGRU16ToBGR:      return Move<kBgru16, kBgr>;

    // 16 bits a channel throughout.
    case Routine::ConvertY16ToRGB16:        return Move<kY16, kRgb16>;
    case Routine::ConvertY16ToRGBU16:       return Move<kY16, kRgbu16>;
    case Routine::AddAlphaChannel_16bit:    return Move<kRgb16, kRgbu16>;
    case Routine::DropAlphaChannel_16bit:   return Move<kRgbu16, kRgb16>;
    case Routine::Swap_C1C3_3Channel_16bit: return Move<kRgb16, kBgr16>;
    case Routine::ConvertRGB16ToBGRU16:     return Move<kRgb16, kBgru16>;
    case Routine::ConvertBGRU16ToRGB16:     return Move<kBgru16, kRgb16>;
    default:                                return nullptr;
  }
  // clang-format on
}

#else

FastKernel FindMove(Routine) {
  return nullptr;
}

#endif

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Kernels::Vector {

HWY_EXPORT(FindMove);

FastKernel Moves(Simd::InstructionSet set, Routine routine) {
  return KORVEX2_FOR_INSTRUCTION_SET(FindMove, set)(routine);
}

}  // namespace Korvex2::Kernels::Vector
#endif
