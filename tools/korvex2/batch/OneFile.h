#pragma once

/// The output of a batch whose frames all go into one file or stream.

#include <memory>

#include "batch/Batch.h"
#include "batch/Outputs.h"

namespace Korvex2::Tool {

/// A file gets its name only when none of the frames is missing; standard output keeps what was
/// written until then.
class OneFile : public Outputs {
 public:
  /// A UsageFailure where the file cannot take the frames. What is handed in has to outlive the
  /// object.
  OneFile(const FrameList& frames, const FrameLayout& layout, const BatchOptions& options);

  bool TakesTurns() const override { return true; }
  void Begin() override;
  void Name(Frame& /*frame*/) const override {}
  bool MayBeDone(const Frame& /*frame*/) const override { return false; }
  bool IsDone(Frame& /*frame*/) override { return false; }
  void Write(const Frame& frame) override;
  void Finish(bool isComplete) override;
  std::string AfterInterrupt(const std::string& begun, std::uint64_t next) const override;
  std::string AfterFailures(const Tally& tally) const override;

 private:
  void RequireSameShape(const Image& image);
  std::string NotWritten() const;

  const FrameLayout& m_layout;
  const BatchOptions& m_options;
  bool m_isStandardStream;
  std::unique_ptr<OutputFile> m_file;
  FrameSize m_size = {0, 0};  // of the frames, once there was one
};

}  // namespace Korvex2::Tool
