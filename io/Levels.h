#pragma once

/// Black and white of a sensor's samples, taken off and scaled to where they are asked to be.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Image.h"

namespace Korvex2::Io {

/// What a camera's raw file says of its samples.
struct SensorLevels {
  std::size_t rows;
  std::size_t columns;
  std::vector<std::uint32_t> black;  ///< rows x columns of them, repeated over the active area
  std::uint32_t white;
};

/// A level that the user names, or that of the file.
struct Level {
  std::optional<std::uint32_t> value;  ///< nothing: the file's

  std::uint32_t Or(std::uint32_t ofFile) const { return value.value_or(ofFile); }
};

struct LevelRequest {
  std::optional<Level> black;  ///< is subtracted; what lies below becomes 0
  std::optional<Level> white;  ///< becomes 65535, rounded to the nearest

  bool empty() const { return !black && !white; }
};

/// The mosaic with its levels changed as requested, if anything is. A Failure for other formats
/// than raw16, and where the file is asked for levels that it does not say.
Image WithLevels(Image image, const LevelRequest& request,
                 const std::optional<SensorLevels>& ofFile, const std::string& path);

}  // namespace Korvex2::Io
