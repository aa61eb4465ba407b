// OpenCV: cvtColor for colour, convertTo for depth.

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "Steps.h"

namespace Korvex2::Bench {
namespace {

using Byte = std::uint8_t;

// cvtColor with its code and the types of both pictures.
template <int kSourceType, int kDestinationType, int kCode>
void Convert(const Byte* src, Byte* dst, int cols, int rows) {
  const cv::Mat from(rows, cols, kSourceType, const_cast<Byte*>(src));
  cv::Mat to(rows, cols, kDestinationType, dst);
  cv::cvtColor(from, to, kCode);
}

template <int kChannels>
void Widen(const Byte* src, Byte* dst, int cols, int rows) {
  const cv::Mat from(rows, cols, CV_8UC(kChannels), const_cast<Byte*>(src));
  cv::Mat to(rows, cols, CV_16UC(kChannels), dst);
  from.convertTo(to, CV_16U, 257);
}

template <int kChannels>
void Narrow(const Byte* src, Byte* dst, int cols, int rows) {
  const cv::Mat from(rows, cols, CV_16UC(kChannels), const_cast<Byte*>(src));
  cv::Mat to(rows, cols, CV_8UC(kChannels), dst);
  from.convertTo(to, CV_8U, 1.0 / 257);
}

// Y V U to U Y V and back.
template <int kFirst, int kSecond, int kThird>
void Shuffle(const Byte* src, Byte* dst, int cols, int rows) {
  const cv::Mat from(rows, cols, CV_8UC3, const_cast<Byte*>(src));
  cv::Mat to(rows, cols, CV_8UC3, dst);
  const int pairs[] = {kFirst, 0, kSecond, 1, kThird, 2};
  cv::mixChannels(&from, 1, &to, 1, pairs, 3);
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
constexpr Layout kYvu = Layout::PackedYvu;
constexpr Layout kRaw8 = LayoutOf(PIXEL_FORMAT_RAW8);
constexpr Layout kRaw16 = LayoutOf(PIXEL_FORMAT_RAW16);

// clang-format off
constexpr Step kSteps[] = {
    {kMono8,  kMono16, "convertTo",  Widen<1>},
    {kMono16, kMono8,  "convertTo",  Narrow<1>},
    {kRgb,    kRgb16,  "convertTo",  Widen<3>},
    {kRgb16,  kRgb,    "convertTo",  Narrow<3>},
    {kBgr,    kBgr16,  "convertTo",  Widen<3>},
    {kBgr16,  kBgr,    "convertTo",  Narrow<3>},
    {kBgru,   kBgru16, "convertTo",  Widen<4>},
    {kBgru16, kBgru,   "convertTo",  Narrow<4>},

    {kMono8,  kRgb,    "GRAY2RGB",   Convert<CV_8UC1,  CV_8UC3,  cv::COLOR_GRAY2RGB>},
    {kMono8,  kBgr,    "GRAY2BGR",   Convert<CV_8UC1,  CV_8UC3,  cv::COLOR_GRAY2BGR>},
    {kMono8,  kRgbu,   "GRAY2RGBA",  Convert<CV_8UC1,  CV_8UC4,  cv::COLOR_GRAY2RGBA>},
    {kMono8,  kBgru,   "GRAY2BGRA",  Convert<CV_8UC1,  CV_8UC4,  cv::COLOR_GRAY2BGRA>},
    {kMono16, kRgb16,  "GRAY2RGB",   Convert<CV_16UC1, CV_16UC3, cv::COLOR_GRAY2RGB>},
    {kMono16, kBgr16,  "GRAY2BGR",   Convert<CV_16UC1, CV_16UC3, cv::COLOR_GRAY2BGR>},
    {kMono16, kBgru16, "GRAY2BGRA",  Convert<CV_16UC1, CV_16UC4, cv::COLOR_GRAY2BGRA>},
    {kRgb,    kMono8,  "RGB2GRAY",   Convert<CV_8UC3,  CV_8UC1,  cv::COLOR_RGB2GRAY>},
    {kBgr,    kMono8,  "BGR2GRAY",   Convert<CV_8UC3,  CV_8UC1,  cv::COLOR_BGR2GRAY>},
    {kRgbu,   kMono8,  "RGBA2GRAY",  Convert<CV_8UC4,  CV_8UC1,  cv::COLOR_RGBA2GRAY>},
    {kBgru,   kMono8,  "BGRA2GRAY",  Convert<CV_8UC4,  CV_8UC1,  cv::COLOR_BGRA2GRAY>},
    {kRgb16,  kMono16, "RGB2GRAY",   Convert<CV_16UC3, CV_16UC1, cv::COLOR_RGB2GRAY>},
    {kBgr16,  kMono16, "BGR2GRAY",   Convert<CV_16UC3, CV_16UC1, cv::COLOR_BGR2GRAY>},
    {kBgru16, kMono16, "BGRA2GRAY",  Convert<CV_16UC4, CV_16UC1, cv::COLOR_BGRA2GRAY>},

    {kRgb,    kBgr,    "RGB2BGR",    Convert<CV_8UC3,  CV_8UC3,  cv::COLOR_RGB2BGR>},
    {kBgr,    kRgb,    "BGR2RGB",    Convert<CV_8UC3,  CV_8UC3,  cv::COLOR_BGR2RGB>},
    {kRgb,    kRgbu,   "RGB2RGBA",   Convert<CV_8UC3,  CV_8UC4,  cv::COLOR_RGB2RGBA>},
    {kBgr,    kBgru,   "BGR2BGRA",   Convert<CV_8UC3,  CV_8UC4,  cv::COLOR_BGR2BGRA>},
    {kRgb,    kBgru,   "RGB2BGRA",   Convert<CV_8UC3,  CV_8UC4,  cv::COLOR_RGB2BGRA>},
    {kBgr,    kRgbu,   "BGR2RGBA",   Convert<CV_8UC3,  CV_8UC4,  cv::COLOR_BGR2RGBA>},
    {kRgbu,   kRgb,    "RGBA2RGB",   Convert<CV_8UC4,  CV_8UC3,  cv::COLOR_RGBA2RGB>},
    {kBgru,   kBgr,    "BGRA2BGR",   Convert<CV_8UC4,  CV_8UC3,  cv::COLOR_BGRA2BGR>},
    {kRgbu,   kBgr,    "RGBA2BGR",   Convert<CV_8UC4,  CV_8UC3,  cv::COLOR_RGBA2BGR>},
    {kBgru,   kRgb,    "BGRA2RGB",   Convert<CV_8UC4,  CV_8UC3,  cv::COLOR_BGRA2RGB>},
    {kRgbu,   kBgru,   "RGBA2BGRA",  Convert<CV_8UC4,  CV_8UC4,  cv::COLOR_RGBA2BGRA>},
    {kBgru,   kRgbu,   "BGRA2RGBA",  Convert<CV_8UC4,  CV_8UC4,  cv::COLOR_BGRA2RGBA>},
    {kRgb16,  kBgr16,  "RGB2BGR",    Convert<CV_16UC3, CV_16UC3, cv::COLOR_RGB2BGR>},
    {kBgr16,  kRgb16,  "BGR2RGB",    Convert<CV_16UC3, CV_16UC3, cv::COLOR_BGR2RGB>},
    {kRgb16,  kBgru16, "RGB2BGRA",   Convert<CV_16UC3, CV_16UC4, cv::COLOR_RGB2BGRA>},
    {kBgr16,  kBgru16, "BGR2BGRA",   Convert<CV_16UC3, CV_16UC4, cv::COLOR_BGR2BGRA>},
    {kBgru16, kRgb16,  "BGRA2RGB",   Convert<CV_16UC4, CV_16UC3, cv::COLOR_BGRA2RGB>},
    {kBgru16, kBgr16,  "BGRA2BGR",   Convert<CV_16UC4, CV_16UC3, cv::COLOR_BGRA2BGR>},

    // Limited range, as the library has these.
    {kUyvy,   kRgb,    "YUV2RGB_UYVY",  Convert<CV_8UC2, CV_8UC3, cv::COLOR_YUV2RGB_UYVY>},
    {kUyvy,   kBgr,    "YUV2BGR_UYVY",  Convert<CV_8UC2, CV_8UC3, cv::COLOR_YUV2BGR_UYVY>},
    {kUyvy,   kRgbu,   "YUV2RGBA_UYVY", Convert<CV_8UC2, CV_8UC4, cv::COLOR_YUV2RGBA_UYVY>},
    {kUyvy,   kBgru,   "YUV2BGRA_UYVY", Convert<CV_8UC2, CV_8UC4, cv::COLOR_YUV2BGRA_UYVY>},
    {kUyvy,   kMono8,  "YUV2GRAY_UYVY", Convert<CV_8UC2, CV_8UC1, cv::COLOR_YUV2GRAY_UYVY>},

    {kYvu,    kRgb,    "YCrCb2RGB",   Convert<CV_8UC3, CV_8UC3, cv::COLOR_YCrCb2RGB>},
    {kYvu,    kBgr,    "YCrCb2BGR",   Convert<CV_8UC3, CV_8UC3, cv::COLOR_YCrCb2BGR>},
    {kRgb,    kYvu,    "RGB2YCrCb",   Convert<CV_8UC3, CV_8UC3, cv::COLOR_RGB2YCrCb>},
    {kBgr,    kYvu,    "BGR2YCrCb",   Convert<CV_8UC3, CV_8UC3, cv::COLOR_BGR2YCrCb>},
    {kYvu,    kUyv,    "mixChannels", Shuffle<2, 0, 1>},
    {kUyv,    kYvu,    "mixChannels", Shuffle<1, 2, 0>},

    // Bilinear. A pattern is named by the second row's second and third pixel.
    {kRaw8,   kRgb,    "BayerBG2RGB", Convert<CV_8UC1,  CV_8UC3,  cv::COLOR_BayerBG2RGB>},
    {kRaw8,   kBgr,    "BayerBG2BGR", Convert<CV_8UC1,  CV_8UC3,  cv::COLOR_BayerBG2BGR>},
    {kRaw16,  kRgb16,  "BayerBG2RGB", Convert<CV_16UC1, CV_16UC3, cv::COLOR_BayerBG2RGB>},
    {kRaw16,  kBgr16,  "BayerBG2BGR", Convert<CV_16UC1, CV_16UC3, cv::COLOR_BayerBG2BGR>},
    {kRaw8,   kMono8,  "BayerBG2GRAY", Convert<CV_8UC1,  CV_8UC1,  cv::COLOR_BayerBG2GRAY>},
    {kRaw16,  kMono16, "BayerBG2GRAY", Convert<CV_16UC1, CV_16UC1, cv::COLOR_BayerBG2GRAY>},
};
// clang-format on

std::optional<Peer> Find(PixelFormat source, PixelFormat target) {
  cv::setNumThreads(1);
  // Strips of a mosaic would get borders of their own: what takes two steps is left out.
  const bool raw = FindPixelFormat(source)->IsRaw();
  std::optional<Peer> peer = FindWay("opencv", kSteps, source, target);
  return peer && raw && peer->how.find('+') != std::string::npos ? std::nullopt : peer;
}

}  // namespace

PeerLibrary OpenCv() {
  return {"opencv", CV_VERSION, Find};
}

}  // namespace Korvex2::Bench
