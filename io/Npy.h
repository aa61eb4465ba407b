#pragma once

/// NPY, an array of NumPy: the pixels as they are, with their shape.

#include "Image.h"
#include "PixelFormats.h"
#include "io/File.h"
#include "io/WriteOptions.h"

namespace Korvex2::Io {

/// uint8 or uint16 of either byte order, in C order. `wanted` names the format, or is null for the
/// one that the shape suggests: H x W is mono8 or mono16, H x W x 3 rgb8 or rgb16, H x W x 4 rgbu.
/// Any other format is read when it is named; channels are taken in its own order, bytes of packed
/// formats as rows of H x bytes.
Image ReadNpy(const InputFile& file, const PixelFormatInfo* wanted, BayerTileFormat tile);

/// The shapes that ReadNpy takes, channels in the order of the format. A Failure where a group of
/// pixels goes on in the next row.
void WriteNpy(const Image& image, OutputFile& file, const WriteOptions& options = {});

}  // namespace Korvex2::Io
