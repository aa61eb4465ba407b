#include "ImageConverterARMStub.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <source_location>
#include <typeinfo>

#include "InternalError.h"
#include "PixelFormats.h"
#include "SingletonDefinitions.h"
#include "Utilities.h"
#include "kernels/Kernels.h"
#include "kernels/scalar/Clamp.h"
#include "routes/BoundedRun.h"
#include "routes/PieceWalk.h"
#include "routes/Routines.h"

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
        !TemporariesFit(*info.firstStep, source)) {
      return false;
    }
  }
  return TemporariesFit(*info.lastStep, source);
}

// Bytes of a sample or pixel of the engine; 0 for an output that it refuses.
std::size_t BytesRead(BayerPixelFormat mosaic) {
  return mosaic == BAYER_PIXEL_FORMAT_RAW16 ? 2 : 1;
}

std::size_t BytesWritten(BayerPixelFormat picture) {
  // clang-format off
  switch (picture) {
    case BAYER_PIXEL_FORMAT_RAW8:
    case BAYER_PIXEL_FORMAT_RAW16:  return 0;
    case BAYER_PIXEL_FORMAT_BGR8:
    case BAYER_PIXEL_FORMAT_RGB8:   return 3;
    case BAYER_PIXEL_FORMAT_BGRU8:
    case BAYER_PIXEL_FORMAT_RGBU8:  return 4;
    case BAYER_PIXEL_FORMAT_BGR16:
    case BAYER_PIXEL_FORMAT_RGB16:  return 6;
    case BAYER_PIXEL_FORMAT_BGRU16:
    case BAYER_PIXEL_FORMAT_RGBU16: return 8;
  }
  // clang-format on
  return 0;
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

Error ImageConverter::Convert(const Image* pSrc, PixelFormat destFormat, Image* pDst) {
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

  switch (destFormat) {
#define KORVEX2_FORMAT(enumerator, value, name, routine, ...) \
  case PIXEL_FORMAT_##enumerator:                             \
    return ConvertTo##routine(pSrc, pDst);
#include "Formats.def"
    default:
      return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kInvalidFormat);
  }
}

Error ImageConverter::ConvertInPlace(Image*, PixelFormat) {
  return Raise(CallerLine(), VORERROR_NOT_IMPLEMENTED, kNotImplemented);
}

// --- Dispatch -----------------------------------------------------------------------------------

#define KORVEX2_FORMAT(enumerator, value, name, routine, ...)                \
  Error ImageConverter::ConvertTo##routine(const Image* pSrc, Image* pDst) { \
    return Dispatch(PIXEL_FORMAT_##enumerator, pSrc, pDst);                  \
  }
#include "Formats.def"

Error ImageConverter::Dispatch(PixelFormat target, const Image* pSrc, Image* pDst) const {
  const RoutineInfo* routine = FindRoute(pSrc->GetPixelFormat(), target);
  if (routine == nullptr) {
    return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kInvalidFormat);
  }
  return Run(*routine, pSrc, pDst);
}

// --- Routines -----------------------------------------------------------------------------------

#define MEMBER(routine)                                                 \
  Error ImageConverter::routine(const Image* pSrc, Image* pDst) const { \
    return Run(GetRoutine(Routine::routine), pSrc, pDst);               \
  }
#define KORVEX2_KERNEL(routine, ...) MEMBER(routine)
#define KORVEX2_WRAPPER(routine, ...) MEMBER(routine)
#define KORVEX2_CHAIN(routine, ...) MEMBER(routine)
#include "Routines.def"
#undef MEMBER

