#include "drawing/TestChart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string_view>

#include "PixelFormats.h"
#include "drawing/Canvas.h"
#include "drawing/Lettering.h"
#include "io/Raster.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

Colour Mix(const Colour& a, const Colour& b, double t) {
  return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

// Fully saturated; a turn is 1.
Colour Hue(double turn) {
  const auto channel = [turn](double shift) {
    const double t = 6 * (turn + shift - std::floor(turn + shift));
    return std::clamp(std::abs(t - 3) - 1, 0.0, 1.0);
  };
  return {channel(0), channel(2.0 / 3), channel(1.0 / 3)};
}

// Two rows of full colours, two of the muted ones that pictures are made of.
constexpr int kPatchColumns = 8;
constexpr std::array<unsigned, 32> kPatches = {
    // clang-format off
    0xff0000, 0xff8000, 0xffff00, 0x00ff00, 0x00ffff, 0x0000ff, 0x8000ff, 0xff00ff,
    0x800000, 0x804000, 0x808000, 0x008000, 0x008080, 0x000080, 0x400080, 0x800080,
    0xf6d9c6, 0xd8a283, 0xa86f50, 0x6b4430, 0x5f7a3d, 0x93b56c, 0x6fa3c8, 0x2f5d8c,
    0xf4b6b6, 0xf5d6a8, 0xf3efb0, 0xc3e6b5, 0xb5e3e3, 0xb6c5f0, 0xd3b9ee, 0xefb9df,
    // clang-format on
};

void DrawPatches(Canvas& canvas, const Rect& field, int gap) {
  const int rows = static_cast<int>(kPatches.size()) / kPatchColumns;
  for (int i = 0; i < static_cast<int>(kPatches.size()); ++i) {
    const Rect row = field.Row(i / kPatchColumns, rows, gap);
    canvas.Fill(row.Column(i % kPatchColumns, kPatchColumns, gap),
                Rgb(kPatches[static_cast<std::size_t>(i)]));
  }
}

// Fraction of the way along a field, 0 in its first pixel and 1 in its last.
double Along(int position, int length) {
  return length > 1 ? static_cast<double>(position) / (length - 1) : 0;
}

void DrawRamps(Canvas& canvas, const Rect& field, int gap) {
  constexpr Colour kEnds[] = {Grey(1), {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  constexpr std::string_view kLetters = "WRGB";
  constexpr int kBars = 6;
  constexpr int kSteps = 17;
  const int label = std::min(field.w / 24, field.h / kBars);
  const Rect bars{field.x + label, field.y, std::max(0, field.w - label), field.h};
  for (int i = 0; i < 4; ++i) {
    const Rect bar = bars.Row(i, kBars, gap);
    canvas.Paint(bar, [&](int x, int) { return Mix(Grey(0), kEnds[i], Along(x, bar.w)); });
    const int scale = std::max(1, std::min(label / 8, bar.h / 9));
    if (label >= 8 && bar.h >= 9) {
      Write(canvas, field.x, bar.y + (bar.h - 7 * scale) / 2, scale,
            kLetters.substr(static_cast<std::size_t>(i), 1), kInk);
    }
  }
  const Rect hues = bars.Row(4, kBars, gap);
  canvas.Paint(hues, [&](int x, int) { return Hue(static_cast<double>(x) / hues.w); });
  const Rect steps = bars.Row(5, kBars, gap);
  canvas.Paint(steps, [&](int x, int) {
    return Grey(static_cast<double>(std::int64_t{x} * kSteps / steps.w) / (kSteps - 1));
  });
}

// Rings that get finer outwards and reach the finest that pixels can show, one dark and one bright
// pixel in turn, at the edge of the disc.
void DrawZonePlate(Canvas& canvas, const Rect& field) {
  const double radius = std::min(field.w, field.h) / 2.0;
  const double cx = (field.w - 1) / 2.0;
  const double cy = (field.h - 1) / 2.0;
  canvas.Paint(field, [&](int x, int y) {
    const double r2 = (x - cx) * (x - cx) + (y - cy) * (y - cy);
    const double wave = 0.5 + 0.5 * std::cos(std::numbers::pi * r2 / (2 * radius));
    const double cover = std::clamp(radius - std::sqrt(r2), 0.0, 1.0);
    return Mix(kBackground, Grey(wave), cover);
  });
}

void DrawStar(Canvas& canvas, const Rect& field) {
  constexpr int kSpokes = 36;
  const double radius = std::min(field.w, field.h) / 2.0;
  const double cx = (field.w - 1) / 2.0;
  const double cy = (field.h - 1) / 2.0;
  canvas.Paint(field, [&](int x, int y) {
    const double r = std::hypot(x - cx, y - cy);
    // The edge of a spoke is as soft as one pixel is wide there.
    const double wave = std::sin(kSpokes * std::atan2(y - cy, x - cx)) * r / kSpokes;
    const double cover = std::clamp(radius - r, 0.0, 1.0);
    return Mix(kBackground, Grey(std::clamp(0.5 + wave, 0.0, 1.0)), cover);
  });
}

// Stripes 1 to 4 pixels wide, upright in the upper row and lying in the lower one.
void DrawLines(Canvas& canvas, const Rect& field, int gap) {
  for (int i = 0; i < 4; ++i) {
    const int stripe = i + 1;
    canvas.Paint(field.Row(0, 2, gap).Column(i, 4, gap),
                 [&](int x, int) { return x / stripe % 2 == 0 ? kInk : Grey(0); });
    canvas.Paint(field.Row(1, 2, gap).Column(i, 4, gap),
                 [&](int, int y) { return y / stripe % 2 == 0 ? kInk : Grey(0); });
  }
}

void DrawFrame(Canvas& canvas) {
  const Rect all = canvas.Area();
  canvas.Fill({0, 0, all.w, 1}, Grey(1));
  canvas.Fill({0, all.h - 1, all.w, 1}, Grey(1));
  canvas.Fill({0, 0, 1, all.h}, Grey(1));
  canvas.Fill({all.w - 1, 0, 1, all.h}, Grey(1));
}

void Draw(Canvas& canvas) {
  const Rect all = canvas.Area();
  const int unit = std::max(1, std::min(all.w / 48, all.h / 32));
  const int gap = std::max(1, unit / 4);
  canvas.Fill(all, kBackground);

  const Rect inner = all.Inset(unit);
  const int title = inner.h / 14;
  const int dot = std::min(title / 10, inner.w / 42);
  if (dot > 0) {
    Write(canvas, inner.x, inner.y, dot, "KORVEX2", kInk);
  }
  const Rect body{inner.x, inner.y + title, inner.w, inner.h - title};
  const Rect right{body.x + body.w * 6 / 10 + unit / 2, body.y, body.w * 4 / 10 - unit / 2, body.h};
  const Rect left{body.x, body.y, body.w * 6 / 10 - unit / 2, body.h};
  const int split = body.h * 6 / 10;
  DrawPatches(canvas, {left.x, left.y, left.w, split - unit / 2}, gap);
  DrawRamps(canvas, {left.x, left.y + split + unit / 2, left.w, left.h - split - unit / 2}, gap);
  DrawZonePlate(canvas, {right.x, right.y, right.w, split - unit / 2});
  const Rect lower{right.x, right.y + split + unit / 2, right.w, right.h - split - unit / 2};
  DrawStar(canvas, lower.Column(0, 2, unit));
  DrawLines(canvas, lower.Column(1, 2, unit), gap);
  DrawFrame(canvas);
}

}  // namespace

Image DrawChart(std::uint32_t width, std::uint32_t height) {
  Image image = NewImage(width, height, *FindPixelFormat(PIXEL_FORMAT_RGB16), NONE);
  Canvas canvas(image);
  Draw(canvas);
  return image;
}

}  // namespace Korvex2::Tool
