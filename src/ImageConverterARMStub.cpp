#include "ImageConverterARMStub.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <source_location>
#include <typeinfo>

#include "InternalError.h"
#include "PixelFormats.h"
#include "Utilities.h"
#include "kernels/Kernels.h"
#include "kernels/scalar/Clamp.h"
#include "routes/PieceWalk.h"

namespace Korvex2 {
namespace {

constexpr char kNotImplemented[] = "Not implemented.";
constexpr char kNullSource[] = "The source image pointer was NULL or contained a NULL buffer.";
constexpr char kNullDestination[] = "The destination image pointer was NULL.";
constexpr char kNullImages[] =
    "The source and or destination image pointer was NULL or contained a NULL buffer.";
constexpr char kRefusedDimensions[] =
    "Conversion failed because the destination image would not accept the required dimensions.";
constexpr char kInvalidFormat[] = "The specified pixel format is not a valid output type.";
constexpr char kUnknownTile[] = "The bayer tile pattern was not recognized.";
constexpr char kUnknownMethod[] = "The selected color processing method was not recognized.";
constexpr char kEngineFailed[] = "The color processing encountered an error.";

constexpr char kFile[] = "ImageConverterARMStub.cpp";

int CallerLine(std::source_location where = std::source_location::current()) {
  return static_cast<int>(where.line());
}

Error Success() {
  return InternalError(VORERROR_OK);
}

Error Raise(int line, ErrorType type, const char* message) {
  return InternalError(line, kFile, __DATE__, __TIME__, type, "%s", message);
}

Error RaiseRefusedDimensions(int line, const Error& refusal) {
  return InternalError(line, kFile, __DATE__, __TIME__, VORERROR_FAILED, InternalError(refusal),
                       "%s", kRefusedDimensions);
}

bool LacksBuffer(const Image* pSrc, Image* pDst) {
  return pSrc == nullptr || pSrc->GetData() == nullptr || pDst == nullptr ||
         pDst->GetData() == nullptr;
}

// A plain Image keeps its buffer for the length of a call; a subclass might not.
bool KeepsItsBuffer(const Image& image) {
  return typeid(image) == typeid(Image);
}

bool AreApart(const unsigned char* a, std::size_t aSize, const unsigned char* b,
              std::size_t bSize) {
  const std::less_equal<const unsigned char*> before;
  return before(a + aSize, b) || before(b + bSize, a);
}

// Whether every temporary image of a route could be shaped for this source.
bool TemporariesFit(const RoutineInfo& info, const Image& source) {
  if (info.kind == RoutineInfo::Kind::Kernel) {
    return true;
  }
  if (info.kind == RoutineInfo::Kind::Chain) {
    const unsigned int cols = source.GetCols();
    const unsigned int stride = PackedStride(cols, Image::DetermineBitsPerPixel(info.temporary));
    if (Image::CheckDimensions(source.GetRows(), cols, stride, info.temporary) != VORERROR_OK ||
        !TemporariesFit(GetRoutine(info.firstStep), source)) {
      return false;
    }
  }
  return TemporariesFit(GetRoutine(info.lastStep), source);
}

// The bytes of an image. The stride of a very long row can fall short of its pixels, which a plain
// Image holds all the same.
std::size_t HeldBytes(const Image& image) {
  const PixelFormatInfo* format = FindPixelFormat(image.GetPixelFormat());
  if (format == nullptr || !KeepsItsBuffer(image)) {
    return image.GetDataSize();
  }
  const std::uint64_t pixels = std::uint64_t{image.GetRows()} * image.GetCols();
  return std::max<std::size_t>(image.GetDataSize(), GroupedSize(*format, pixels));
}

// Zeroes the destination from a byte on, so that a reused one does not pass off an earlier frame as
// this one where a conversion could not write.
void ClearFrom(std::size_t offset, Image* pDst) {
  unsigned char* data = pDst == nullptr ? nullptr : pDst->GetData();
  const std::size_t size = data == nullptr ? 0 : HeldBytes(*pDst);
  if (offset < size) {
    std::memset(data + offset, 0, size - offset);
  }
}

}  // namespace

template class Singleton<ImageConverter>;

ImageConverter::ImageConverter() {
  SystemInfo info;
  (void)Utilities::GetSystemInfo(&info);  // sets byteOrder even when it fails
  m_LittleEndian = info.byteOrder == BYTE_ORDER_LITTLE_ENDIAN;
}

ImageConverter::~ImageConverter() {}

// --- Entry --------------------------------------------------------------------------------------

Error ImageConverter::Convert(const Image* pSrc, PixelFormat destFormat, Image* pDst) const {
  if (pSrc == nullptr || pSrc->GetData() == nullptr) {
    return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kNullSource);
  }
  if (pDst == nullptr) {
    return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kNullDestination);
  }

  unsigned int rows = 0;
  unsigned int cols = 0;
  unsigned int stride = 0;
  PixelFormat srcFormat = UNSPECIFIED_PIXEL_FORMAT;
  BayerTileFormat tile = NONE;
  pSrc->GetDimensions(&rows, &cols, &stride, &srcFormat, &tile);

  const unsigned int destStride = PackedStride(cols, Image::DetermineBitsPerPixel(destFormat));
  const Error error = pDst->SetDimensions(rows, cols, destStride, destFormat, tile);
  if (error != VORERROR_OK) {
    return RaiseRefusedDimensions(CallerLine(), error);
  }
  if (srcFormat == destFormat) {
    return pDst->DeepCopy(pSrc);
  }

  // clang-format off
  switch (destFormat) {
    case PIXEL_FORMAT_MONO8:   return ConvertToMono8(pSrc, pDst);
    case PIXEL_FORMAT_MONO12:  return ConvertToMono12(pSrc, pDst);
    case PIXEL_FORMAT_MONO16:  return ConvertToMono16(pSrc, pDst);
    case PIXEL_FORMAT_RGB8:    return ConvertToRGB(pSrc, pDst);
    case PIXEL_FORMAT_RGBU:    return ConvertToRGBU(pSrc, pDst);
    case PIXEL_FORMAT_RGB16:   return ConvertToRGB16(pSrc, pDst);
    case PIXEL_FORMAT_BGR:     return ConvertToBGR(pSrc, pDst);
    case PIXEL_FORMAT_BGRU:    return ConvertToBGRU(pSrc, pDst);
    case PIXEL_FORMAT_BGR16:   return ConvertToBGR16(pSrc, pDst);
    case PIXEL_FORMAT_BGRU16:  return ConvertToBGRU16(pSrc, pDst);
    case PIXEL_FORMAT_411YUV8: return ConvertToYUV411(pSrc, pDst);
    case PIXEL_FORMAT_422YUV8: return ConvertToYUV422(pSrc, pDst);
    case PIXEL_FORMAT_444YUV8: return ConvertToYUV444(pSrc, pDst);
    case PIXEL_FORMAT_RAW8:    return ConvertToRAW8(pSrc, pDst);
    case PIXEL_FORMAT_RAW12:   return ConvertToRAW12(pSrc, pDst);
    case PIXEL_FORMAT_RAW16:   return ConvertToRAW16(pSrc, pDst);
    default:                   return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kInvalidFormat);
  }
  // clang-format on
}

