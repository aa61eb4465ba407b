#include "io/Names.h"

#include <algorithm>

#include "BayerNames.h"
#include "PixelFormats.h"

namespace Korvex2::Io {

std::string_view NameOf(PixelFormat format) {
  const PixelFormatInfo* info = FindPixelFormat(format);
  return info == nullptr ? "unknown" : info->name;
}

std::string_view NameOf(BayerTileFormat tile) {
  const auto row = std::ranges::find(BayerTiles(), tile, &BayerTileInfo::tile);
  return row == BayerTiles().end() ? "unknown" : row->name;
}

bool IsRaw(PixelFormat format) {
  const PixelFormatInfo* info = FindPixelFormat(format);
  return info != nullptr && info->IsRaw();
}

bool IsDeep(PixelFormat format) {
  const PixelFormatInfo* info = FindPixelFormat(format);
  return info != nullptr && info->IsDeep();
}

}  // namespace Korvex2::Io
