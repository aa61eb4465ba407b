#pragma once

/// Text output: tables with aligned columns, and JSON strings.

#include <string>
#include <string_view>
#include <vector>

namespace Korvex2::Tool {

/// Rows of cells, the first row being the header.
using Table = std::vector<std::vector<std::string>>;

/// Prints the rows to stdout, each column as wide as its widest cell.
void Print(const Table& table);

/// The text as a JSON string, quotes included; each byte that is no UTF-8 as U+FFFD.
std::string Json(std::string_view text);

}  // namespace Korvex2::Tool
