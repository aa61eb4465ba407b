#pragma once

/// Text in pictures, in letters of 5 x 7 dots.

#include <string_view>

#include "drawing/Canvas.h"

namespace Korvex2::Tool {

inline constexpr int kLetterWidth = 6;   ///< dots from one letter to the next
inline constexpr int kLetterHeight = 7;  ///< dots

/// Writes letters `scale` pixels a dot, (x, y) being the top-left; what has no shape is left blank.
void Write(Canvas& canvas, int x, int y, int scale, std::string_view text, const Colour& colour);

/// Pixels from the first dot to the last.
constexpr int WidthOf(std::string_view text, int scale) {
  return text.empty() ? 0 : (static_cast<int>(text.size()) * kLetterWidth - 1) * scale;
}

}  // namespace Korvex2::Tool
