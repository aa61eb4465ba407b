// libswscale: one context for a pair of formats and a size, full range on both sides.

extern "C" {
#include <libavutil/log.h>
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

#include <memory>

#include "Peers.h"
#include "PixelFormats.h"

namespace Korvex2::Bench {
namespace {

AVPixelFormat FormatOf(PixelFormat format) {
  // clang-format off
  switch (format) {
    case PIXEL_FORMAT_MONO8:   return AV_PIX_FMT_GRAY8;
    case PIXEL_FORMAT_MONO16:  return AV_PIX_FMT_GRAY16LE;
    case PIXEL_FORMAT_RGB8:    return AV_PIX_FMT_RGB24;
    case PIXEL_FORMAT_RGBU:    return AV_PIX_FMT_RGBA;
    case PIXEL_FORMAT_RGB16:   return AV_PIX_FMT_RGB48;
    case PIXEL_FORMAT_BGR:     return AV_PIX_FMT_BGR24;
    case PIXEL_FORMAT_BGRU:    return AV_PIX_FMT_BGRA;
    case PIXEL_FORMAT_BGR16:   return AV_PIX_FMT_BGR48;
    case PIXEL_FORMAT_BGRU16:  return AV_PIX_FMT_BGRA64;
    case PIXEL_FORMAT_411YUV8: return AV_PIX_FMT_UYYVYY411;
    case PIXEL_FORMAT_422YUV8: return AV_PIX_FMT_UYVY422;
    case PIXEL_FORMAT_RAW8:    return AV_PIX_FMT_BAYER_RGGB8;
    case PIXEL_FORMAT_RAW16:   return AV_PIX_FMT_BAYER_RGGB16LE;
    default:                   return AV_PIX_FMT_NONE;
  }
  // clang-format on
}

int StrideOf(PixelFormat format, FrameSize size) {
  const PixelFormatInfo& info = *FindPixelFormat(format);
  return static_cast<int>(size.cols * info.bytesPerGroup / info.pixelsPerGroup);
}

using Context = std::shared_ptr<SwsContext>;

Context MakeContext(PixelFormat source, PixelFormat target, FrameSize size) {
  av_log_set_level(AV_LOG_ERROR);
  const int cols = static_cast<int>(size.cols);
  const int rows = static_cast<int>(size.rows);
  const Context context(sws_getContext(cols, rows, FormatOf(source), cols, rows, FormatOf(target),
                                       SWS_POINT, nullptr, nullptr, nullptr),
                        sws_freeContext);
  if (context != nullptr) {
    const int* bt601 = sws_getCoefficients(SWS_CS_ITU601);
    constexpr int kFull = 1;
    constexpr int kOne = 1 << 16;
    sws_setColorspaceDetails(context.get(), bt601, kFull, bt601, kFull, 0, kOne, kOne);
  }
  return context;
}

Call MakeCall(PixelFormat source, PixelFormat target, FrameSize size) {
  const Context context = MakeContext(source, target, size);
  if (context == nullptr) return nullptr;
  const int sourceStride = StrideOf(source, size);
  const int targetStride = StrideOf(target, size);
  const int rows = static_cast<int>(size.rows);
  return [=](const std::uint8_t* src, std::uint8_t* dst) {
    sws_scale(context.get(), &src, &sourceStride, 0, rows, &dst, &targetStride);
  };
}

std::optional<Peer> Find(PixelFormat source, PixelFormat target) {
  const AVPixelFormat from = FormatOf(source);
  const AVPixelFormat to = FormatOf(target);
  if (from == AV_PIX_FMT_NONE || to == AV_PIX_FMT_NONE || sws_isSupportedInput(from) == 0 ||
      sws_isSupportedOutput(to) == 0) {
    return std::nullopt;
  }
  return Peer{"swscale", "sws_scale",
              [source, target](FrameSize size) { return MakeCall(source, target, size); }};
}

}  // namespace

PeerLibrary SwScale() {
  const unsigned version = swscale_version();
  std::string text = std::to_string(version >> 16);
  text.append(".").append(std::to_string(version >> 8 & 0xFF));
  return {"swscale", text, Find};
}

}  // namespace Korvex2::Bench
