#pragma once

/// Files on their way: under a name of their own until they are complete, and gone when the process
/// is told to stop.

#include <sys/types.h>

#include <string>

namespace Korvex2::Tool {

/// From now on SIGINT, SIGTERM, SIGHUP and SIGQUIT first remove every unfinished file and say so in
/// one line on stderr, and then end the process as they would have; signals that were ignored stay
/// ignored. A file that grows past the limit of the process fails to be written, as on a full disk.
void RemoveUnfinishedFilesWhenStopped();

/// A new, empty file. Any thread may make one, and as many as kMost may stand at once.
class TemporaryFile {
 public:
  static constexpr int kMost = 64;

  /// Creates the file in the folder of `target`, hidden, under a name that no file has. fd() is
  /// negative when that failed, and errno tells why.
  explicit TemporaryFile(const std::string& target);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  /// Removes the file unless it was moved. Does not close fd().
  ~TemporaryFile();

  int fd() const { return m_fd; }

  /// Moves the file to its place, over what stood there. False: errno tells why.
  bool MoveTo(const std::string& target);

 private:
  int m_place = -1;  // in the list of what has to be removed
  int m_fd = -1;
};

}  // namespace Korvex2::Tool
