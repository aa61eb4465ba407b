#pragma once

/// A frame on its way through a batch.

#include <memory>
#include <optional>
#include <string>

#include "Image.h"
#include "batch/FrameList.h"
#include "io/Containers.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {

struct Frame {
  FramePlace place;
  std::string output;               ///< the file that it gets to itself, if it gets one
  std::unique_ptr<InputFile> file;  ///< read whole, until the frame is converted
  std::optional<Image> result;      ///< until it is written
  bool ended = false;               ///< failed, was there already, or is written

  /// The file, which is read now unless it was before.
  const InputFile& Open(const InputShape& shape);
};

}  // namespace Korvex2::Tool
