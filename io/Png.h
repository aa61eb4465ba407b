#pragma once

/// PNG, read in every variant, written as grey, RGB or RGBA of 8 or 16 bits.

#include "io/Raster.h"

namespace Korvex2::Io {

Raster ReadPng(const InputFile& file);
void WritePng(const Raster& raster, OutputFile& file);

}  // namespace Korvex2::Io
