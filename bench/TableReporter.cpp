#include "TableReporter.h"

#include <cstdio>

namespace Korvex2::Bench {
namespace {

using Run = benchmark::BenchmarkReporter::Run;

std::string ContestOf(const Run& run) {
  const std::string& name = run.run_name.function_name;
  return name.substr(0, name.rfind('/'));
}

std::string ContestantOf(const Run& run) {
  const std::string& name = run.run_name.function_name;
  return name.substr(name.rfind('/') + 1);
}

double Counter(const Run& run, const char* name) {
  const auto found = run.counters.find(name);
  return found == run.counters.end() ? 0 : found->second.value;
}

double PixelTime(const Run* run) {
  return run == nullptr ? 0 : Counter(*run, "ns_per_px");
}

bool IsPeer(const Run& run) {
  return run.counters.contains("deviation");
}

void PrintCell(const char* format, double value) {
  value > 0 ? std::printf(format, value) : std::printf("%9s", "-");
}

}  // namespace

bool TableReporter::ReportContext(const Context&) {
  std::printf("ours, memcpy and peers in ns/px; literal, fresh and peers as multiples of ours\n");
  std::printf("%-38s%9s%9s%9s%9s%9s  %s\n", "", "ours", "memcpy", "/memcpy", "literal", "fresh",
              "peers, with their largest deviation");
  return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (ContestOf(run) != m_contest) {
      PrintLine();
      m_contest = ContestOf(run);
    }
    m_runs.push_back(run);
  }
}

void TableReporter::Finalize() {
  PrintLine();
}

void TableReporter::PrintLine() {
  if (m_runs.empty()) return;
  const auto find = [this](const char* name) -> const Run* {
    for (const Run& run : m_runs) {
      if (ContestantOf(run) == name && !run.error_occurred) return &run;
    }
    return nullptr;
  };
  const double ours = PixelTime(find("ours"));
  const double copy = PixelTime(find("memcpy"));
  std::printf("%-38s", m_contest.c_str());
  PrintCell("%9.4f", ours);
  PrintCell("%9.4f", copy);
  PrintCell("%8.2fx", copy > 0 ? ours / copy : 0);
  PrintCell("%8.1fx", ours > 0 ? PixelTime(find("literal")) / ours : 0);
  PrintCell("%8.2fx", ours > 0 ? PixelTime(find("fresh")) / ours : 0);
  for (const Run& run : m_runs) {
    if (run.error_occurred) {
      std::printf("  %s: %s", ContestantOf(run).c_str(), run.error_message.c_str());
    } else if (IsPeer(run)) {
      std::printf("  %s %.4f", ContestantOf(run).c_str(), PixelTime(&run));
      if (ours > 0) std::printf(" %.2fx", PixelTime(&run) / ours);
      std::printf(" dev %.0f", Counter(run, "deviation"));
    }
  }
  std::printf("\n");
  std::fflush(stdout);
  m_runs.clear();
}

void JsonReporter::ReportRuns(const std::vector<Run>& runs) {
  std::vector<Run> renamed = runs;
  for (Run& run : renamed) {
    run.run_name.time_type.clear();
    run.cpu_accumulated_time = run.real_accumulated_time;  // that of the whole contest otherwise
  }
  JSONReporter::ReportRuns(renamed);
}

}  // namespace Korvex2::Bench
