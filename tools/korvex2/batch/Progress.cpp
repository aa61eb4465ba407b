#include "batch/Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "terminal/Report.h"

namespace Korvex2::Tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kBetweenLines = std::chrono::milliseconds(100);
constexpr auto kBetweenObjects = std::chrono::milliseconds(500);

struct Rates {
  double seconds;
  double frames;               // a second
  double megabytes;            // a second
  std::optional<double> left;  // seconds
};

Rates RatesOf(const Tally& tally, std::optional<std::uint64_t> frames, Clock::duration spent) {
  const double seconds = std::max(1e-3, std::chrono::duration<double>(spent).count());
  const std::uint64_t worked = tally.converted + tally.failed;
  Rates rates{seconds, static_cast<double>(worked) / seconds,
              static_cast<double>(tally.bytes) / 1e6 / seconds, std::nullopt};
  if (frames && worked != 0) {
    rates.left = static_cast<double>(*frames - tally.Ended()) / rates.frames;
  }
  return rates;
}

std::string Bar(std::uint64_t done, std::uint64_t all) {
  constexpr std::uint64_t kWidth = 20;
  const auto full = static_cast<std::size_t>(all == 0 ? kWidth : done * kWidth / all);
  return '[' + std::string(full, '#') + std::string(kWidth - full, '.') + ']';
}

std::string Clocked(double seconds) {
  const auto whole = static_cast<std::uint64_t>(seconds + 0.5);
  return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

std::string Line(const Tally& tally, std::optional<std::uint64_t> frames, const Rates& rates) {
  std::string line =
      frames ? fmt::format("{} {}/{}", Bar(tally.Ended(), *frames), tally.Ended(), *frames)
             : fmt::format("{}", tally.Ended());
  line += fmt::format(" frames  {:.1f} frames/s  {:.1f} MB/s", rates.frames, rates.megabytes);
  if (rates.left) {
    line += fmt::format("  ETA {}", Clocked(*rates.left));
  }
  return tally.failed == 0 ? line : line + fmt::format("  {} failed", tally.failed);
}

template <typename Number>
std::string OrNull(const std::optional<Number>& number) {
  return number ? fmt::format("{:.6g}", static_cast<double>(*number)) : "null";
}

std::string Json(const Tally& tally, std::optional<std::uint64_t> frames, const Rates& rates,
                 bool last) {
  return fmt::format(
      R"({{"frames":{},"converted":{},"failed":{},"skipped":{},"seconds":{:.3f},"frames_per_second":{:.3f},)"
      R"("megabytes_per_second":{:.3f},"eta_seconds":{},"finished":{}}})",
      frames ? fmt::format("{}", *frames) : "null", tally.converted, tally.failed, tally.skipped,
      rates.seconds, rates.frames, rates.megabytes, OrNull(rates.left), last);
}

}  // namespace

Progress::Progress(ProgressForm form, std::optional<std::uint64_t> frames)
    : m_form(form), m_frames(frames) {
  const std::lock_guard lock(m_mutex);
  Show(false);
}

void Progress::Converted(std::uint64_t bytes) {
  Count(&Tally::converted, bytes);
}

void Progress::Failed() {
  Count(&Tally::failed, 0);
}

void Progress::Skipped() {
  Count(&Tally::skipped, 0);
}

void Progress::Finish() {
  const std::lock_guard lock(m_mutex);
  Show(true);
}

Tally Progress::tally() const {
  const std::lock_guard lock(m_mutex);
  return m_tally;
}

void Progress::Count(std::uint64_t Tally::*field, std::uint64_t bytes) {
  const std::lock_guard lock(m_mutex);
  ++(m_tally.*field);
  m_tally.bytes += bytes;
  if (Clock::now() - m_shown >= (m_form == ProgressForm::Json ? kBetweenObjects : kBetweenLines)) {
    Show(false);
  }
}

void Progress::Show(bool last) {
  m_shown = Clock::now();
  const Rates rates = RatesOf(m_tally, m_frames, m_shown - m_begin);
  if (m_form == ProgressForm::Json) {
    std::fprintf(stderr, "%s\n", Json(m_tally, m_frames, rates, last).c_str());
  } else if (m_form == ProgressForm::Line) {
    ShowStatus(last ? "" : Line(m_tally, m_frames, rates));
  }
}

}  // namespace Korvex2::Tool
