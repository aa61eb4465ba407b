#include "drawing/ContactSheet.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "PixelFormats.h"
#include "drawing/Canvas.h"
#include "drawing/Lettering.h"
#include "io/Raster.h"
#include "processing/Converted.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"

namespace Korvex2::Tool {
namespace {

constexpr int kAcross = 4;
constexpr int kGap = 16;
constexpr int kDot = 2;              // pixels a dot of the letters
constexpr int kLine = 14 * kDot;     // from the picture's end to the next row of pictures
constexpr int kSmallestSide = 384;   // of a magnified detail, in pixels, along its longer side
constexpr int kNarrowestCell = 280;  // leaves room for the letters
constexpr Colour kMark = Rgb(0xffd23f);
constexpr Colour kFaint = Rgb(0x9aa4b1);

// Any pixel of an rgb8 or rgb16 picture.
class Pixels {
 public:
  explicit Pixels(const Image& image)
      : m_data(image.GetData()),
        m_columns(image.GetCols()),
        m_deep(IsDeep(image.GetPixelFormat())) {}

  Colour At(std::size_t x, std::size_t y) const {
    const std::size_t first = (y * m_columns + x) * 3;
    return {Channel(first), Channel(first + 1), Channel(first + 2)};
  }

 private:
  double Channel(std::size_t index) const {
    if (!m_deep) {
      return m_data[index] / 255.0;
    }
    std::uint16_t word;
    std::memcpy(&word, m_data + 2 * index, sizeof word);
    return word / 65535.0;
  }

  const unsigned char* m_data;
  std::size_t m_columns;
  bool m_deep;
};

// The detail's place in the middle of a cell of the sheet.
Rect Centred(int width, int height, const Rect& cell) {
  return {cell.x + (cell.w - width) / 2, cell.y + (cell.h - height) / 2, width, height};
}

void DrawDetail(Canvas& canvas, const Rect& cell, const Image& picture, const Area& detail,
                int scale) {
  const Pixels pixels(picture);
  const Rect place = Centred(static_cast<int>(detail.width) * scale,
                             static_cast<int>(detail.height) * scale, cell);
  canvas.Paint(place, [&](int x, int y) {
    return pixels.At(detail.x + static_cast<std::size_t>(x / scale),
                     detail.y + static_cast<std::size_t>(y / scale));
  });
}

void DrawLabel(Canvas& canvas, const Rect& cell, std::string_view name, std::string_view remark) {
  const int y = cell.y + cell.h + 3 * kDot;
  Write(canvas, cell.x, y, kDot, name, kInk);
  Write(canvas, cell.x + cell.w - WidthOf(remark, kDot), y, kDot, remark, kInk);
}

void DrawOutline(Canvas& canvas, const Rect& rect, const Colour& colour) {
  canvas.Fill({rect.x, rect.y, rect.w, 1}, colour);
  canvas.Fill({rect.x, rect.y + rect.h - 1, rect.w, 1}, colour);
  canvas.Fill({rect.x, rect.y, 1, rect.h}, colour);
  canvas.Fill({rect.x + rect.w - 1, rect.y, 1, rect.h}, colour);
}

// From a position in one length to the same place in another.
int Scaled(std::int64_t position, std::int64_t from, std::int64_t to) {
  return static_cast<int>(position * to / from);
}

// The mean of the pixels that become one.
Colour MeanOf(const Pixels& pixels, int left, int right, int top, int bottom) {
  Colour sum = Grey(0);
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      const Colour pixel = pixels.At(static_cast<std::size_t>(x), static_cast<std::size_t>(y));
      sum = {sum.r + pixel.r, sum.g + pixel.g, sum.b + pixel.b};
    }
  }
  const double count = static_cast<double>(right - left) * (bottom - top);
  return {sum.r / count, sum.g / count, sum.b / count};
}

// The whole picture, its channels times `gain`, in the middle of a cell. Returns its place there.
Rect DrawWhole(Canvas& canvas, const Rect& cell, const Image& picture, double gain) {
  const int columns = static_cast<int>(picture.GetCols());
  const int rows = static_cast<int>(picture.GetRows());
  const bool wide = std::int64_t{columns} * cell.h > std::int64_t{rows} * cell.w;
  const int width = wide ? cell.w : std::max(1, Scaled(columns, rows, cell.h));
  const int height = wide ? std::max(1, Scaled(rows, columns, cell.w)) : cell.h;
  const Rect place = Centred(width, height, cell);
  const Pixels pixels(picture);
  canvas.Paint(place, [&](int x, int y) -> Colour {
    const int left = Scaled(x, width, columns);
    const int top = Scaled(y, height, rows);
    const Colour mean = MeanOf(pixels, left, std::max(left + 1, Scaled(x + 1, width, columns)), top,
                               std::max(top + 1, Scaled(y + 1, height, rows)));
    return {gain * mean.r, gain * mean.g, gain * mean.b};
  });
  return place;
}

