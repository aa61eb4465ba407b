#pragma once

/// Raw files of cameras: DNG, and what else LibRaw can open.

#include "io/Raster.h"

namespace Korvex2::Io {

/// The mosaic: the sensor's samples in the active area as they were recorded, 16 bits each, with
/// the tile at its top-left. Nothing is developed: black level, white balance and scale are
/// untouched, so that 14-bit samples end at 16383; the orientation is not applied.
/// A Failure for sensors without a Bayer mosaic, floating-point samples and files that hold less
/// than they announce.
Raster ReadCameraRaw(const InputFile& file);

}  // namespace Korvex2::Io
