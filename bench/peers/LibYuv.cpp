// libyuv. Its names read a word from the high byte down: ARGB is B G R A in memory (our bgru), ABGR
// is R G B A (rgbu), RGB24 is B G R (bgr), RAW is R G B (rgb8), AR64 is B G R A in words (bgru16).
// A function that treats all channels alike serves every order of them.

#include <libyuv.h>

#include "Steps.h"

namespace Korvex2::Bench {
namespace {

using Byte = std::uint8_t;
using Word = std::uint16_t;

const Word* Words(const Byte* bytes) {
  return reinterpret_cast<const Word*>(bytes);
}

Word* Words(Byte* bytes) {
  return reinterpret_cast<Word*>(bytes);
}

// A function of one plane to one plane, with its pixels' sizes.
template <auto kFunction, int kSourceBytes, int kDestinationBytes>
void Packed(const Byte* src, Byte* dst, int cols, int rows) {
  kFunction(src, cols * kSourceBytes, dst, cols * kDestinationBytes, cols, rows);
}

// 8-bit samples as 16 bits, and back; any number of channels. The scale has 16 bits, so that v *
// 257 comes out one too low.
template <int kChannels>
void Widen(const Byte* src, Byte* dst, int cols, int rows) {
  constexpr int kScale = 65535;
  const int width = cols * kChannels;
  libyuv::Convert8To16Plane(src, width, Words(dst), width, kScale, width, rows);
}

template <int kChannels>
void Narrow(const Byte* src, Byte* dst, int cols, int rows) {
  constexpr int kScale = 256;
  const int width = cols * kChannels;
  libyuv::Convert16To8Plane(Words(src), width, dst, width, kScale, width, rows);
}

// Planes of a strip, one after the other.
template <typename T>
struct Planes {
  T* y;
  T* u;
  T* v;
  int chroma;  ///< width of U and V