void DrawOverview(Canvas& canvas, const Rect& cell, const Image& picture, const Area& detail) {
  const Rect place = DrawWhole(canvas, cell, picture, 1);
  const int columns = static_cast<int>(picture.GetCols());
  const int rows = static_cast<int>(picture.GetRows());
  const int left = Scaled(detail.x, columns, place.w);
  const int top = Scaled(detail.y, rows, place.h);
  const Rect frame{place.x + left, place.y + top,
                   std::max(3, Scaled(detail.x + detail.width, columns, place.w) - left),
                   std::max(3, Scaled(detail.y + detail.height, rows, place.h) - top)};
  DrawOutline(canvas, frame.Inset(-2), Grey(0));
  DrawOutline(canvas, frame.Inset(-1), kMark);
  DrawOutline(canvas, frame, kMark);
}

// What makes all but the brightest hundredth of the samples at most white.
double GainOf(const Image& picture) {
  const Pixels pixels(picture);
  std::array<std::size_t, 4096> counts{};
  for (std::size_t y = 0; y < picture.GetRows(); ++y) {
    for (std::size_t x = 0; x < picture.GetCols(); ++x) {
      const Colour pixel = pixels.At(x, y);
      for (const double value : {pixel.r, pixel.g, pixel.b}) {
        ++counts[static_cast<std::size_t>(value * (counts.size() - 1))];
      }
    }
  }
  std::size_t brighter = std::size_t{3} * picture.GetRows() * picture.GetCols() / 100;
  std::size_t level = counts.size() - 1;
  for (; level > 1 && counts[level] <= brighter; --level) {
    brighter -= counts[level];
  }
  return static_cast<double>(counts.size() - 1) / static_cast<double>(level);
}

// An empty sheet under a title.
Image NewSheet(std::string_view title, int width, int height) {
  Image sheet = NewImage(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height),
                         *FindPixelFormat(PIXEL_FORMAT_RGB16), NONE);
  Canvas canvas(sheet);
  canvas.Fill(canvas.Area(), kBackground);
  Write(canvas, kGap, kGap, kDot, title, kFaint);
  return sheet;
}

}  // namespace

Image DrawSheet(std::string_view title, const std::vector<Exhibit>& exhibits, const Area& detail) {
  const int longer = static_cast<int>(std::max(detail.width, detail.height));
  const int scale = std::max(1, kSmallestSide / longer);
  const int cellWidth = std::max(kNarrowestCell, static_cast<int>(detail.width) * scale);
  const int cellHeight = static_cast<int>(detail.height) * scale;
  const int down = static_cast<int>(exhibits.size()) / kAcross + 1;  // the overview comes last
  const int head = kGap + kLine;

  Image sheet = NewSheet(title, kGap + kAcross * (cellWidth + kGap),
                         head + down * (cellHeight + kLine + kGap));
  Canvas canvas(sheet);
  const auto cell = [&](int place) -> Rect {
    return {kGap + place % kAcross * (cellWidth + kGap),
            head + place / kAcross * (cellHeight + kLine + kGap), cellWidth, cellHeight};
  };
  for (int i = 0; i < static_cast<int>(exhibits.size()); ++i) {
    const Exhibit& exhibit = exhibits[static_cast<std::size_t>(i)];
    DrawDetail(canvas, cell(i), *exhibit.picture, detail, scale);
    DrawLabel(canvas, cell(i), exhibit.name, exhibit.remark);
  }
  const Rect last = cell(down * kAcross - 1);
  DrawOverview(canvas, last, *exhibits.front().picture, detail);
  DrawLabel(canvas, last, "the detail", fmt::format("at {}, {}", detail.x, detail.y));
  return Converted(sheet, PIXEL_FORMAT_RGB8);
}

Image DrawOverviews(std::string_view title, const std::vector<Exhibit>& exhibits) {
  constexpr int kOverviewsAcross = 3;
  constexpr int kWidth = 400;
  constexpr int kHeight = 300;
  const int down = (static_cast<int>(exhibits.size()) + kOverviewsAcross - 1) / kOverviewsAcross;
  const int head = kGap + kLine;

  Image sheet = NewSheet(title, kGap + kOverviewsAcross * (kWidth + kGap),
                         head + down * (kHeight + kLine + kGap));
  Canvas canvas(sheet);
  for (int i = 0; i < static_cast<int>(exhibits.size()); ++i) {
    const Exhibit& exhibit = exhibits[static_cast<std::size_t>(i)];
    const Rect cell{kGap + i % kOverviewsAcross * (kWidth + kGap),
                    head + i / kOverviewsAcross * (kHeight + kLine + kGap), kWidth, kHeight};
    DrawWhole(canvas, cell, *exhibit.picture, GainOf(*exhibit.picture));
    DrawLabel(canvas, cell, exhibit.name, exhibit.remark);
  }
  return Converted(sheet, PIXEL_FORMAT_RGB8);
}

}  // namespace Korvex2::Tool