Error ImageConverter::ConvertInPlace(Image*, PixelFormat) const {
  return Raise(CallerLine(), VORERROR_NOT_IMPLEMENTED, kNotImplemented);
}

// --- Dispatch -----------------------------------------------------------------------------------

#define TARGET(routine, format)                                         \
  Error ImageConverter::routine(const Image* pSrc, Image* pDst) const { \
    return Dispatch(PIXEL_FORMAT_##format, CallerLine(), pSrc, pDst);   \
  }
TARGET(ConvertToMono8, MONO8)
TARGET(ConvertToMono12, MONO12)
TARGET(ConvertToMono16, MONO16)
TARGET(ConvertToRGB, RGB8)
TARGET(ConvertToRGBU, RGBU)
TARGET(ConvertToRGB16, RGB16)
TARGET(ConvertToBGR, BGR)
TARGET(ConvertToBGRU, BGRU)
TARGET(ConvertToBGR16, BGR16)
TARGET(ConvertToBGRU16, BGRU16)
TARGET(ConvertToYUV411, 411YUV8)
TARGET(ConvertToYUV422, 422YUV8)
TARGET(ConvertToYUV444, 444YUV8)
TARGET(ConvertToRAW8, RAW8)
TARGET(ConvertToRAW12, RAW12)
TARGET(ConvertToRAW16, RAW16)
#undef TARGET

// A refusal bears the line of the target routine that refused.
Error ImageConverter::Dispatch(PixelFormat target, int line, const Image* pSrc, Image* pDst) const {
  const Routine routine = FindRoute(pSrc->GetPixelFormat(), target);
  if (routine == Routine::None || routine == Routine::SameFormat) {
    return Raise(line, VORERROR_INVALID_PARAMETER, kInvalidFormat);
  }
  return Run(routine, pSrc, pDst);
}

// --- Routines -----------------------------------------------------------------------------------

#define MEMBER(routine)                                                 \
  Error ImageConverter::routine(const Image* pSrc, Image* pDst) const { \
    return Run(Routine::routine, pSrc, pDst);                           \
  }
#define KERNEL(routine, ...) MEMBER(routine)
#define WRAPPER(routine, ...) MEMBER(routine)
#define CHAIN(routine, ...) MEMBER(routine)
#include "routes/Routines.def"
#undef MEMBER

Error ImageConverter::Run(Routine routine, const Image* pSrc, Image* pDst) const {
  const RoutineInfo& info = GetRoutine(routine);
  if (info.guard == RoutineInfo::Guard::Guarded && LacksBuffer(pSrc, pDst)) {
    return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kNullImages);
  }
  if (MayWalk(info, pSrc, pDst)) {
    return WalkRoutine(routine, pSrc, pDst);
  }
  // clang-format off
  switch (info.kind) {
    case RoutineInfo::Kind::Kernel:   return RunKernel(info, pSrc, pDst);
    case RoutineInfo::Kind::Wrapper:  return RunWrapper(info, pSrc, pDst);
    case RoutineInfo::Kind::Chain:    return RunChain(info, pSrc, pDst);
    case RoutineInfo::Kind::Demosaic: return ConvertBayerImageToBGR(pSrc, pDst);
  }
  // clang-format on
  return Success();
}

