#pragma once

/// What the benchmark prints and what it writes.

#include <benchmark/benchmark.h>

#include <iosfwd>
#include <string>
#include <vector>

namespace Korvex2::Bench {

/// Prints one line for the contestants of a pair, size and cache state.
class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  void PrintLine();

  std::string m_contest;
  std::vector<Run> m_runs;
};

/// Google Benchmark's JSON with plain names: "rgb8_to_bgr/1920x1080/hot/ours".
class JsonReporter : public benchmark::JSONReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
};

}  // namespace Korvex2::Bench
