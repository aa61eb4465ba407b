#include "Report.h"

#include <cstdio>
#include <mutex>
#include <set>
#include <string>

namespace Korvex2::Tool {
namespace {

std::mutex g_mutex;
std::string g_status;
std::set<std::string> g_warnings;  // that were given

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

// Over the status, which is shown again below.
void Print(const std::string& line) {
  if (g_status.empty()) {
    std::fprintf(stderr, "%s\n", line.c_str());
  } else {
    std::fprintf(stderr, "\r\x1b[K%s\n%s", line.c_str(), g_status.c_str());
  }
}

}  // namespace

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
