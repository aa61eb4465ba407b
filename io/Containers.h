#pragma once

/// The file formats, chosen by the extension of a file's name.

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Image.h"
#include "PixelFormats.h"
#include "io/Raster.h"
#include "io/WriteOptions.h"

namespace Korvex2::Io {

/// One row of the table of file formats.
struct Container {
  std::string_view name;
  std::string_view extensions;  ///< with their dots, separated by spaces
  unsigned channels;            ///< bit n: takes pictures of n channels; 0: takes any format
  Raster (*read)(
      const InputFile&);  ///< null for files that are no pictures, and for write-only ones
  void (*write)(const Raster&, OutputFile&);  ///< null for those, and for read-only ones
  std::string_view description;
  /// Instead of the two above, for files that hold what no Raster can.
  Image (*readImage)(const InputFile&, const PixelFormatInfo* wanted, BayerTileFormat) = nullptr;
  void (*writeImage)(const Image&, OutputFile&, const WriteOptions&) = nullptr;
  bool appends = false;  ///< takes one frame after the other
  /// Bytes of a file of one picture, for files that cannot be read back without being told its
  /// shape.
  std::uint64_t (*size)(const PixelFormatInfo&, std::uint32_t cols, std::uint32_t rows,
                        const WriteOptions&) = nullptr;
};

std::span<const Container> Containers();

/// The row for a file name, "-" (headerless) or "png:-"; a Failure when its extension is none of
/// the table's.
const Container& ContainerOf(const std::string& path);

/// Whether nothing but the request says the shape of such a file.
bool IsHeaderless(const Container& container);

bool IsVideo(const Container& container);

/// Whether a file name has an extension of the table.
bool HasContainer(const std::string& path);

/// Whether a file of this kind can be written with the samples of the format, losslessly.
bool Holds(const Container& container, PixelFormat format);

/// A Failure that says which formats would fit into such a file, unless this one does.
void RequireHolds(const std::string& path, PixelFormat format);

/// What a request says about an input; headerless files need all but the tile.
struct InputShape {
  const PixelFormatInfo* format = nullptr;
  std::optional<std::uint32_t> width;
  std::optional<std::uint32_t> height;
  std::optional<BayerTileFormat> tile;  ///< nothing: the file's own, or none
  LevelRequest levels;
};

/// How many bytes of standard input can be of use. A Failure for a headerless frame that no image
/// can hold.
std::uint64_t MostBytes(const std::string& path, const InputShape& shape);

Image ReadImage(const std::string& path, const InputShape& shape);
Image ReadImage(const InputFile& file, const Container& container, const InputShape& shape);

/// Writes the image or fails and leaves what was there.
void WriteImage(const Image& image, const std::string& path, const WriteOptions& options = {});
/// Appends the image to a file that is still to be committed.
void WriteImage(const Image& image, const Container& container, OutputFile& file,
                const WriteOptions& options = {});

/// A few lines for the help of commands that read and write images.
std::string ContainerHelp();

}  // namespace Korvex2::Io
