#pragma once

/// What messages call things.

#include <string_view>

#include "Korvex2Defs.h"

namespace Korvex2::Io {

/// The short name of a format, "unknown" for a value that names none.
std::string_view NameOf(PixelFormat format);

/// "rggb" ... "none", as in the name of the top-left 2x2.
std::string_view NameOf(BayerTileFormat tile);

/// Whether it is a Bayer mosaic.
bool IsRaw(PixelFormat format);

/// Whether its samples have more than 8 bits.
bool IsDeep(PixelFormat format);

}  // namespace Korvex2::Io
