#pragma once

/// The PNM family: PGM and PPM, binary (P5, P6) and text (P2, P3), and PAM (P7).

#include "io/Raster.h"

namespace Korvex2::Io {

/// Samples of a maximum other than 255 or 65535 are scaled up to the full 8 or 16 bits, rounded to
/// the nearest: a 12-bit frame with maximum 4095 comes in as bright as it is.
Raster ReadPnm(const InputFile& file);

void WritePnm(const Raster& raster, OutputFile& file);  ///< P5 for grey, P6 for RGB
void WritePam(const Raster& raster, OutputFile& file);  ///< P7

}  // namespace Korvex2::Io
