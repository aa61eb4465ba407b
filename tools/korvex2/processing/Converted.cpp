#include "processing/Converted.h"

#include <cstring>
#include <string>

#include "CheckConversion.h"
#include "ImageConverterARMStub.h"
#include "Routes.h"
#include "io/Raster.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"
#include "terminal/Report.h"

namespace Korvex2::Tool {
namespace {

bool IsRefused(PixelFormat source, PixelFormat target) {
  return source != target && FindRoute(source, target) == nullptr;
}

std::string TargetsOf(PixelFormat source) {
  std::string names;
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (!IsRefused(source, format.format)) {
      names += names.empty() ? "" : ", ";
      names += format.name;
    }
  }
  return names;
}

// Every reason, the worst first.
std::string Describe(const Error& error) {
  std::string text = error.GetMessage();
  for (const Error* cause = error.GetCause(); cause != nullptr; cause = cause->GetCause()) {
    text += fmt::format(" {}", cause->GetMessage());
  }
  return text;
}

// The one place that asks whether a conversion will do what it says.
void CheckBeforehand(const Image& source, PixelFormat target) {
  const PixelFormat format = source.GetPixelFormat();
  if (IsRefused(format, target)) {
    throw Failure(
        "{} cannot be converted to {}{}; it can be converted to {}", NameOf(format), NameOf(target),
        IsRaw(target) ? " ('korvex2 mosaic' makes a mosaic of a picture)" : "", TargetsOf(format));
  }
  const Error error = CheckConversion(source, target);
  if (error == VORERROR_INVALID_SETTINGS) {  // only warnings: failures come first
    Warn(Describe(error));
  } else if (error != VORERROR_OK) {
    throw Failure("{} x {} pixels of {} cannot be converted to {}: {}", source.GetCols(),
                  source.GetRows(), NameOf(format), NameOf(target), Describe(error));
  }
}

// The grey format with the samples of a mosaic.
PixelFormat AsGrey(const PixelFormatInfo& raw) {
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (format.convertible && format.family == PixelFamily::Grey &&
        format.bitsPerSample == raw.bitsPerSample) {
      return format.format;
    }
  }
  throw Failure("no grey has the samples of {}", raw.name);
}

// The same bytes under another name.
Image Relabelled(const Image& source, PixelFormat format) {
  const PixelFormatInfo& info = *FindPixelFormat(format);
  Image image = NewImage(source.GetCols(), source.GetRows(), info, NONE);
  const std::uint64_t pixels = std::uint64_t{source.GetCols()} * source.GetRows();
  std::memcpy(image.GetData(), source.GetData(),
              static_cast<std::size_t>(ReachedSize(info, pixels)));
  return image;
}

}  // namespace

Image Converted(const Image& source, PixelFormat target) {
  CheckBeforehand(source, target);
  Image result;
  ImageConverter converter;
  const Error error = converter.Convert(&source, target, &result);
  if (error != VORERROR_OK) {
    throw Failure("converting {} to {} failed: {}", NameOf(source.GetPixelFormat()), NameOf(target),
                  Describe(error));
  }
  return result;
}

Image Converted(Image source, PixelFormat target, ColorProcessingAlgorithm method) {
  const PixelFormat format = source.GetPixelFormat();
  if (format == target) {
    return source;
  }
  if (!IsRaw(format) || IsRaw(target)) {
    return Converted(source, target);
  }
  if (IsDeep(format) && (method == NO_COLOR_PROCESSING || source.GetBayerTileFormat() == NONE)) {
    return Converted(Relabelled(source, AsGrey(*FindPixelFormat(format))), target);
  }
  if (format == PIXEL_FORMAT_RAW12 && method != DEFAULT) {
    source = Converted(source, PIXEL_FORMAT_RAW16);
  }
  const Error error = source.SetColorProcessing(method);
  if (error != VORERROR_OK) {
    throw Failure("the method was refused: {}", error.GetMessage());
  }
  return Converted(source, target);
}

}  // namespace Korvex2::Tool
