#include "Names.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "Failure.h"
#include "InstructionSets.h"

namespace Korvex2::Tool {
namespace {

template <typename Value>
struct Named {
  std::string_view name;
  Value value;
};

constexpr Named<BayerTileFormat> kTiles[] = {
    {"rggb", RGGB}, {"grbg", GRBG}, {"gbrg", GBRG}, {"bggr", BGGR}, {"none", NONE},
};

// How the names of raw formats begin that say the tile as well: those of GenICam (BayerRG8,
// BayerRG12Packed ...), of FFmpeg (bayer_rggb8 ...) and four-character codes.
constexpr Named<BayerTileFormat> kTilePrefixes[] = {
    // clang-format off
    {"bayerrg", RGGB}, {"bayer_rggb", RGGB}, {"rggb", RGGB}, {"rg16", RGGB},
    {"bayergr", GRBG}, {"bayer_grbg", GRBG}, {"grbg", GRBG}, {"gr16", GRBG},
    {"bayergb", GBRG}, {"bayer_gbrg", GBRG}, {"gbrg", GBRG}, {"gb16", GBRG},
    {"bayerbg", BGGR}, {"bayer_bggr", BGGR}, {"bggr", BGGR}, {"ba81", BGGR}, {"byr2", BGGR},
    // clang-format on
};

constexpr Named<ColorProcessingAlgorithm> kMethods[] = {
    {"nearest", NEAREST_NEIGHBOR}, {"edge", EDGE_SENSING},
    {"hq_linear", HQ_LINEAR},      {"directional", DIRECTIONAL_FILTER},
    {"rigorous", RIGOROUS},        {"none", NO_COLOR_PROCESSING},
    {"default", DEFAULT},
};

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return lower;
}

template <typename Value>
std::string Join(std::span<const Named<Value>> rows) {
  std::string names;
  for (const auto& row : rows) {
    names += names.empty() ? "" : ", ";
    names += row.name;
  }
  return names;
}

template <typename Value>
Value Parse(std::span<const Named<Value>> rows, std::string_view option, std::string_view name) {
  const std::string wanted = Lower(name);
  for (const auto& row : rows) {
    if (row.name == wanted) {
      return row.value;
    }
  }
  throw UsageFailure("{} '{}' is unknown; it is one of {}", option, name, Join(rows));
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
  return Parse<BayerTileFormat>(kTiles, "--tile", name);
}

std::optional<BayerTileFormat> TileInFormatName(std::string_view name) {
  const std::string wanted = Lower(name);
  for (const auto& prefix : kTilePrefixes) {
    if (wanted.starts_with(prefix.name)) {
      return prefix.value;
    }
  }
  return std::nullopt;
}

std::string_view NameOf(BayerTileFormat tile) {
  const auto* row = std::find_if(std::begin(kTiles), std::end(kTiles),
                                 [tile](const auto& known) { return known.value == tile; });
  return row == std::end(kTiles) ? "unknown" : row->name;
}

ColorProcessingAlgorithm ParseMethod(std::string_view name) {
  return Parse<ColorProcessingAlgorithm>(kMethods, "--method", name);
}

std::string TileNames() {
  return Join<BayerTileFormat>(kTiles);
}

std::string MethodNames() {
  return Join<ColorProcessingAlgorithm>(kMethods);
}

void ChooseInstructionSet(std::string_view name) {
  if (name.empty()) {
    return;
  }
  for (const std::string_view available : InstructionSets()) {
    if (Lower(available) == Lower(name)) {
      (void)SetInstructionSet(available);
      return;
    }
  }
  throw UsageFailure("--cpu '{}' is no instruction set of this machine; it is one of {}", name,
                     InstructionSetNames());
}

std::string InstructionSetNames() {
  std::string names;
  for (const std::string_view name : InstructionSets()) {
    names += names.empty() ? "" : ", ";
    names += name;
  }
  return names;
}

std::string_view NameOf(PixelFormat format) {
  const PixelFormatInfo* info = FindPixelFormat(format);
  return info == nullptr ? "unknown" : info->name;
}

bool IsRaw(PixelFormat format) {
  return format == PIXEL_FORMAT_RAW8 || format == PIXEL_FORMAT_RAW12 ||
         format == PIXEL_FORMAT_RAW16;
}

}  // namespace Korvex2::Tool
