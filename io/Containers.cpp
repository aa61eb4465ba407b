#include "io/Containers.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "io/CameraRaw.h"
#include "io/Failure.h"
#include "io/Headerless.h"
#include "io/Names.h"
#include "io/Npy.h"
#include "io/Png.h"
#include "io/Pnm.h"
#include "io/Tiff.h"
#include "io/Y4m.h"

namespace Korvex2::Io {
namespace {

constexpr unsigned kGrey = 1U << 1;
constexpr unsigned kRgb = 1U << 3;
constexpr unsigned kRgba = 1U << 4;
constexpr unsigned kVideo = 1U << 5;
constexpr unsigned kAnything = 0;
constexpr unsigned kNothing = 1U << 0;

constexpr Container kContainers[] = {
    // clang-format off
    {"PNG", ".png",       kGrey | kRgb | kRgba, ReadPng, WritePng,  "grey, RGB and RGBA, 8 and 16 bits"},
    {"PGM", ".pgm",       kGrey,                ReadPnm, WritePnm,  "grey, 8 and 16 bits"},
    {"PPM", ".ppm",       kRgb,                 ReadPnm, WritePnm,  "RGB, 8 and 16 bits"},
    {"PNM", ".pnm",       kGrey | kRgb,         ReadPnm, WritePnm,  "grey and RGB, 8 and 16 bits"},
    {"PAM", ".pam",       kGrey | kRgb | kRgba, ReadPnm, WritePam,  "grey, RGB and RGBA, 8 and 16 bits"},
    {"TIFF", ".tif .tiff", kGrey | kRgb | kRgba, ReadTiff, WriteTiff, "grey, RGB and RGBA, 8 and 16 bits"},
    {"NPY", ".npy",       kAnything,            nullptr, nullptr,   "an array of NumPy, any format", ReadNpy, WriteNpy},
    {"Y4M", ".y4m",       kVideo,               nullptr, nullptr,   "write only: video of mono8, yuv411, yuv422, yuv444", nullptr, WriteY4m, true, Y4mSize},
    {"DNG", ".dng .nef .cr2 .arw", kNothing, ReadCameraRaw, nullptr, "read only: the mosaic of a camera's raw file, raw16"},
    {"raw", ".raw .bin",  kAnything,            nullptr, nullptr,   "headerless, any format; reading needs --from, --width, --height", nullptr, WriteHeaderless, true, HeaderlessSize},
    // clang-format on
};

std::string ExtensionOf(const std::string& path) {
  std::string extension = path == "-" ? ".raw"
                          : IsStandardStream(path)
                              ? '.' + path.substr(0, path.size() - 2)
                              : std::filesystem::path(path).extension().string();
  for (char& c : extension) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return extension;
}

bool HasExtension(const Container& container, const std::string& extension) {
  return !extension.empty() &&
         (' ' + std::string(container.extensions) + ' ').find(' ' + extension + ' ') !=
             std::string::npos;
}

const Container* FindContainer(const std::string& path) {
  const std::string extension = ExtensionOf(path);
  const auto* found = std::ranges::find_if(
      kContainers, [&](const Container& container) { return HasExtension(container, extension); });
  return found == std::end(kContainers) ? nullptr : found;
}

std::string AllExtensions() {
  std::string all;
  for (const Container& container : kContainers) {
    all += all.empty() ? "" : " ";
    all += container.extensions;
  }
  return all;
}

// The extensions of the containers that a condition picks, in the order of the table.
template <typename Condition>
std::string ExtensionsWhere(Condition condition) {
  std::string all;
  for (const Container& container : kContainers) {
    if (condition(container)) {
      all += all.empty() ? "" : " ";
      all += container.extensions;
    }
  }
  return all;
}

std::string WritableExtensions() {
  return ExtensionsWhere([](const Container& c) { return c.channels != kNothing; });
}

std::string ExtensionsThatHold(PixelFormat format) {
  return ExtensionsWhere([format](const Container& c) { return Holds(c, format); });
}

std::string NamesHeldBy(const Container& container) {
  std::string names;
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (Holds(container, format.format)) {
      names += names.empty() ? "" : ", ";
      names += format.name;
    }
  }
  return names;
}

Image ReadAsSaid(const InputFile& file, const InputShape& shape) {
  if (shape.format != nullptr && shape.width && shape.height) {
    return ReadHeaderless(file, *shape.format, *shape.width, *shape.height,
                          shape.tile.value_or(NONE));
  }
  const std::string sizes = shape.format == nullptr ? "" : CommonSizes(*shape.format, file.size());
  throw UsageFailure("{} has no header: say --from, --width and --height (it has {} bytes{})",
                     file.path(), file.size(), sizes.empty() ? "" : ", as " + sizes + " would");
}

void RequireSameSize(const std::string& path, std::uint32_t width, std::uint32_t height,
                     const InputShape& shape) {
  if (shape.width.value_or(width) != width || shape.height.value_or(height) != height) {
    throw Failure("{} is {} x {} pixels; --width and --height are for headerless files", path,
                  width, height);
  }
}

// A file that says its tile is right about it; it can be told to be no mosaic.
BayerTileFormat TileOf(const std::string& path, const Raster& raster, const InputShape& shape) {
  const BayerTileFormat tile = shape.tile.value_or(raster.tile);
  if (raster.tile != NONE && tile != NONE && tile != raster.tile) {
    throw Failure("{} says that its tile is {}, not {}; leave --tile out", path,
                  NameOf(raster.tile), NameOf(tile));
  }
  return tile;
}

}  // namespace

