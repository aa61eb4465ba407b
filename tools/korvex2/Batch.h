#pragma once

/// Many frames converted at once: read ahead, converted on all cores, written behind.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "FrameList.h"
#include "Image.h"
#include "Progress.h"
#include "io/Containers.h"

namespace Korvex2::Tool {

/// Frames in memory for each job: one that is read ahead or written behind beside the one that is
/// converted.
constexpr unsigned kFramesPerJob = 2;
constexpr unsigned kMostJobs = 64;

struct BatchOptions {
  std::string output;  ///< a pattern, or one file that takes all frames one after the other
  PixelFormat target = UNSPECIFIED_PIXEL_FORMAT;
  unsigned jobs = 1;  ///< 1 to kMostJobs
  bool resume = false;
  bool failFast = false;
  ProgressForm progress = ProgressForm::None;
};

/// What is done to a frame that was read.
using FrameConversion = std::function<Image(const InputFile& file, const Container& container)>;

/// Converts the frames that `layout` picks from `files`. Each failure is reported and counted, and
/// the other frames go on. An interrupt lets the frames that are begun end, and then the process.
/// Fails when a frame failed; a UsageFailure comes before any frame is touched.
Tally RunBatch(const std::vector<std::string>& files, const FrameLayout& layout,
               const BatchOptions& options, const FrameConversion& convert);

}  // namespace Korvex2::Tool
