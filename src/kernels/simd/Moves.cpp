// Conversions that move bytes and compute nothing: channels swapped, added, dropped, widened,
// narrowed.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/simd/Moves.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "kernels/simd/Interleave-inl.h"
#include "kernels/simd/Simd.h"
#include "simd/TargetTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

// v * 257 of Samples bytes a pixel.
template <std::size_t Samples>
std::size_t Widen(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                  std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  const std::size_t vectors = pixels / n * Samples;
  for (std::size_t i = 0; i < vectors; ++i) {
    const Vec8 bytes = hn::LoadU(Tag8(), src + i * n);
    auto* words = reinterpret_cast<std::uint16_t*>(dst + 2 * i * n);
    hn::StoreU(RepeatLower(bytes), Tag16(), words);
    hn::StoreU(RepeatUpper(bytes), Tag16(), words + n / 2);
  }
  return pixels / n * n;
}

// The high byte of Samples words a pixel.
template <std::size_t Samples>
std::size_t Narrow(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                   std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  const std::size_t vectors = pixels / n * Samples;
  for (std::size_t i = 0; i < vectors; ++i) {
    const auto* words = reinterpret_cast<const std::uint16_t*>(src + 2 * i * n);
    hn::StoreU(HighBytes(hn::LoadU(Tag16(), words), hn::LoadU(Tag16(), words + n / 2)), Tag8(),
               dst + i * n);
  }
  return pixels / n * n;
}

// Words of 16 bits, moved whole.
enum class Words { Grey, Rgb, Bgr, Rgbu, Bgru };

constexpr std::size_t Channels(Words format) {
  return format == Words::Grey ? 1 : (format == Words::Rgb || format == Words::Bgr) ? 3 : 4;
}
constexpr bool Swapped(Words format) {
  return format == Words::Bgr || format == Words::Bgru;
}

template <Words From, Words To>
std::size_t MoveWords(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                      std::size_t pixels) {
  const Tag16 d;
  const std::size_t n = hn::Lanes(d);
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    const auto* from = reinterpret_cast<const std::uint16_t*>(src) + done * Channels(From);
    auto* to = reinterpret_cast<std::uint16_t*>(dst) + done * Channels(To);
    Vec16 r, g, b;
    Vec16 a = hn::Set(d, 0xFFFF);
    if constexpr (Channels(From) == 1) {
      r = g = b = hn::LoadU(d, from);
    } else if constexpr (Channels(From) == 3) {
      hn::LoadInterleaved3(d, from, r, g, b);
    } else {
      hn::LoadInterleaved4(d, from, r, g, b, a);
    }
    if constexpr (Swapped(From) != Swapped(To)) {
      const Vec16 red = b;
      b = r;
      r = red;
    }
    if constexpr (Channels(To) == 3) {
      hn::StoreInterleaved3(r, g, b, d, to);
    } else {
      hn::StoreInterleaved4(r, g, b, a, d, to);
    }
  }
  return done / 4 * 4;
}

