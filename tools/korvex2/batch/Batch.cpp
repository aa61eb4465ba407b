#include "batch/Batch.h"

#include <memory>

#include "batch/FilePerFrame.h"
#include "batch/FileSet.h"
#include "batch/OneFile.h"
#include "batch/Pipeline.h"

namespace Korvex2::Tool {
namespace {

std::unique_ptr<Outputs> OutputsOf(const FrameList& frames, const FileSet& inputs,
                                   const FrameLayout& layout, const BatchOptions& options,
                                   const FrameWork& work) {
  if (!OutputPattern::IsPattern(options.output)) {
    return std::make_unique<OneFile>(frames, layout, options);
  }
  if (IsStandardStream(options.output)) {
    throw UsageFailure("standard output has no name to put {} into", options.output);
  }
  return std::make_unique<FilePerFrame>(frames, inputs, options, work);
}

void RequireNoFailure(const Tally& tally, const BatchOptions& options, const Outputs& outputs) {
  if (tally.failed != 0) {
    throw Failure("{} of {} frames failed{}{}", tally.failed, tally.Ended(),
                  options.failFast ? ", and --fail-fast left out what had not begun" : "",
                  outputs.AfterFailures(tally));
  }
}

}  // namespace

Tally RunBatch(const std::vector<std::string>& files, const FrameLayout& layout,
               const BatchOptions& options, const FrameWork& work) {
  const FrameList frames(files, layout);
  const FileSet inputs(files);
  const std::unique_ptr<Outputs> outputs = OutputsOf(frames, inputs, layout, options, work);
  if (frames.count() == 0U) {
    throw Failure("there is no frame to convert: --skip passes over all of them");
  }
  const Tally tally = Pipeline(frames, layout, options, work, *outputs).Run();
  RequireNoFailure(tally, options, *outputs);
  if (tally.Ended() == 0) {
    throw Failure("standard input held no frame");
  }
  return tally;
}

}  // namespace Korvex2::Tool
