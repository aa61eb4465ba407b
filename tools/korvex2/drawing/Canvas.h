#pragma once

/// What the chart and the contact sheets are drawn with.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "Image.h"

namespace Korvex2::Tool {

/// Channels from 0 to 1.
struct Colour {
  double r, g, b;
};

constexpr Colour Grey(double value) {
  return {value, value, value};
}

constexpr Colour Rgb(unsigned hex) {
  return {(hex >> 16 & 255) / 255.0, (hex >> 8 & 255) / 255.0, (hex & 255) / 255.0};
}

constexpr Colour kBackground = Rgb(0x15181d);
constexpr Colour kInk = Rgb(0xe8ecf1);

struct Rect {
  int x, y, w, h;

  Rect Inset(int margin) const {
    return {x + margin, y + margin, std::max(0, w - 2 * margin), std::max(0, h - 2 * margin)};
  }
  /// Part i of n, side by side or one below the other, `gap` pixels apart.
  Rect Column(int i, int n, int gap) const {
    const int left = Cut(w, i, n, gap);
    return {x + left, y, std::max(0, Cut(w, i + 1, n, gap) - left - gap), h};
  }
  Rect Row(int i, int n, int gap) const {
    const int top = Cut(h, i, n, gap);
    return {x, y + top, w, std::max(0, Cut(h, i + 1, n, gap) - top - gap)};
  }

 private:
  static int Cut(int length, int i, int n, int gap) {
    return static_cast<int>((std::int64_t{length} + gap) * i / n);
  }
};

/// Draws on an rgb16 image; what lies outside is left out.
class Canvas {
 public:
  explicit Canvas(Image& image)
      : m_pixels(image.GetData()),
        m_width(static_cast<int>(image.GetCols())),
        m_height(static_cast<int>(image.GetRows())) {}

  Rect Area() const { return {0, 0, m_width, m_height}; }

  /// Each pixel of the rectangle as shade(column, row) says, counted from its top-left.
  template <typename Shade>
  void Paint(const Rect& rect, Shade shade) {
    for (int y = std::max(0, -rect.y); y < rect.h && rect.y + y < m_height; ++y) {
      for (int x = std::max(0, -rect.x); x < rect.w && rect.x + x < m_width; ++x) {
        Set(rect.x + x, rect.y + y, shade(x, y));
      }
    }
  }

  void Fill(const Rect& rect, const Colour& colour) {
    Paint(rect, [&](int, int) { return colour; });
  }

 private:
  void Set(int x, int y, const Colour& colour) {
    const std::array<std::uint16_t, 3> words = {Word(colour.r), Word(colour.g), Word(colour.b)};
    const std::size_t pixel = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                              static_cast<std::size_t>(x);
    std::memcpy(m_pixels + pixel * sizeof words, words.data(), sizeof words);
  }
  static std::uint16_t Word(double value) {
    return static_cast<std::uint16_t>(std::clamp(value, 0.0, 1.0) * 65535 + 0.5);
  }

  unsigned char* m_pixels;
  int m_width;
  int m_height;
};

}  // namespace Korvex2::Tool
