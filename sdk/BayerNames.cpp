#include "BayerNames.h"

#include "SameName.h"

namespace Korvex2 {
namespace {

constexpr BayerTileInfo kTiles[] = {
    {RGGB, "rggb"}, {GRBG, "grbg"}, {GBRG, "gbrg"}, {BGGR, "bggr"}, {NONE, "none"},
};

constexpr ColorProcessingInfo kMethods[] = {
    {NEAREST_NEIGHBOR, "nearest"}, {EDGE_SENSING, "edge"},
    {HQ_LINEAR, "hq_linear"},      {DIRECTIONAL_FILTER, "directional"},
    {RIGOROUS, "rigorous"},        {NO_COLOR_PROCESSING, "none"},
    {DEFAULT, "default"},
};

// How the names of raw formats begin that say the tile as well: those of GenICam (BayerRG8,
// BayerRG12Packed ...), of FFmpeg (bayer_rggb8 ...) and four-character codes.
constexpr BayerTileInfo kTilePrefixes[] = {
    // clang-format off
    {RGGB, "bayerrg"}, {RGGB, "bayer_rggb"}, {RGGB, "rggb"}, {RGGB, "rg16"},
    {GRBG, "bayergr"}, {GRBG, "bayer_grbg"}, {GRBG, "grbg"}, {GRBG, "gr16"},
    {GBRG, "bayergb"}, {GBRG, "bayer_gbrg"}, {GBRG, "gbrg"}, {GBRG, "gb16"},
    {BGGR, "bayerbg"}, {BGGR, "bayer_bggr"}, {BGGR, "bggr"}, {BGGR, "ba81"}, {BGGR, "byr2"},
    // clang-format on
};

}  // namespace

ArrayView<BayerTileInfo> BayerTiles() noexcept {
  return kTiles;
}

ArrayView<ColorProcessingInfo> ColorProcessings() noexcept {
  return kMethods;
}

std::optional<BayerTileFormat> FindBayerTile(std::string_view name) noexcept {
  for (const BayerTileInfo& row : kTiles) {
    if (SameName(row.name, name)) {
      return row.tile;
    }
  }
  return std::nullopt;
}

std::optional<ColorProcessingAlgorithm> FindColorProcessing(std::string_view name) noexcept {
  for (const ColorProcessingInfo& row : kMethods) {
    if (SameName(row.name, name)) {
      return row.method;
    }
  }
  return std::nullopt;
}

std::optional<BayerTileFormat> TileInFormatName(std::string_view name) noexcept {
  for (const BayerTileInfo& prefix : kTilePrefixes) {
    if (SameName(prefix.name, name.substr(0, prefix.name.size()))) {
      return prefix.tile;
    }
  }
  return std::nullopt;
}

}  // namespace Korvex2
