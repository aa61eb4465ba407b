#pragma once

/// Many frames converted at once: read ahead, converted on all cores, written behind.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Image.h"
#include "batch/FrameList.h"
#include "batch/Progress.h"
#include "io/Containers.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {

/// Frames in memory for each job: one that is read ahead or written behind beside the one that is
/// converted.
constexpr unsigned kFramesPerJob = 2;
constexpr unsigned kMostJobs = 64;

struct BatchOptions {
  std::string output;  ///< a pattern, or one file that takes all frames one after the other
  InputShape shape;    ///< of the inputs
  PixelFormat target = UNSPECIFIED_PIXEL_FORMAT;
  unsigned jobs = 1;  ///< 1 to kMostJobs
  bool resume = false;
  bool failFast = false;
  WriteOptions write;
  ProgressForm progress = ProgressForm::None;
};

struct FrameSize {
  std::uint32_t cols, rows;
};

/// What is done to a frame.
struct FrameWork {
  std::function<Image(const InputFile& file, const Container& container)> convert;
  /// The size of what convert() would make; calls `file` only where it depends on it.
  std::function<FrameSize(const std::function<const InputFile&()>& file, const Container&)>
      sizeOfResult;
};

/// Converts the frames that `layout` picks from `files`. Each failure is reported and counted, and
/// the other frames go on. An interrupt lets the frames that are begun end, and then the process.
/// Fails when a frame failed; a UsageFailure comes before any frame is touched.
Tally RunBatch(const std::vector<std::string>& files, const FrameLayout& layout,
               const BatchOptions& options, const FrameWork& work);

}  // namespace Korvex2::Tool
