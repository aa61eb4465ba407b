#include "Report.h"

#include <cstdio>
#include <string>

namespace Korvex2::Tool {
namespace {

std::string OneLine(std::string_view message) {
  std::string line(message);
  while (!line.empty() && (line.back() == '\n' || line.back() == ' ')) {
    line.pop_back();
  }
  for (char& c : line) {
    if (c == '\n') {
      c = ' ';
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
      c = '?';
    }
  }
  return line;
}

}  // namespace

void Report(std::string_view message) {
  std::fprintf(stderr, "korvex2: %s\n", OneLine(message).c_str());
}

void Warn(std::string_view message) {
  std::fprintf(stderr, "korvex2: warning: %s\n", OneLine(message).c_str());
}

}  // namespace Korvex2::Tool