  Planes(T* data, int cols, int rows, int chromaCols)
      : y(data),
        u(y + std::ptrdiff_t{cols} * rows),
        v(u + std::ptrdiff_t{chromaCols} * rows),
        chroma(chromaCols) {}
};

void UyvyToPlanes(const Byte* src, Byte* dst, int cols, int rows) {
  const Planes to(dst, cols, rows, cols / 2);
  libyuv::UYVYToI422(src, 2 * cols, to.y, cols, to.u, to.chroma, to.v, to.chroma, cols, rows);
}

void PlanesToUyvy(const Byte* src, Byte* dst, int cols, int rows) {
  const Planes from(src, cols, rows, cols / 2);
  libyuv::I422ToUYVY(from.y, cols, from.u, from.chroma, from.v, from.chroma, dst, 2 * cols, cols,
                     rows);
}

// U Y V in memory: its "red" plane is U, "green" Y, "blue" V.
void UyvToPlanes(const Byte* src, Byte* dst, int cols, int rows) {
  const Planes to(dst, cols, rows, cols);
  libyuv::SplitRGBPlane(src, 3 * cols, to.u, cols, to.y, cols, to.v, cols, cols, rows);
}

void PlanesToUyv(const Byte* src, Byte* dst, int cols, int rows) {
  const Planes from(src, cols, rows, cols);
  libyuv::MergeRGBPlane(from.u, cols, from.y, cols, from.v, cols, dst, 3 * cols, cols, rows);
}

void Upsample(const Byte* src, Byte* dst, int cols, int rows) {
  const Planes from(src, cols, rows, cols / 2);
  const Planes to(dst, cols, rows, cols);
  libyuv::I422ToI444(from.y, cols, from.u, from.chroma, from.v, from.chroma, to.y, cols, to.u, cols,
                     to.v, cols, cols, rows);
}

void ArgbTo422(const Byte* src, Byte* dst, int cols, int rows) {
  const Planes to(dst, cols, rows, cols / 2);
  libyuv::ARGBToJ422(src, 4 * cols, to.y, cols, to.u, to.chroma, to.v, to.chroma, cols, rows);
}

void ArgbTo444(const Byte* src, Byte* dst, int cols, int rows) {
  const Planes to(dst, cols, rows, cols);
  libyuv::ARGBToI444(src, 4 * cols, to.y, cols, to.u, cols, to.v, cols, cols, rows);
}

// Full-range decoding of planes; with U and V exchanged, and the matrix to match, R and B change
// places.
enum class Order { Bgr, Rgb };

template <auto kMatrixFunction, int kBytes, int kHalved, Order kOrder>
void Decode(const Byte* src, Byte* dst, int cols, int rows) {
  const Planes from(src, cols, rows, cols / kHalved);
  const bool bgr = kOrder == Order::Bgr;
  kMatrixFunction(from.y, cols, bgr ? from.u : from.v, from.chroma, bgr ? from.v : from.u,
                  from.chroma, dst, kBytes * cols,
                  bgr ? &libyuv::kYuvJPEGConstants : &libyuv::kYvuJPEGConstants, cols, rows);
}

void Ar64ToArgb(const Byte* src, Byte* dst, int cols, int rows) {
  libyuv::AR64ToARGB(Words(src), 4 * cols, dst, 4 * cols, cols, rows);
}

void ArgbToAr64(const Byte* src, Byte* dst, int cols, int rows) {
  libyuv::ARGBToAR64(src, 4 * cols, Words(dst), 4 * cols, cols, rows);
}

void AbgrToAr64(const Byte* src, Byte* dst, int cols, int rows) {
  libyuv::ARGBToAB64(src, 4 * cols, Words(dst), 4 * cols, cols, rows);
}

void Ar64ToAbgr(const Byte* src, Byte* dst, int cols, int rows) {
  libyuv::AB64ToARGB(Words(src), 4 * cols, dst, 4 * cols, cols, rows);
}

constexpr Layout kMono8 = LayoutOf(PIXEL_FORMAT_MONO8);
constexpr Layout kMono16 = LayoutOf(PIXEL_FORMAT_MONO16);
constexpr Layout kRgb = LayoutOf(PIXEL_FORMAT_RGB8);
constexpr Layout kRgbu = LayoutOf(PIXEL_FORMAT_RGBU);
constexpr Layout kRgb16 = LayoutOf(PIXEL_FORMAT_RGB16);
constexpr Layout kBgr = LayoutOf(PIXEL_FORMAT_BGR);
constexpr Layout kBgru = LayoutOf(PIXEL_FORMAT_BGRU);
constexpr Layout kBgr16 = LayoutOf(PIXEL_FORMAT_BGR16);
constexpr Layout kBgru16 = LayoutOf(PIXEL_FORMAT_BGRU16);
constexpr Layout kUyvy = LayoutOf(PIXEL_FORMAT_422YUV8);
constexpr Layout kUyv = LayoutOf(PIXEL_FORMAT_444YUV8);

// clang-format off
constexpr Step kSteps[] = {
    {kMono8,  kMono16, "Convert8To16Plane", Widen<1>},
    {kMono16, kMono8,  "Convert16To8Plane", Narrow<1>},
    {kRgb,    kRgb16,  "Convert8To16Plane", Widen<3>},
    {kRgb16,  kRgb,    "Convert16To8Plane", Narrow<3>},
    {kBgr,    kBgr16,  "Convert8To16Plane", Widen<3>},
    {kBgr16,  kBgr,    "Convert16To8Plane", Narrow<3>},
    {kBgru16, kBgru,   "AR64ToARGB",        Ar64ToArgb},
    {kBgru16, kRgbu,   "AR64ToABGR",        Ar64ToAbgr},
    {kBgru,   kBgru16, "ARGBToAR64",        ArgbToAr64},
    {kRgbu,   kBgru16, "ABGRToAR64",        AbgrToAr64},

    {kMono8,  kBgru,   "J400ToARGB",        Packed<libyuv::J400ToARGB,   1, 4>},
    {kMono8,  kRgbu,   "J400ToARGB",        Packed<libyuv::J400ToARGB,   1, 4>},
    {kRgb,    kMono8,  "RAWToJ400",         Packed<libyuv::RAWToJ400,    3, 1>},
    {kBgr,    kMono8,  "RGB24ToJ400",       Packed<libyuv::RGB24ToJ400,  3, 1>},
    {kBgru,   kMono8,  "ARGBToJ400",        Packed<libyuv::ARGBToJ400,   4, 1>},
    {kRgbu,   kMono8,  "ABGRToJ400",        Packed<libyuv::ABGRToJ400,   4, 1>},

    {kRgb,    kBgr,    "RAWToRGB24",        Packed<libyuv::RAWToRGB24,   3, 3>},
    {kBgr,    kRgb,    "RAWToRGB24",        Packed<libyuv::RAWToRGB24,   3, 3>},
    {kRgb,    kBgru,   "RAWToARGB",         Packed<libyuv::RAWToARGB,    3, 4>},
    {kBgr,    kRgbu,   "RAWToARGB",         Packed<libyuv::RAWToARGB,    3, 4>},
    {kRgb,    kRgbu,   "RGB24ToARGB",       Packed<libyuv::RGB24ToARGB,  3, 4>},
    {kBgr,    kBgru,   "RGB24ToARGB",       Packed<libyuv::RGB24ToARGB,  3, 4>},
    {kBgru,   kBgr,    "ARGBToRGB24",       Packed<libyuv::ARGBToRGB24,  4, 3>},
    {kRgbu,   kRgb,    "ARGBToRGB24",       Packed<libyuv::ARGBToRGB24,  4, 3>},
    {kBgru,   kRgb,    "ARGBToRAW",         Packed<libyuv::ARGBToRAW,    4, 3>},
    {kRgbu,   kBgr,    "ARGBToRAW",         Packed<libyuv::ARGBToRAW,    4, 3>},
    {kBgru,   kRgbu,   "ARGBToABGR",        Packed<libyuv::ARGBToABGR,   4, 4>},
    {kRgbu,   kBgru,   "ABGRToARGB",        Packed<libyuv::ABGRToARGB,   4, 4>},

    // Limited range, as the library has these for packed 4:2:2.
    {kUyvy,   kBgru,   "UYVYToARGB",        Packed<libyuv::UYVYToARGB,   2, 4>},
    {kBgru,   kUyvy,   "ARGBToUYVY",        Packed<libyuv::ARGBToUYVY,   4, 2>},
    {kUyvy,   kMono8,  "UYVYToY",           Packed<libyuv::UYVYToY,      2, 1>},

    {kUyvy,             Layout::Planar422, "UYVYToI422",    UyvyToPlanes},
    {Layout::Planar422, kUyvy,             "I422ToUYVY",    PlanesToUyvy},
    {kUyv,              Layout::Planar444, "SplitRGBPlane", UyvToPlanes},
    {Layout::Planar444, kUyv,              "MergeRGBPlane", PlanesToUyv},
    {Layout::Planar422, Layout::Planar444, "I422ToI444",    Upsample},
    {kBgru,             Layout::Planar422, "ARGBToJ422",    ArgbTo422},
    {kBgru,             Layout::Planar444, "ARGBToI444",    ArgbTo444},
    {Layout::Planar422, kBgru, "I422ToARGBMatrix",  Decode<libyuv::I422ToARGBMatrix,  4, 2, Order::Bgr>},
    {Layout::Planar422, kRgbu, "I422ToARGBMatrix",  Decode<libyuv::I422ToARGBMatrix,  4, 2, Order::Rgb>},
    {Layout::Planar422, kBgr,  "I422ToRGB24Matrix", Decode<libyuv::I422ToRGB24Matrix, 3, 2, Order::Bgr>},
    {Layout::Planar422, kRgb,  "I422ToRGB24Matrix", Decode<libyuv::I422ToRGB24Matrix, 3, 2, Order::Rgb>},
    {Layout::Planar444, kBgru, "I444ToARGBMatrix",  Decode<libyuv::I444ToARGBMatrix,  4, 1, Order::Bgr>},
    {Layout::Planar444, kRgbu, "I444ToARGBMatrix",  Decode<libyuv::I444ToARGBMatrix,  4, 1, Order::Rgb>},
    {Layout::Planar444, kBgr,  "I444ToRGB24Matrix", Decode<libyuv::I444ToRGB24Matrix, 3, 1, Order::Bgr>},
    {Layout::Planar444, kRgb,  "I444ToRGB24Matrix", Decode<libyuv::I444ToRGB24Matrix, 3, 1, Order::Rgb>},
};
// clang-format on

std::optional<Peer> Find(PixelFormat source, PixelFormat target) {
  return FindWay("libyuv", kSteps, source, target);
}

}  // namespace

PeerLibrary LibYuv() {
  return {"libyuv", std::to_string(LIBYUV_VERSION), Find};
}

}  // namespace Korvex2::Bench
