#pragma once

/// The frames of a batch on their way: read one after the other, converted on all cores, written.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "batch/Batch.h"
#include "batch/Outputs.h"
#include "batch/Progress.h"
#include "io/Temporary.h"

namespace Korvex2::Tool {

/// Runs once. What is handed in has to outlive it.
class Pipeline {
 public:
  Pipeline(const FrameList& frames, const FrameLayout& layout, const BatchOptions& options,
           const FrameWork& work, Outputs& outputs);

  /// What became of the frames. A Failure for what ended them all; an interrupt ends the process.
  Tally Run();

 private:
  using FramePointer = std::shared_ptr<Frame>;

  void RunStages();
  FramePointer Next();
  bool Read(Frame& frame);
  bool ReadStream(Frame& frame);
  void Convert(Frame& frame);
  void Write(Frame& frame);
  template <typename Step>
  void Try(Frame& frame, Step step);
  void Fail(Frame& frame, const std::string& reason);
  void End(const std::string& reason);
  void Conclude();

  const FrameList& m_frames;
  const FrameLayout& m_layout;
  const BatchOptions& m_options;
  const FrameWork& m_work;
  Outputs& m_outputs;
  FinishWhenInterrupted m_interrupt;
  Progress m_progress;
  std::uint64_t m_next = 0;
  std::uint64_t m_position = 0;            // in standard input
  std::atomic<std::uint64_t> m_bytes = 0;  // read and not yet counted
  std::atomic<bool> m_stopped = false;
  bool m_wasCut = false;  // by an interrupt, before the last frame
  std::atomic<bool> m_isFatal = false;
  std::mutex m_fatalMutex;
  std::string m_fatal;  // what ended it all
};

}  // namespace Korvex2::Tool
