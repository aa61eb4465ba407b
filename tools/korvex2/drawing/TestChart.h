#pragma once

/// The test chart.

#include <cstdint>

#include "Image.h"

namespace Korvex2::Tool {

/// The chart in rgb16, at any size: what does not fit into a small one is left out.
///
///     +---------------------------+---------------+
///     | colour patches            | zone plate    |
///     |                           |               |
///     +---------------------------+---------------+
///     | ramps: grey, red, green,  | star | lines  |
///     | blue, hues; grey steps    |      |        |
///     +---------------------------+---------------+
///
/// The outermost pixels are a white frame: a picture that was shifted or cropped shows it.
Image DrawChart(std::uint32_t width, std::uint32_t height);

}  // namespace Korvex2::Tool