Error ImageConverter::Run(const RoutineInfo& info, const Image* pSrc, Image* pDst) const {
  if (info.guard == RoutineInfo::Guard::Guarded && LacksBuffer(pSrc, pDst)) {
    return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kNullImages);
  }
  if (MayWalk(info, pSrc, pDst)) {
    return WalkRoutine(info, pSrc, pDst);
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
      pDst == nullptr || !KeepsItsBuffer(*pSrc) || !KeepsItsBuffer(*pDst) || !IsWalkable(info)) {
    return false;
  }
  const unsigned char* src = pSrc->GetData();
  const unsigned char* dst = pDst->GetData();
  if (src == nullptr || dst == nullptr) {
    return false;
  }
  const std::size_t pixels = GetNumberOfPixels(pSrc);
  const RunSize size = RunSizeOf(info, pixels);
  const std::size_t cleared = ClearsDestination(info) ? pDst->GetDataSize() : 0;
  const std::size_t written = pDst->Writable(dst, std::max(size.destination, cleared), pixels);
  return AreApart(src, pSrc->Readable(src, size.source), dst, written) &&
         TemporariesFit(info, *pSrc);
}

Error ImageConverter::WalkRoutine(const RoutineInfo& info, const Image* pSrc, Image* pDst) const {
  const std::size_t pixels = GetNumberOfPixels(pSrc);
  const DestinationBytes to = BytesToWrite(info, *pDst, pDst->GetData(), pixels);
  const Kernels::Flags flags = {.littleEndian = m_LittleEndian};
  RunWithin(info, BytesToRead(info, *pSrc, pSrc->GetData(), pixels), to, pixels,
            [&info, flags](const std::uint8_t* src, std::uint8_t* dst, std::size_t count) {
              Walk(info, src, dst, count, flags);
            });
  if (ClearsDestination(info) && to.size < pDst->GetDataSize()) {
    std::memset(to.data + to.size, 0, pDst->GetDataSize() - to.size);
  }
  return Success();
}

Error ImageConverter::RunKernel(const RoutineInfo& info, const Image* pSrc, Image* pDst) const {
  const unsigned char* src = pSrc->GetData();
  unsigned char* dst = pDst->GetData();
  const std::size_t pixels = GetNumberOfPixels(pSrc);
  if (info.extra == RoutineInfo::Extra::ClearsDestination) {
    std::memset(dst, 0, pDst->Writable(dst, pDst->GetDataSize(), pixels));
  }
  const SourceBytes from = BytesToRead(info, *pSrc, src, pixels);
  const DestinationBytes to = BytesToWrite(info, *pDst, dst, pixels);
  const auto run = [kernel = Kernels::Find(RoutineOf(info)),
                    flags = Kernels::Flags{.littleEndian = m_LittleEndian}](
                       const std::uint8_t* in, std::uint8_t* out, std::size_t count) {
    kernel(in, out, count, flags);
  };
  const bool checksEachPixel = info.extra == RoutineInfo::Extra::ChecksEachPixel &&
                               !(KeepsItsBuffer(*pSrc) && KeepsItsBuffer(*pDst));
  if (!checksEachPixel) {
    RunWithin(info, from, to, pixels, run);
    return Success();
  }
  const RunSize step = RunSizeOf(info, 1);
  const std::size_t whole = std::min(from.size / step.source, to.size / step.destination);
  for (std::size_t i = 0; i < pixels; ++i) {
    if (LacksBuffer(pSrc, pDst)) {
      return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kNullImages);
    }
    if (i < whole) {
      run(src + i * step.source, dst + i * step.destination, 1);
      continue;
    }
    RunWithin(info, from.From(i * step.source), to.From(i * step.destination), 1, run);
  }
  return Success();
}

Error ImageConverter::RunWrapper(const RoutineInfo& info, const Image* pSrc, Image* pDst) const {
  const Error error = Run(*info.lastStep, pSrc, pDst);
  return info.result == RoutineInfo::Result::LastStep ? error : Success();
}

// Only the table decides whether a step's failure is passed on; callers count on the rows that drop
// it. A temporary that could not be shaped has no buffer, so the steps refuse it and write nothing.
Error ImageConverter::RunChain(const RoutineInfo& info, const Image* pSrc, Image* pDst) const {
  if (RoutineOf(info) ==
      Routine::ConvertY8ToYUV411) {  // reads that a subclass sees; nothing uses them
    (void)pSrc->GetData();
    (void)pDst->GetData();
    (void)GetNumberOfPixels(pSrc);
  }
  Image temporary;
  (void)TempImage(pSrc, &temporary, info.temporary);
  (void)Run(*info.firstStep, pSrc, &temporary);
  const Error error = Run(*info.lastStep, &temporary, pDst);
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
  if (pImage == nullptr) {
    return 0;
  }
  const std::uint64_t rows = pImage->GetRows();
  return static_cast<unsigned int>(rows * pImage->GetCols());
}