// Whether the route can be walked over the two buffers in pieces and give the same bytes: images
// that keep their buffers, runs apart from each other, temporaries that an image could hold.
bool ImageConverter::MayWalk(const RoutineInfo& info, const Image* pSrc, const Image* pDst) const {
  if (m_LittleEndian != (std::endian::native == std::endian::little) || pSrc == nullptr ||
      pDst == nullptr || !KeepsItsBuffer(*pSrc) || !KeepsItsBuffer(*pDst) ||
      !IsWalkable(info.routine)) {
    return false;
  }
  const unsigned char* src = pSrc->GetData();
  const unsigned char* dst = pDst->GetData();
  RunSize size = RunSizeOf(info.routine, GetNumberOfPixels(pSrc));
  if (ClearsDestination(info.routine)) {
    size.destination = std::max<std::size_t>(size.destination, pDst->GetDataSize());
  }
  return src != nullptr && dst != nullptr && AreApart(src, size.source, dst, size.destination) &&
         TemporariesFit(info, *pSrc);
}

Error ImageConverter::WalkRoutine(Routine routine, const Image* pSrc, Image* pDst) const {
  const std::size_t pixels = GetNumberOfPixels(pSrc);
  Walk(routine, pSrc->GetData(), pDst->GetData(), pixels, {.littleEndian = m_LittleEndian});
  const std::size_t written = pixels + pixels % 2;  // by the kernel that clears, which packs pairs
  if (ClearsDestination(routine) && written < pDst->GetDataSize()) {
    std::memset(pDst->GetData() + written, 0, pDst->GetDataSize() - written);
  }
  return Success();
}

