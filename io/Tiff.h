#pragma once

/// TIFF, written as grey, RGB or RGBA of 8 or 16 bits.

#include "io/Raster.h"

namespace Korvex2::Io {

/// The first picture of the file: grey, RGB or RGBA of 8 or 16 bits, in strips or tiles, whole
/// pixels or planes, with any compression that libtiff knows. Samples come as they are stored,
/// except that grey with white as 0 is inverted; the orientation tag is not applied.
Raster ReadTiff(const InputFile& file);

/// One picture, uncompressed, in strips of whole rows and the host's byte order; alpha is not
/// premultiplied. BigTIFF where 4 GiB are not enough.
void WriteTiff(const Raster& raster, OutputFile& file);

}  // namespace Korvex2::Io
