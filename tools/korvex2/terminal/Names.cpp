#include "terminal/Names.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>
#include <vector>

#include "BayerNames.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return lower;
}

template <typename Row>
std::string Join(ArrayView<Row> rows) {
  std::string names;
  for (const Row& row : rows) {
    names += names.empty() ? "" : ", ";
    names += row.name;
  }
  return names;
}

// Insertions, deletions, replacements and swaps of neighbours that turn one word into the other.
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> d(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        d[i][j] = i + j;
        continue;
      }
      const std::size_t replaced = d[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      d[i][j] = std::min({replaced, d[i - 1][j] + 1, d[i][j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
      }
    }
  }
  return d[a.size()][b.size()];
}

// The nearest of a format's names and aliases.
std::size_t DistanceTo(const PixelFormatInfo& format, std::string_view wanted) {
  std::size_t best = EditDistance(wanted, Lower(format.name));
  const std::string aliases = Lower(format.aliases);
  for (std::size_t begin = 0; begin < aliases.size();) {
    const std::size_t end = std::min(aliases.find(' ', begin), aliases.size());
    best =
        std::min(best, EditDistance(wanted, std::string_view(aliases).substr(begin, end - begin)));
    begin = end + 1;
  }
  return best;
}

// "mono8 or mono16", or nothing when no name is near.
std::string Suggestion(std::string_view name) {
  constexpr std::size_t kMost = 3;
  const std::string wanted = Lower(name.substr(0, 40));
  std::vector<std::pair<std::size_t, const PixelFormatInfo*>> near;
  for (const PixelFormatInfo& format : PixelFormats()) {
    near.emplace_back(DistanceTo(format, wanted), &format);
  }
  std::sort(near.begin(), near.end());
  const std::size_t limit = std::min(near.front().first, 1 + wanted.size() / 3);
  std::string names;
  for (std::size_t i = 0; i < kMost && near[i].first <= limit; ++i) {
    names += names.empty() ? "" : " or ";
    names += near[i].second->name;
  }
  return names;
}

}  // namespace

const PixelFormatInfo& ParseFormat(std::string_view option, std::string_view name) {
  if (const PixelFormatInfo* format = FindPixelFormat(name)) {
    return *format;
  }
  const std::string suggestion = Suggestion(name);
  if (suggestion.empty()) {
    throw UsageFailure("{} '{}' is no pixel format; 'korvex2 formats' lists them", option, name);
  }
  throw UsageFailure("{} '{}' is no pixel format; did you mean {}? ('korvex2 formats' lists all)",
                     option, name, suggestion);
}

BayerTileFormat ParseTile(std::string_view name) {
  if (const auto tile = FindBayerTile(name)) {
    return *tile;
  }
  throw UsageFailure("--tile '{}' is unknown; it is one of {}", name, TileNames());
}

ColorProcessingAlgorithm ParseMethod(std::string_view name) {
  if (const auto method = FindColorProcessing(name)) {
    return *method;
  }
  throw UsageFailure("--method '{}' is unknown; it is one of {}", name, MethodNames());
}

std::string TileNames() {
  return Join(BayerTiles());
}

std::string MethodNames() {
  return Join(ColorProcessings());
}

}  // namespace Korvex2::Tool
