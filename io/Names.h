#pragma once

/// What messages call things.

#include <string_view>

#include "Korvex2Defs.h"

namespace Korvex2::Io {

/// The short name of a format, "unknown" for a value that names none.
std::string_view NameOf(PixelFormat format);

/// "rggb" ... "none", as in the name of the top-left 2x2.
std::string_view NameOf(BayerTileFormat tile);

bool IsRaw(PixelFormat format);

}  // namespace Korvex2::Io
