#pragma once

/// Headerless files: the packed pixels of a frame and nothing else. A begun group (of 2 pixels at
/// 12 bits and in 4:2:2, of 4 in 4:1:1) is stored whole, since its pixels share their bytes.

#include "Image.h"
#include "PixelFormats.h"
#include "io/File.h"
#include "io/WriteOptions.h"

namespace Korvex2::Io {

/// A Failure for a frame that no image can hold.
void RequireFrame(const PixelFormatInfo& format, std::uint32_t width, std::uint32_t height);

/// The file as a frame. A Failure unless its size is that of the frame to the byte; the message
/// says which sizes and formats would fit.
Image ReadHeaderless(const InputFile& file, const PixelFormatInfo& format, std::uint32_t width,
                     std::uint32_t height, BayerTileFormat tile);

void WriteHeaderless(const Image& image, OutputFile& file, const WriteOptions& options = {});

/// Bytes of a file of one frame.
std::uint64_t HeaderlessSize(const PixelFormatInfo& format, std::uint32_t cols, std::uint32_t rows,
                             const WriteOptions& options = {});

/// Which common frame sizes a file of `size` bytes has in the format: ", as 640 x 480 would be",
/// or nothing.
std::string CommonSizes(const PixelFormatInfo& format, std::uint64_t size);

/// Whether it is the frame size of a common sensor or video mode.
bool IsCommonSize(std::uint32_t width, std::uint32_t height);

}  // namespace Korvex2::Io
