#pragma once

/// @file
/// What people call Bayer tiles and demosaic methods. The names of pixel formats are in
/// PixelFormats.h.

#include <optional>
#include <string_view>

#include "ArrayView.h"
#include "Korvex2Defs.h"
#include "Korvex2Export.h"

namespace Korvex2 {

/// A tile and its name. All strings are static.
struct BayerTileInfo {
  BayerTileFormat tile;   ///< what the name stands for
  std::string_view name;  ///< the top-left 2x2 in reading order: "rggb"; "none" for no mosaic
};

/// A method and its name. All strings are static.
struct ColorProcessingInfo {
  ColorProcessingAlgorithm method;  ///< what the name stands for
  std::string_view name;            ///< "nearest", "hq_linear" ...
};

/// The four tiles, then "none".
KORVEX2_API ArrayView<BayerTileInfo> BayerTiles() noexcept;

/// The methods that the converter does not refuse, cheapest first, then "none" and "default".
KORVEX2_API ArrayView<ColorProcessingInfo> ColorProcessings() noexcept;

/// The tile with this name, nothing when there is none; case is ignored.
KORVEX2_API std::optional<BayerTileFormat> FindBayerTile(std::string_view name) noexcept;
/// The method with this name, nothing when there is none; case is ignored.
KORVEX2_API std::optional<ColorProcessingAlgorithm> FindColorProcessing(
    std::string_view name) noexcept;

/// The tile that an alias of a raw format says along with the format, as BayerRG8 and bayer_rggb8
/// do; nothing for other names. Case is ignored.
KORVEX2_API std::optional<BayerTileFormat> TileInFormatName(std::string_view name) noexcept;

}  // namespace Korvex2
