#pragma once

/// A case of the file readers: what is said of the file, and then the file.

#include <cstdint>
#include <string_view>

namespace Korvex2::Fuzz {

/// One of each reader, two where a reader looks at the name; a case picks by number.
inline constexpr std::string_view kExtensions[] = {".png", ".pnm", ".pam", ".tif",
                                                   ".dng", ".nef", ".raw", ".npy"};

enum Said : std::uint8_t {
  kSaysFormat = 1,
  kSaysWidth = 2,
  kSaysHeight = 4,
  kSaysTile = 8,
  kSaysBlack = 16,
  kSaysScale = 32
};

struct ReaderHeader {
  std::uint32_t width;
  std::uint32_t height;
  std::uint8_t extension;
  std::uint8_t said;
  std::uint8_t format;
  std::uint8_t tile;
  std::uint8_t damagedChecksums;
  std::uint8_t unused;
  std::uint16_t level;  ///< of black and scale, 0: that of the file
};

}  // namespace Korvex2::Fuzz