std::span<const Container> Containers() {
  return kContainers;
}

const Container& ContainerOf(const std::string& path) {
  if (const Container* container = FindContainer(path)) {
    return *container;
  }
  throw Failure("the name {} does not say what kind of file it is; let it end in one of {}", path,
                AllExtensions());
}

bool HasContainer(const std::string& path) {
  return FindContainer(path) != nullptr;
}

bool IsHeaderless(const Container& container) {
  return container.channels == kAnything && container.readImage == nullptr;
}

bool IsVideo(const Container& container) {
  return container.channels == kVideo;
}

bool Holds(const Container& container, PixelFormat format) {
  if (IsVideo(container)) {
    return FitsY4m(format);
  }
  const unsigned channels = RasterChannels(format);
  return container.channels == kAnything ||
         (channels != 0 && (container.channels >> channels & 1U) != 0);
}

void RequireHolds(const std::string& path, PixelFormat format) {
  const Container& container = ContainerOf(path);
  if (container.channels == kNothing) {
    throw Failure("cannot write {}: {} files are read only; let its name end in one of {}", path,
                  container.name, WritableExtensions());
  }
  if (!Holds(container, format)) {
    throw Failure("{} does not fit into {}: {} holds {}; write one of {}, or convert --to {}",
                  NameOf(format), path, container.name, NamesHeldBy(container),
                  ExtensionsThatHold(format),
                  container.channels == kGrey ? "mono8"
                  : IsVideo(container)        ? "yuv444"
                                              : "rgb8");
  }
}

std::uint64_t MostBytes(const std::string& path, const InputShape& shape) {
  const bool isTold = shape.format != nullptr && shape.width && shape.height;
  if (!isTold || !IsHeaderless(ContainerOf(path))) {
    return kLargestFile;
  }
  RequireFrame(*shape.format, *shape.width, *shape.height);
  return GroupedSize(*shape.format, std::uint64_t{*shape.width} * *shape.height);
}

Image ReadImage(const std::string& path, const InputShape& shape) {
  const Container& container = ContainerOf(path);
  return ReadImage(InputFile(path, MostBytes(path, shape)), container, shape);
}

Image ReadImage(const InputFile& file, const Container& container, const InputShape& shape) {
  if (IsHeaderless(container)) {
    return WithLevels(ReadAsSaid(file, shape), shape.levels, {}, file.path());
  }
  if (container.readImage != nullptr) {
    Image image = container.readImage(file, shape.format, shape.tile.value_or(NONE));
    RequireSameSize(file.path(), image.GetCols(), image.GetRows(), shape);
    return WithLevels(std::move(image), shape.levels, {}, file.path());
  }
  if (container.read == nullptr) {
    throw Failure("cannot read {}: {} files are write only", file.path(), container.name);
  }
  Raster raster = container.read(file);
  RequireSameSize(file.path(), raster.width, raster.height, shape);
  const BayerTileFormat tile = TileOf(file.path(), raster, shape);
  const std::optional<SensorLevels> levels = std::move(raster.levels);
  return WithLevels(ToImage(std::move(raster), shape.format, tile, file.path()), shape.levels,
                    levels, file.path());
}

void WriteImage(const Image& image, const std::string& path, const WriteOptions& options) {
  RequireHolds(path, image.GetPixelFormat());
  OutputFile file(path);
  WriteImage(image, ContainerOf(path), file, options);
  file.Commit();
}

void WriteImage(const Image& image, const Container& container, OutputFile& file,
                const WriteOptions& options) {
  if (container.writeImage != nullptr) {
    container.writeImage(image, file, options);
  } else {
    container.write(ToRaster(image), file);
  }
}

std::string ContainerHelp() {
  std::string help = "Files, by the extension of their names:\n";
  for (const Container& container : kContainers) {
    help += fmt::format("  {:<20} {}\n", container.extensions, container.description);
  }
  return help +
         "Blue-first formats are stored in a picture file as RGB, mosaics as grey. Grey of 16 "
         "bits,\n"
         "colour and alpha come in as mono16, rgb8, rgbu, rgb16 or bgru16; the first picture of a "
         "TIFF.\n"
         "NPY keeps the order of the format: H x W, H x W x channels, H x bytes of packed rows; 4\n"
         "channels of 16 bits and mosaics need --from. Y4M says 25 frames a second.\n"
         "A camera's raw file says its tile. Unless convert is told otherwise its samples are "
         "linear\n"
         "and keep their black level and range (14 bits end at 16383), so pictures of it look "
         "dark.\n";
}

}  // namespace Korvex2::Io
