#pragma once

/// Y4M, the uncompressed video that players and encoders take from a pipe; written only.

#include <cstdint>

#include "Image.h"
#include "PixelFormats.h"
#include "io/File.h"
#include "io/WriteOptions.h"

namespace Korvex2::Io {

/// Whether Y4M has a name for the planes of a format: mono8, yuv411, yuv422, yuv444.
bool FitsY4m(PixelFormat format);

/// Appends a frame, its planes one after the other; before the first one the header: the frame
/// rate, square pixels, full range. A Failure where a group of pixels goes on in the next row,
/// which planes cannot tell.
void WriteY4m(const Image& image, OutputFile& file, const WriteOptions& options);

/// Bytes of a file of one frame.
std::uint64_t Y4mSize(const PixelFormatInfo& format, std::uint32_t cols, std::uint32_t rows,
                      const WriteOptions& options);

}  // namespace Korvex2::Io
