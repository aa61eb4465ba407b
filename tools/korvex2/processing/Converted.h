#pragma once

/// Conversions that never pretend: what the converter would leave undone is refused beforehand.

#include "Image.h"
#include "PixelFormats.h"

namespace Korvex2::Tool {

/// The image in the target format. Mosaics are demosaiced by the method that the image carries.
Image Converted(const Image& source, PixelFormat target);

/// As Converted, with the method for a raw source. Two cases take a way of their own:
///   - raw12 hands no method on to the demosaicing, so it is unpacked to raw16 first;
///   - raw12 and raw16 without colour (method or tile none) are taken as mono12 and mono16, since
///     the converter would take each byte for a sample.
Image Converted(Image source, PixelFormat target, ColorProcessingAlgorithm method);

}  // namespace Korvex2::Tool
