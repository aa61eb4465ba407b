#pragma once

/// Comparing names without regard to case, in ASCII and without memory.

#include <algorithm>
#include <string_view>

namespace Korvex2 {

constexpr char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool SameName(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) { return Lower(x) == Lower(y); });
}

}  // namespace Korvex2
