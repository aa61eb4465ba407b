#include "terminal/Table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Korvex2::Tool {
namespace {

// What UTF-8 is: for each range of first bytes that of the second, and how many there are. All that
// follow the second are 80 to BF.
struct Sequence {
  std::uint8_t first, last;
  std::uint8_t lowest, highest;  // of the second byte
  std::uint8_t size;
};

constexpr Sequence kSequences[] = {
    {0x00, 0x7f, 0x00, 0x00, 1}, {0xc2, 0xdf, 0x80, 0xbf, 2}, {0xe0, 0xe0, 0xa0, 0xbf, 3},
    {0xe1, 0xec, 0x80, 0xbf, 3}, {0xed, 0xed, 0x80, 0x9f, 3}, {0xee, 0xef, 0x80, 0xbf, 3},
    {0xf0, 0xf0, 0x90, 0xbf, 4}, {0xf1, 0xf3, 0x80, 0xbf, 4}, {0xf4, 0xf4, 0x80, 0x8f, 4},
};

bool IsBetween(char c, std::uint8_t lowest, std::uint8_t highest) {
  const auto byte = static_cast<std::uint8_t>(c);
  return lowest <= byte && byte <= highest;
}

bool BeginsWith(std::string_view text, const Sequence& sequence) {
  if (text.size() < sequence.size || !IsBetween(text[0], sequence.first, sequence.last)) {
    return false;
  }
  const std::string_view others = text.substr(1, sequence.size - 1U);
  return others.empty() ||
         (IsBetween(others[0], sequence.lowest, sequence.highest) &&
          std::ranges::all_of(others.substr(1), [](char c) { return IsBetween(c, 0x80, 0xbf); }));
}

// The character that the text begins with; nothing if it is none.
std::string_view FirstCharacter(std::string_view text) {
  const auto* found = std::ranges::find_if(
      kSequences, [&](const Sequence& sequence) { return BeginsWith(text, sequence); });
  return text.substr(0, found == std::end(kSequences) ? 0 : found->size);
}

std::string JsonCharacter(std::string_view character) {
  if (character.empty()) {
    return "\ufffd";
  }
  if (character == "\"" || character == "\\") {
    return '\\' + std::string(character);
  }
  const auto byte = static_cast<unsigned char>(character[0]);
  return byte < 0x20 ? fmt::format("\\u{:04x}", byte) : std::string(character);
}

}  // namespace

void Print(const Table& table) {
  std::vector<std::size_t> widths;
  for (const auto& row : table) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], row[i].size());
    }
  }
  for (const auto& row : table) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += fmt::format("{:<{}}", row[i], i + 1 < row.size() ? widths[i] + 2 : 0);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    fmt::print("{}\n", line);
  }
}

std::string Json(std::string_view text) {
  std::string json = "\"";
  while (!text.empty()) {
    const std::string_view character = FirstCharacter(text);
    json += JsonCharacter(character);
    text.remove_prefix(std::max<std::size_t>(character.size(), 1));
  }
  return json + '"';
}

}  // namespace Korvex2::Tool