Error ImageConverter::RunKernel(const RoutineInfo& info, const Image* pSrc, Image* pDst) const {
  const Kernels::Kernel kernel = Kernels::Find(info.routine);
  const Kernels::Flags flags = {.littleEndian = m_LittleEndian};
  const unsigned char* src = pSrc->GetData();
  unsigned char* dst = pDst->GetData();
  const std::size_t pixels = GetNumberOfPixels(pSrc);

  if (info.extra == RoutineInfo::Extra::ClearsDestination) {
    std::memset(dst, 0, pDst->GetDataSize());
  }
  const bool checksEachPixel = info.extra == RoutineInfo::Extra::ChecksEachPixel &&
                               !(KeepsItsBuffer(*pSrc) && KeepsItsBuffer(*pDst));
  if (!checksEachPixel) {
    kernel(src, dst, pixels, flags);
    return Success();
  }
  for (std::size_t i = 0; i < pixels; ++i) {
    if (LacksBuffer(pSrc, pDst)) {
      return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kNullImages);
    }
    kernel(src + i * info.sourceBytesPerStep, dst + i * info.destinationBytesPerStep, 1, flags);
  }
  return Success();
}

Error ImageConverter::RunWrapper(const RoutineInfo& info, const Image* pSrc, Image* pDst) const {
  const Error error = Run(info.lastStep, pSrc, pDst);
  return info.result == RoutineInfo::Result::LastStep ? error : Success();
}

// Only the table decides whether a step's failure is passed on; callers count on the rows that drop
// it.
Error ImageConverter::RunChain(const RoutineInfo& info, const Image* pSrc, Image* pDst) const {
  Image temporary;
  if (TempImage(pSrc, &temporary, info.temporary) == VORERROR_FAILED) {  // too large, or no memory
    ClearFrom(0, pDst);
  }
  (void)Run(info.firstStep, pSrc, &temporary);
  const Error error = Run(info.lastStep, &temporary, pDst);
  return info.result == RoutineInfo::Result::LastStep ? error : Success();
}

// --- Helpers ------------------------------------------------------------------------------------

Error ImageConverter::TempImage(const Image* pSrc, Image* pTemporary, PixelFormat format) const {
  if (pSrc == nullptr || pSrc->GetData() == nullptr || pTemporary == nullptr) {
    return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kNullImages);
  }
  unsigned int rows = 0;
  unsigned int cols = 0;
  unsigned int stride = 0;
  PixelFormat srcFormat = UNSPECIFIED_PIXEL_FORMAT;
  BayerTileFormat tile = NONE;
  pSrc->GetDimensions(&rows, &cols, &stride, &srcFormat, &tile);

  const unsigned int tempStride = PackedStride(cols, Image::DetermineBitsPerPixel(format));
  const Error error = pTemporary->SetDimensions(rows, cols, tempStride, format, tile);
  return error != VORERROR_OK ? RaiseRefusedDimensions(CallerLine(), error) : Success();
}

// Wraps at 32 bits, where an image of no format or a subclass claims so many pixels.
unsigned int ImageConverter::GetNumberOfPixels(const Image* pImage) const {
  return pImage == nullptr
             ? 0
             : static_cast<unsigned int>(std::uint64_t{pImage->GetRows()} * pImage->GetCols());
}

unsigned char ImageConverter::Clamp_8bit(short value) const {
  return Kernels::Scalar::Clamp(value);
}

// --- Demosaicing --------------------------------------------------------------------------------

// Whatever colour layout the destination declares is what the engine writes, BGR or not.
Error ImageConverter::ConvertBayerImageToBGR(const Image* pSrc, Image* pDst) const {
  ColorProcessingAlgorithm method = pSrc->GetColorProcessing();
  if (method == DEFAULT) {
    method = Image::GetDefaultColorProcessing();
  }
  unsigned int rows = 0;
  unsigned int cols = 0;
  unsigned int stride = 0;
  pSrc->GetDimensions(&rows, &cols, &stride, nullptr, nullptr);
  const unsigned char* const pInput = pSrc->GetData();
  unsigned char* const pOutput = pDst->GetData();
  const PixelFormat srcFormat = pSrc->GetPixelFormat();
  const PixelFormat destFormat = pDst->GetPixelFormat();
  const BayerTileFormat tile = pSrc->GetBayerTileFormat();

  switch (tile) {
    case NONE:
      return ShowMosaicAsGrey(pSrc, pDst);  // before the method is looked at
    case RGGB:
    case GRBG:
    case GBRG:
    case BGGR:
      break;
    default:
      ClearFrom(0, pDst);
      return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kUnknownTile);
  }
  switch (method) {
    case NO_COLOR_PROCESSING:
      return ShowMosaicAsGrey(pSrc, pDst);
    case NEAREST_NEIGHBOR:
    case EDGE_SENSING:
    case HQ_LINEAR:
    case RIGOROUS:
    case DIRECTIONAL_FILTER:
      break;
    default:
      ClearFrom(0, pDst);
      return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kUnknownMethod);
  }
  const Error error =
      ProcessImage(srcFormat, pInput, rows, cols, destFormat, pOutput, method, tile);
  if (error != VORERROR_OK) {
    ClearFrom(0, pDst);
    return Raise(CallerLine(), VORERROR_FAILED, kEngineFailed);
  }
  return Success();
}