FastKernel FindMove(Routine routine) {
  // clang-format off
  switch (routine) {
    // 8 bits a channel.
    case Routine::ConvertY8ToRGB:          return Move<LoadY8, StoreRgb>;
    case Routine::ConvertY8ToRGBU:         return Move<LoadY8, StoreRgbu>;
    case Routine::AddAlphaChannel_8bit:    return Move<LoadRgb, StoreRgbu>;
    case Routine::DropAlphaChannel_8bit:   return Move<LoadRgbu, StoreRgb>;
    case Routine::Swap_C1C3_3Channel_8bit: return Move<LoadRgb, StoreBgr>;
    case Routine::Swap_C1C3_4Channel_8bit: return Move<LoadRgbu, StoreBgru>;
    case Routine::ConvertRGBToBGRU:        return Move<LoadRgb, Opaque<StoreBgru>>;
    case Routine::ConvertBGRToRGBU:        return Move<LoadRgb, Opaque<StoreBgru>>;
    case Routine::ConvertRGBUToBGR:        return Move<LoadRgbu, StoreBgr>;
    case Routine::ConvertBGRUToRGB:        return Move<LoadRgbu, StoreBgr>;

    // Depth of samples alone.
    case Routine::ConvertY8ToY16:
      return Widen<1>;
    case Routine::Pad_8To16_3Channel:
    case Routine::ConvertRGBToRGB16:
      return Widen<3>;
    case Routine::Pad_8To16_4Channel:
      return Widen<4>;
    case Routine::ConvertY16ToY8:
      return Narrow<1>;
    case Routine::Truncate_16To8_3Channel:
    case Routine::ConvertRGB16ToRGB:
      return Narrow<3>;
    case Routine::Truncate_16To8_4Channel:
      return Narrow<4>;

    // 8 bits a channel to 16.
    case Routine::ConvertY8ToRGB16:        return Move<LoadY8, StoreRgb16>;
    case Routine::ConvertY8ToRGBU16:       return Move<LoadY8, StoreRgbu16>;
    case Routine::ConvertRGBToBGR16:       return Move<LoadRgb, StoreBgr16>;
    case Routine::ConvertRGBToBGRU16:      return Move<LoadRgb, StoreBgru16>;
    case Routine::ConvertRGBUToRGB16:      return Move<LoadRgbu, StoreRgb16>;
    case Routine::ConvertRGBUToBGR16:      return Move<LoadRgbu, StoreBgr16>;
    case Routine::ConvertRGBUToBGRU16:     return Move<LoadRgbu, StoreBgru16>;
    case Routine::ConvertBGRToRGB16:       return Move<LoadBgr, StoreRgb16>;
    case Routine::ConvertBGRToBGRU16:      return Move<LoadRgb, StoreRgbu16>;
    case Routine::ConvertBGRUToRGB16:      return Move<LoadBgru, StoreRgb16>;
    case Routine::ConvertBGRUToBGR16:      return Move<LoadRgbu, StoreRgb16>;

    // 16 bits a channel to 8.
    case Routine::ConvertY16ToRGB:         return Move<LoadY16, StoreRgb>;
    case Routine::ConvertY16ToRGBU:        return Move<LoadY16, StoreRgbu>;
    case Routine::ConvertRGB16ToRGBU:      return Move<LoadRgb16, StoreRgbu>;
    case Routine::ConvertRGB16ToBGR:       return Move<LoadRgb16, StoreBgr>;
    case Routine::ConvertRGB16ToBGRU:      return Move<LoadRgb16, StoreBgru>;
    case Routine::ConvertBGR16ToRGB:       return Move<LoadBgr16, StoreRgb>;
    case Routine::ConvertBGR16ToRGBU:      return Move<LoadBgr16, StoreRgbu>;
    case Routine::ConvertBGR16ToBGRU:      return Move<LoadRgb16, StoreRgbu>;
    case Routine::ConvertBGRU16ToRGB:      return Move<LoadBgru16, StoreRgb>;
    case Routine::ConvertBGRU16ToRGBU:     return Move<LoadBgru16, StoreRgbu>;
    case Routine::ConvertBGRU16ToBGR:      return Move<LoadRgbu16, StoreRgb>;

    // 16 bits a channel throughout.
    case Routine::ConvertY16ToRGB16:        return MoveWords<Words::Grey, Words::Rgb>;
    case Routine::ConvertY16ToRGBU16:       return MoveWords<Words::Grey, Words::Rgbu>;
    case Routine::AddAlphaChannel_16bit:    return MoveWords<Words::Rgb, Words::Rgbu>;
    case Routine::DropAlphaChannel_16bit:   return MoveWords<Words::Rgbu, Words::Rgb>;
    case Routine::Swap_C1C3_3Channel_16bit: return MoveWords<Words::Rgb, Words::Bgr>;
    case Routine::ConvertRGB16ToBGRU16:     return MoveWords<Words::Rgb, Words::Bgru>;
    case Routine::ConvertBGRU16ToRGB16:     return MoveWords<Words::Bgru, Words::Rgb>;
    default:                                return nullptr;
  }
  // clang-format on
}

#else

FastKernel FindMove(Routine) {
  return nullptr;
}

#endif

}  // namespace Korvex2::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::kernels::simd {

HWY_EXPORT(FindMove);

FastKernel Moves(Simd::Target target, Routine routine) {
  return KORVEX2_FOR_TARGET(FindMove, target)(routine);
}

}  // namespace Korvex2::kernels::simd
#endif
