#pragma once

/// Y4M, the uncompressed video that players and encoders take from a pipe; written only.

#include "Image.h"
#include "io/File.h"

namespace Korvex2::Tool {

/// Whether Y4M has a name for the planes of a format: mono8, yuv411, yuv422, yuv444.
bool FitsY4m(PixelFormat format);

/// Appends a frame, its planes one after the other; before the first one the header: 25 frames a
/// second, square pixels, full range. A Failure where a group of pixels goes on in the next row,
/// which planes cannot tell.
void WriteY4m(const Image& image, OutputFile& file);

}  // namespace Korvex2::Tool
