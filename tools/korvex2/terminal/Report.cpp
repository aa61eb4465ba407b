#include "terminal/Report.h"

#include <cstdio>
#include <mutex>
#include <set>
#include <string>

namespace Korvex2::Tool {
namespace {

std::mutex g_mutex;
std::string g_status;
std::set<std::string> g_warnings;  // that were given

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

// U+0080 to U+009F, in UTF-8.
bool IsControl(char first, char second) {
  return first == '\xc2' && static_cast<unsigned char>(second) >= 0x80 &&
         static_cast<unsigned char>(second) < 0xa0;
}

// Over the status, which is shown again below.
void Print(const std::string& line) {
  if (g_status.empty()) {
    std::fprintf(stderr, "%s\n", line.c_str());
  } else {
    std::fprintf(stderr, "\r\x1b[K%s\n%s", line.c_str(), g_status.c_str());
  }
}

}  // namespace

std::string OneLine(std::string_view message) {
  std::string line(message);
  while (!line.empty() && (line.back() == '\n' || line.back() == ' ')) {
    line.pop_back();
  }
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\n') {
      line[i] = ' ';
    } else if (IsControl(line[i])) {
      line[i] = '?';
    } else if (i + 1 < line.size() && IsControl(line[i], line[i + 1])) {
      line[i] = line[i + 1] = '?';
    }
  }
  return line;
}

void Report(std::string_view message) {
  const std::lock_guard lock(g_mutex);
  Print("korvex2: " + OneLine(message));
}

void Warn(std::string_view message) {
  const std::lock_guard lock(g_mutex);
  const auto [warning, isNew] = g_warnings.insert("korvex2: warning: " + OneLine(message));
  if (isNew) {
    Print(*warning);
  }
}

void ShowStatus(std::string_view status) {
  const std::lock_guard lock(g_mutex);
  g_status = OneLine(status);
  std::fprintf(stderr, "\r\x1b[K%s", g_status.c_str());
  std::fflush(stderr);
}

}  // namespace Korvex2::Tool
