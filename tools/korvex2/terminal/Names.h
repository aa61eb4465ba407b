#pragma once

/// What users call things: pixel formats, Bayer tiles, demosaic methods.

#include <string>
#include <string_view>

#include "Korvex2Defs.h"
#include "PixelFormats.h"
#include "io/Names.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {

/// The format with this name or alias. A name that is none is a UsageFailure that offers the
/// nearest ones; `option` says where it stood.
const PixelFormatInfo& ParseFormat(std::string_view option, std::string_view name);

/// "rggb" ... "none", as in the name of the top-left 2x2; UsageFailure for anything else.
BayerTileFormat ParseTile(std::string_view name);

/// "nearest" ... "default"; UsageFailure for anything else.
ColorProcessingAlgorithm ParseMethod(std::string_view name);

/// The names that ParseTile and ParseMethod know, separated by commas, for help and messages.
std::string TileNames();
std::string MethodNames();

}  // namespace Korvex2::Tool