// What an image has of the bytes that a routine touches in a run of pixels.
SourceBytes ImageConverter::BytesToRead(const RoutineInfo& info, const Image& source,
                                        const unsigned char* data, std::size_t pixels) {
  return {data, source.Readable(data, RunSizeOf(info, pixels).source)};
}

DestinationBytes ImageConverter::BytesToWrite(const RoutineInfo& info, const Image& destination,
                                              unsigned char* data, std::size_t pixels) {
  return {data, destination.Writable(data, RunSizeOf(info, pixels).destination, pixels)};
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
    case NONE:  // before the method is looked at, and byte by byte whatever the depth
      return ConvertY8ToRGB(pSrc, pDst);
    case RGGB:
    case GRBG:
    case GBRG:
    case BGGR:
      break;
    default:
      return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kUnknownTile);
  }
  switch (method) {
    case NO_COLOR_PROCESSING:
      return ConvertY8ToRGB(pSrc, pDst);
    case NEAREST_NEIGHBOR:
    case EDGE_SENSING:
    case HQ_LINEAR:
    case RIGOROUS:
    case DIRECTIONAL_FILTER:
      break;
    default:
      return Raise(CallerLine(), VORERROR_INVALID_PARAMETER, kUnknownMethod);
  }
  const std::size_t pixels = std::size_t{rows} * cols;
  const std::size_t read = pixels * BytesRead(TranslateToBayerPixelFormat(srcFormat));
  const std::size_t written = pixels * BytesWritten(TranslateToBayerPixelFormat(destFormat));
  const SourceBytes from = {pInput, pSrc->Readable(pInput, read)};
  const DestinationBytes to = {pOutput, pDst->Writable(pOutput, written, pixels)};
  const bool fails = pInput == nullptr || pOutput == nullptr;  // as the engine will say
  const bool whole = from.size == read && to.size == written;
  const Error error =
      fails || whole
          ? ProcessImage(srcFormat, pInput, rows, cols, destFormat, pOutput, method, tile)
          : ProcessCopies(srcFormat, from, rows, cols, destFormat, to, method, tile);
  if (error != VORERROR_OK) {
    return Raise(CallerLine(), VORERROR_FAILED, kEngineFailed);
  }
  return Success();
}

// The engine wants every byte of its samples and pixels, which buffers with a stride that falls
// short of a row's pixels do not have.
Error ImageConverter::ProcessCopies(PixelFormat srcPixFmt, const SourceBytes& input,
                                    unsigned int rows, unsigned int cols, PixelFormat destPixFmt,
                                    const DestinationBytes& output,
                                    ColorProcessingAlgorithm algorithm,
                                    BayerTileFormat tilePattern) const {
  const auto shape = [=](Image& image, PixelFormat format) {
    const unsigned int stride = PackedStride(cols, Image::DetermineBitsPerPixel(format));
    return image.SetDimensions(rows, cols, stride, format, tilePattern);
  };
  Image mosaic;
  Image picture;
  const bool deep = TranslateToBayerPixelFormat(srcPixFmt) == BAYER_PIXEL_FORMAT_RAW16;
  for (const Error& error :
       {shape(mosaic, deep ? PIXEL_FORMAT_RAW16 : PIXEL_FORMAT_RAW8), shape(picture, destPixFmt)}) {
    if (error != VORERROR_OK) {
      return error;
    }
  }
  std::memcpy(mosaic.GetData(), input.data, input.size);
  const Error error = ProcessImage(srcPixFmt, mosaic.GetData(), rows, cols, destPixFmt,
                                   picture.GetData(), algorithm, tilePattern);
  if (error == VORERROR_OK) {
    std::memcpy(output.data, picture.GetData(), output.size);
  }
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
