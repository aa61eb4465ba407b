#pragma once

/// How far a run of many frames has come, printed on stderr.

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>

namespace Korvex2::Tool {

enum class ProgressForm { None, Line, Json };

/// What became of the frames.
struct Tally {
  std::uint64_t converted = 0;
  std::uint64_t failed = 0;
  std::uint64_t skipped = 0;  ///< were there already
  std::uint64_t bytes = 0;    ///< of pixels read and written

  std::uint64_t Ended() const { return converted + failed + skipped; }
};

/// Any thread may call the members. Line: one line of a terminal, written over and over. Json: an
/// object in a line of its own, about twice a second and at the end.
class Progress {
 public:
  Progress(ProgressForm form, std::optional<std::uint64_t> frames);

  void Converted(std::uint64_t bytes);
  void Failed();
  void Skipped();
  /// The last report.
  void Finish();

  Tally tally() const;

 private:
  void Count(std::uint64_t Tally::*field, std::uint64_t bytes);
  void Show(bool last);

  ProgressForm m_form;
  std::optional<std::uint64_t> m_frames;
  mutable std::mutex m_mutex;
  Tally m_tally;
  std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point m_shown = m_begin;
};

}  // namespace Korvex2::Tool
