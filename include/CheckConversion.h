#pragma once

/// @file
/// Knowing beforehand what a conversion will do.

#include "Error.h"
#include "Image.h"
#include "Korvex2Defs.h"
#include "Korvex2Export.h"

namespace Korvex2 {

/// Tells whether ImageConverter::Convert(&source, target, ...) would make the picture that its
/// caller expects. Converts nothing and allots no pixels.
///
/// Convert reports success for most raw sources even when no colour could be made of them. This
/// function names every reason for which it would fail, or would succeed without having converted:
/// the first one is the result, the others follow through GetCause(), warnings last.
///
///   VORERROR_OK                       converts
///   VORERROR_INVALID_PARAMETER        Convert fails so: no buffer, a pair that it refuses, a copy
///                                     whose stride exceeds the limit, or an unknown tile or method
///                                     of a mosaic on a route that reports it
///   VORERROR_FAILED                   Convert fails so: the destination would exceed 4 GiB - 1, or
///                                     odd sides of a mosaic on a route that reports them
///   VORERROR_IMAGE_CONVERSION_FAILED  Convert answers success and the picture is not there: a
///                                     temporary image over the limit, odd sides or an unknown tile
///                                     or method of a mosaic, raw samples of 12 or 16 bits without
///                                     a mosaic (they are shown byte by byte)
///   VORERROR_INVALID_SETTINGS         a warning: converts, but not by the colour processing that
///                                     the source asks for. RAW12 always takes the process default;
///                                     convert it to RAW16, set the method there and go on from
///                                     that
///
/// What it cannot foresee is running out of memory and a destination that refuses its shape. Reads
/// the process default of colour processing; thread-safe. Nothing throws; what an operation of a
/// source's subclass throws is VORERROR_FAILED.
KORVEX2_API Error CheckConversion(const Image& source, PixelFormat target) noexcept;

}  // namespace Korvex2
