#include "reference/Converter.h"

#include <algorithm>
#include <cstring>

#include "reference/Kernels.h"
#include "reference/Routes.h"

namespace Reference {
namespace {

Outcome Success() {
  return {};
}

Outcome Failure(int code, const char* message) {
  return {code, message, false, 0};
}

// The four tests before every routine, in their order.
bool AnyNull(const Frame* source, const Frame* destination) {
  if (source == nullptr) return true;
  if (source->data == nullptr) return true;
  if (destination == nullptr) return true;
  return destination->data == nullptr;
}

}  // namespace

void Frame::Shape(std::uint32_t newRows, std::uint32_t newCols, std::uint32_t newStride,
                  Format newFormat, std::uint32_t newTile) {
  const bool keeps = !owned.empty() && data == owned.data() && rows == newRows && cols == newCols &&
                     stride == newStride && format == newFormat;
  rows = newRows;
  cols = newCols;
  stride = newStride;
  format = newFormat;
  tile = newTile;
  dataSize = newRows * newStride;
  // One byte at least, so that there is an address.
  const std::size_t size = BufferBytes(newRows, newCols, newStride, newFormat) + 1;
  if (lentByte < 0) {
    owned.resize(keeps ? FrameBytes(newRows, newCols, newStride, newFormat) : 0);
  }
  owned.resize(size, static_cast<std::uint8_t>(std::max(lentByte, 0)));
  data = owned.data();
}

std::string Describe(const Outcome& outcome) {
  std::string text = std::to_string(outcome.code) + " \"" + outcome.message + "\"";
  if (outcome.hasCause) text += " caused by " + std::to_string(outcome.causeCode);
  return text;
}

std::uint32_t PixelCount(const Frame* frame) {
  return frame == nullptr ? 0 : frame->rows * frame->cols;
}

int EngineFormat(Format format) {
  switch (format) {
    case RAW8:
      return 0;
    case RAW16:
      return 1;
    case BGR:
      return 2;
    case BGRU:
      return 3;
    case BGR16:
      return 4;
    case RGB8:
      return 6;
    case RGBU:
      return 7;
    case RGB16:
      return 8;
    default:
      return 0;
  }
}

int EngineMethod(std::uint32_t method) {
  switch (method) {
    case 3:
      return 1;
    case 4:
      return 2;
    case 5:
      return 5;
    case 7:
      return 3;
    default:
      return 0;
  }
}

int EnginePattern(std::uint32_t tile) {
  switch (tile) {
    case 2:
      return 1;
    case 3:
      return 2;
    case 4:
      return 3;
    default:
      return 0;
  }
}

Outcome Converter::Demosaic(const Frame* source, Frame* destination) const {
  const std::uint32_t method = source->method == 0 ? defaultMethod : source->method;
  if (source->tile == 0) return Run("ConvertY8ToRGB", source, destination);
  if (source->tile > 4) return Failure(kInvalidParameter, kBadTile);
  if (method == 1) return Run("ConvertY8ToRGB", source, destination);
  if (method != 2 && method != 3 && method != 4 && method != 5 && method != 7) {
    return Failure(kInvalidParameter, kBadMethod);
  }
  const int result =
      engine(EngineFormat(source->format), source->data, static_cast<int>(source->rows),
             static_cast<int>(source->cols), EngineFormat(destination->format), destination->data,
             EngineMethod(method), EnginePattern(source->tile));
  return result == 0 ? Success() : Failure(kFailed, kEngineFailed);
}

Outcome Converter::TempImage(const Frame* source, Frame* temporary, Format format) const {
  if (source == nullptr || source->data == nullptr || temporary == nullptr) {
    return Failure(kInvalidParameter, kNull);
  }
  const std::uint32_t stride = RowBytes(source->cols, BitsPerPixel(format));
  const std::uint64_t bytes = BufferBytes(source->rows, source->cols, stride, format);
  if (bytes > memoryLimit || (hasMemory && !hasMemory())) return {kFailed, kRefusedShape, true, 0};
  temporary->Shape(source->rows, source->cols, stride, format, source->tile);
  return Success();
}

Outcome Converter::Run(const char* routine, const Frame* source, Frame* destination) const {
  if (std::strcmp(routine, kDemosaic) == 0) return Demosaic(source, destination);

  if (const KernelRow* kernel = FindKernel(routine)) {
    if (AnyNull(source, destination)) return Failure(kInvalidParameter, kNull);
    kernel->loop(
        {source->data, destination->data, PixelCount(source), littleEndian, destination->dataSize});
    return Success();
  }

  const RouteRow* route = FindRoute(routine);
  if (route == nullptr) return Failure(-1000, "no such routine");
  if (route->ownNullTest && AnyNull(source, destination)) {
    return Failure(kInvalidParameter, kNull);
  }
  Outcome last;
  if (route->temporary == UNSPECIFIED) {
    last = Run(route->last, source, destination);
  } else {
    Frame temporary;
    TempImage(source, &temporary, route->temporary);
    Run(route->first, source, &temporary);
    last = Run(route->last, &temporary, destination);
  }
  return route->returns == RouteRow::Returns::LastStep ? last : Success();
}

Outcome Converter::ConvertTo(Format target, const Frame* source, Frame* destination) const {
  const char* routine = Dispatch(source->format, target);
  if (routine == nullptr || *routine == *SameFormat) return Failure(kInvalidParameter, kBadFormat);
  return Run(routine, source, destination);
}

Outcome Converter::Convert(const Frame* source, Format target, Frame* destination) const {
  if (source == nullptr || source->data == nullptr) return Failure(kInvalidParameter, kSourceNull);
  if (destination == nullptr) return Failure(kInvalidParameter, kDestinationNull);
  const Format sourceFormat = source->format;  // read before the shaping: both may be one image
  const std::uint32_t stride = RowBytes(source->cols, BitsPerPixel(target));
  destination->Shape(source->rows, source->cols, stride, target, source->tile);
  if (sourceFormat == target) {
    if (source != destination) {
      destination->Shape(source->rows, source->cols, source->stride, target, source->tile);
      destination->method = source->method;
      const std::uint64_t frame =
          FrameBytes(source->rows, source->cols, source->stride, source->format);
      const std::size_t filled = destination->lentByte < 0
                                     ? destination->owned.size()
                                     : std::max<std::size_t>(frame, destination->dataSize);
      std::fill_n(destination->owned.begin(), filled, std::uint8_t{0});
      std::memcpy(destination->data, source->data, source->dataSize);
    }
    return Success();
  }
  if (!IsTarget(target)) return Failure(kInvalidParameter, kBadFormat);
  return ConvertTo(target, source, destination);
}

const char* FirstKernel(const char* routine) {
  while (FindKernel(routine) == nullptr) {
    if (std::strcmp(routine, kDemosaic) == 0) return "ConvertY8ToRGB";
    const RouteRow* route = FindRoute(routine);
    if (route == nullptr) return nullptr;
    routine = route->temporary == UNSPECIFIED ? route->last : route->first;
  }
  return routine;
}

const char* LastKernel(const char* routine) {
  while (FindKernel(routine) == nullptr) {
    if (std::strcmp(routine, kDemosaic) == 0) return "ConvertY8ToRGB";
    const RouteRow* route = FindRoute(routine);
    if (route == nullptr) return nullptr;
    routine = route->last;
  }
  return routine;
}

}  // namespace Reference
