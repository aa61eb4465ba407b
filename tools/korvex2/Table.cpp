#include "Table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

namespace Korvex2::Tool {

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
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      json += '\\';
      json += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      json += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
    } else {
      json += c;
    }
  }
  return json + '"';
}

}  // namespace Korvex2::Tool
