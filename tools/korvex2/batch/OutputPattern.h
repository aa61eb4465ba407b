#pragma once

/// The names that the results of many frames get.

#include <cstdint>
#include <string>

#include "batch/FrameList.h"

namespace Korvex2::Tool {

/// "out/{name}_{index:06}.png": {name} is the file's name without folder and extension, {index}
/// counts the frames taken, {frame} those of the file; both from 0. {{ and }} stand for braces.
class OutputPattern {
 public:
  /// A UsageFailure when the text is no pattern.
  explicit OutputPattern(std::string text);

  static bool IsPattern(const std::string& text);

  /// A UsageFailure when the file's name would lead out of the folders of the pattern.
  std::string Fill(const FramePlace& place) const;
  /// Whether no two frames of one file can get the same name.
  bool TellsFramesApart() const;
  bool HasIndex() const;

 private:
  std::string Fill(const std::string& name, std::uint64_t index, std::uint64_t frame) const;

  std::string m_text;
};

}  // namespace Korvex2::Tool
