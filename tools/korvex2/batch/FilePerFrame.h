#pragma once

/// The outputs of a batch whose frames get a file each.

#include "batch/Batch.h"
#include "batch/FileSet.h"
#include "batch/OutputFolders.h"
#include "batch/OutputPattern.h"
#include "batch/Outputs.h"

namespace Korvex2::Tool {

class FilePerFrame : public Outputs {
 public:
  /// A UsageFailure where two frames would get one name, or one that of an input. What is handed in
  /// has to outlive the object.
  FilePerFrame(const FrameList& frames, const FileSet& inputs, const BatchOptions& options,
               const FrameWork& work);

  bool TakesTurns() const override { return false; }
  void Begin() override {}
  void Name(Frame& frame) const override;
  bool MayBeDone(const Frame& frame) const override;
  bool IsDone(Frame& frame) override;
  void Write(const Frame& frame) override;
  void Finish(bool isComplete) override;
  std::string AfterInterrupt(const std::string& begun, std::uint64_t next) const override;
  std::string AfterFailures(const Tally& tally) const override;

 private:
  bool IsWhole(Frame& frame) const;

  const FileSet& m_inputs;
  const BatchOptions& m_options;
  const FrameWork& m_work;
  OutputPattern m_pattern;
  OutputFolders m_folders;
};

}  // namespace Korvex2::Tool