// Byte by byte whatever the depth of the samples and the layout of the destination, so a deeper one
// is filled in part; the rest reads as zero.
Error ImageConverter::ShowMosaicAsGrey(const Image* pSrc, Image* pDst) const {
  const Error error = ConvertY8ToRGB(pSrc, pDst);
  ClearFrom(std::size_t{3} * GetNumberOfPixels(pSrc), pDst);
  return error;
}

Error ImageConverter::ProcessImage(PixelFormat srcPixFmt, const unsigned char* pInputBuffer,
                                   unsigned int srcRows, unsigned int srcCols,
                                   PixelFormat destPixFmt, unsigned char* pOutputBuffer,
                                   ColorProcessingAlgorithm algorithm,
                                   BayerTileFormat tilePattern) const {
  const BayerPixelFormat in = TranslateToBayerPixelFormat(srcPixFmt);
  const BayerPixelFormat out = TranslateToBayerPixelFormat(destPixFmt);
  const BayerMethod method = TranslateToBayerMethod(algorithm);
  const BayerPattern pattern = TranslateToBayerPattern(tilePattern);
  const BayerError result =
      bayerToColor(in, pInputBuffer, static_cast<int>(srcRows), static_cast<int>(srcCols), out,
                   pOutputBuffer, method, pattern);
  if (result != beOK) {
    return Raise(CallerLine(), VORERROR_FAILED, kEngineFailed);
  }
  return Success();
}

BayerPixelFormat ImageConverter::TranslateToBayerPixelFormat(PixelFormat pixFmt) const {
  // clang-format off
  switch (pixFmt) {
    case PIXEL_FORMAT_RAW8:  return BAYER_PIXEL_FORMAT_RAW8;
    case PIXEL_FORMAT_RAW16: return BAYER_PIXEL_FORMAT_RAW16;
    case PIXEL_FORMAT_BGR:   return BAYER_PIXEL_FORMAT_BGR8;
    case PIXEL_FORMAT_BGRU:  return BAYER_PIXEL_FORMAT_BGRU8;
    case PIXEL_FORMAT_BGR16: return BAYER_PIXEL_FORMAT_BGR16;
    case PIXEL_FORMAT_RGB8:  return BAYER_PIXEL_FORMAT_RGB8;
    case PIXEL_FORMAT_RGBU:  return BAYER_PIXEL_FORMAT_RGBU8;
    case PIXEL_FORMAT_RGB16: return BAYER_PIXEL_FORMAT_RGB16;
    default:                 return BAYER_PIXEL_FORMAT_RAW8;
  }
  // clang-format on
}

BayerMethod ImageConverter::TranslateToBayerMethod(ColorProcessingAlgorithm algorithm) const {
  // clang-format off
  switch (algorithm) {
    case EDGE_SENSING:       return BAYER_METHOD_EDGE_SENSING;
    case HQ_LINEAR:          return BAYER_METHOD_HQLINEAR;
    case RIGOROUS:           return BAYER_METHOD_RIGOROUS;
    case DIRECTIONAL_FILTER: return BAYER_METHOD_DIRECTIONAL_FILTER;
    default:                 return BAYER_METHOD_NEAREST_NEIGHBOR;
  }
  // clang-format on
}

BayerPattern ImageConverter::TranslateToBayerPattern(BayerTileFormat tile) const {
  // clang-format off
  switch (tile) {
    case GRBG: return BAYER_PATTERN_GRBG;
    case GBRG: return BAYER_PATTERN_GBRG;
    case BGGR: return BAYER_PATTERN_BGGR;
    default:   return BAYER_PATTERN_RGGB;
  }
  // clang-format on
}

}  // namespace Korvex2
