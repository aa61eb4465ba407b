#pragma once

/// The libraries that picture files are read with.

#include <string>

namespace Korvex2::Io {

/// Their names and versions, as they are at hand: "libpng 1.6.39, ...".
std::string Libraries();

}  // namespace Korvex2::Io
