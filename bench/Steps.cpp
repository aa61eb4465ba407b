#include "Steps.h"

#include <algorithm>
#include <array>
#include <memory>

#include "PixelFormats.h"

namespace Korvex2::Bench {
namespace {

constexpr std::size_t kMostSteps = 3;
constexpr unsigned kStripRows = 16;

using Way = std::vector<const Step*>;

std::size_t BytesOf(Layout layout, std::size_t pixels) {
  switch (layout) {
    case Layout::Planar422:
      return 2 * pixels;
    case Layout::Planar444:
    case Layout::PackedYvu:
      return 3 * pixels;
  }
  const PixelFormatInfo& format = *FindPixelFormat(static_cast<PixelFormat>(layout));
  return static_cast<std::size_t>(GroupedSize(format, pixels));
}

bool Extend(Way& way, std::span<const Step> steps, Layout from, Layout to, std::size_t left) {
  for (const Step& step : steps) {
    if (step.from != from || (left == 1 && step.to != to)) continue;
    way.push_back(&step);
    if (step.to == to || Extend(way, steps, step.to, to, left - 1)) return true;
    way.pop_back();
  }
  return false;
}

Way ShortestWay(std::span<const Step> steps, Layout from, Layout to) {
  for (std::size_t length = 1; length <= kMostSteps; ++length) {
    Way way;
    if (Extend(way, steps, from, to, length)) return way;
  }
  return {};
}

Call InStrips(const Way& way, FrameSize size) {
  const unsigned stripRows = way.size() == 1 ? size.rows : kStripRows;
  using Strip = std::shared_ptr<std::vector<std::uint8_t>>;
  std::array<Strip, kMostSteps - 1> strips;
  for (std::size_t i = 0; i + 1 < way.size(); ++i) {
    const std::size_t bytes = BytesOf(way[i]->to, std::size_t{size.cols} * stripRows);
    strips[i] = std::make_shared<std::vector<std::uint8_t>>(bytes);
  }
  return [way, size, strips, stripRows](const std::uint8_t* src, std::uint8_t* dst) {
    for (unsigned row = 0; row < size.rows; row += stripRows) {
      const unsigned rows = std::min(stripRows, size.rows - row);
      const std::size_t before = std::size_t{size.cols} * row;
      const std::uint8_t* from = src + BytesOf(way.front()->from, before);
      for (std::size_t i = 0; i < way.size(); ++i) {
        std::uint8_t* to =
            i + 1 < way.size() ? strips[i]->data() : dst + BytesOf(way.back()->to, before);
        way[i]->run(from, to, static_cast<int>(size.cols), static_cast<int>(rows));
        from = to;
      }
    }
  };
}

}  // namespace

std::optional<Peer> FindWay(std::string_view library, std::span<const Step> steps,
                            PixelFormat source, PixelFormat target) {
  const Way way = ShortestWay(steps, LayoutOf(source), LayoutOf(target));
  if (way.empty()) return std::nullopt;
  std::string how;
  for (const Step* step : way) {
    how += how.empty() ? "" : " + ";
    how += step->name;
  }
  return Peer{library, how, [way](FrameSize size) { return InStrips(way, size); }};
}

}  // namespace Korvex2::Bench
