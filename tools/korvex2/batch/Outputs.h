#pragma once

/// Where the results of a batch go: into a file each, or all into one.

#include <cstdint>
#include <string>

#include "batch/Frame.h"
#include "batch/Progress.h"

namespace Korvex2::Tool {

/// Many threads may call Name, MayBeDone, IsDone and, unless TakesTurns, Write.
class Outputs {
 public:
  Outputs() = default;
  Outputs(const Outputs&) = delete;
  Outputs& operator=(const Outputs&) = delete;
  virtual ~Outputs() = default;

  /// Whether frames are written one after the other, in their order.
  virtual bool TakesTurns() const = 0;

  /// Before the first frame.
  virtual void Begin() = 0;

  /// Says where the frame goes.
  virtual void Name(Frame& frame) const = 0;

  /// Whether something is where the frame would go, so that it may not have to be read.
  virtual bool MayBeDone(const Frame& frame) const = 0;

  /// Whether what is there is the frame. It reads the frame where it needs to know more of it.
  virtual bool IsDone(Frame& frame) = 0;

  /// Writes the frame's result.
  virtual void Write(const Frame& frame) = 0;

  /// After the last frame. `isComplete`: there was one, none failed and none is left.
  virtual void Finish(bool isComplete) = 0;

  /// What is kept of a batch that was stopped after `begun` frames ("7 frames of 9"), and how to go
  /// on. `next` is the number of the first frame that was not begun.
  virtual std::string AfterInterrupt(const std::string& begun, std::uint64_t next) const = 0;

  /// What the failed frames mean for the others: empty, or begins with "; ".
  virtual std::string AfterFailures(const Tally& tally) const = 0;
};

}  // namespace Korvex2::Tool
