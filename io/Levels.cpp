#include "io/Levels.h"

#include <algorithm>

#include "io/Failure.h"
#include "io/Names.h"

namespace Korvex2::Io {
namespace {

constexpr std::uint32_t kFull = 65535;

void RequireLevels(const LevelRequest& request, const std::optional<SensorLevels>& ofFile,
                   const std::string& path) {
  const auto isOfFile = [](const std::optional<Level>& level) { return level && !level->value; };
  if (!ofFile && (isOfFile(request.black) || isOfFile(request.white))) {
    throw Failure("{} does not say its levels; give --black-level and --scale numbers", path);
  }
}

void RequireRange(std::uint32_t black, std::uint32_t white) {
  if (white <= black) {
    throw Failure("the white level {} is not above the black level {}", white, black);
  }
}

}  // namespace

Image WithLevels(Image image, const LevelRequest& request,
                 const std::optional<SensorLevels>& ofFile, const std::string& path) {
  if (request.empty()) {
    return image;
  }
  if (image.GetPixelFormat() != PIXEL_FORMAT_RAW16) {
    throw Failure("--black-level and --scale are for raw16, and {} is {}", path,
                  NameOf(image.GetPixelFormat()));
  }
  RequireLevels(request, ofFile, path);
  const SensorLevels levels = ofFile.value_or(SensorLevels{1, 1, {0}, kFull});
  unsigned char* sample = image.GetData();
  for (std::size_t y = 0; y < image.GetRows(); ++y) {
    const std::uint32_t* blacks = &levels.black[y % levels.rows * levels.columns];
    for (std::size_t x = 0; x < image.GetCols(); ++x, sample += 2) {
      const std::uint32_t black = request.black ? request.black->Or(blacks[x % levels.columns]) : 0;
      std::uint32_t value = sample[0] | std::uint32_t{sample[1]} << 8;
      value -= std::min(value, black);
      if (request.white) {
        const std::uint32_t white = request.white->Or(levels.white);
        RequireRange(black, white);
        const std::uint64_t range = white - black;
        value = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(kFull, (std::uint64_t{value} * kFull + range / 2) / range));
      }
      sample[0] = static_cast<unsigned char>(value);
      sample[1] = static_cast<unsigned char>(value >> 8);
    }
  }
  return image;
}

}  // namespace Korvex2::Io
