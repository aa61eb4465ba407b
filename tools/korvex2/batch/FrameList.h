#pragma once

/// The frames of many files, in order.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Korvex2::Tool {

/// How frames lie in a file of many, and which of all frames are taken.
struct FrameLayout {
  bool backToBack = false;            ///< in headerless files; any other file is one frame
  std::uint64_t headerBytes = 0;      ///< before the first frame of each file
  std::uint64_t frameBytes = 0;       ///< from the begin of one frame to that of the next
  std::uint64_t pixelBytes = 0;       ///< of these, the ones that are pixels
  std::uint64_t skip = 0;             ///< frames passed over at the begin
  std::uint64_t every = 1;            ///< then each n-th is taken
  std::optional<std::uint64_t> most;  ///< and no more than this

  /// Where a frame of a file begins, in bytes, or the largest number: in no file.
  std::uint64_t BeginOf(std::uint64_t number) const;
};

/// Where a frame lies.
struct FramePlace {
  std::string path;
  std::uint64_t index;   ///< among the frames that are taken, from 0
  std::uint64_t number;  ///< in its file, from 0
  bool isPart;           ///< of a file of many frames; else it is the whole file
  std::uint64_t begin;   ///< of a part, in bytes
  std::uint64_t size;    ///< of a part, in bytes; may be short at the end of a file
  std::string label;     ///< for messages: "frame 3 of long.raw", or the path
};

/// Whether it is a folder or a glob, which stand for any number of files.
bool NamesMany(const std::string& input);

/// Files, folders and globs as the files that they stand for. A folder stands for the files in it
/// whose extension is known, in the order of their names, numbers in them counted as numbers. A
/// Failure when one stands for none. What cannot be looked at stands for itself.
std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs);

class FrameList {
 public:
  /// The sizes of the files are asked for here. `inputs` are files, or standard input alone.
  FrameList(std::vector<std::string> inputs, const FrameLayout& layout);

  const std::vector<std::string>& files() const { return m_files; }

  /// Nothing for standard input of many frames, which ends when it ends.
  std::optional<std::uint64_t> count() const { return m_count; }

  FramePlace operator[](std::uint64_t index) const;

 private:
  bool HoldsMany(const std::string& path) const;
  std::uint64_t FramesIn(const std::string& path);

  std::vector<std::string> m_files;
  std::vector<std::uint64_t> m_first;  // the number of each file's first frame among all frames
  std::vector<std::uint64_t> m_sizes;
  FrameLayout m_layout;
  std::optional<std::uint64_t> m_count;
};

}  // namespace Korvex2::Tool
