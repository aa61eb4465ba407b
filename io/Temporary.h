#pragma once

/// Files on their way: under a name of their own until they are complete, and gone when the process
/// is told to stop.

#include <signal.h>
#include <sys/types.h>

#include <functional>
#include <string>

namespace Korvex2::Io {

/// From now on SIGINT, SIGTERM, SIGHUP and SIGQUIT first remove every unfinished file and say so in
/// one line on stderr, and then end the process as they would have; so does SIGPIPE, without a
/// word. Signals that were ignored stay ignored. A file that grows past the limit of the process
/// fails to be written, as on a full disk.
void RemoveUnfinishedFilesWhenStopped();

/// While one lives, the first SIGINT ends nothing: it is for the program to see it and to finish
/// what it has begun. The second one stops the process as before.
class FinishWhenInterrupted {
 public:
  FinishWhenInterrupted();
  FinishWhenInterrupted(const FinishWhenInterrupted&) = delete;
  FinishWhenInterrupted& operator=(const FinishWhenInterrupted&) = delete;
  ~FinishWhenInterrupted();

  bool WasInterrupted() const;
  /// Ends the process as the interrupt would have, once `say` has told what became of the work. One
  /// more interrupt ends it without waiting for that.
  [[noreturn]] void End(const std::function<void()>& say) const;

 private:
  struct sigaction m_before;
};

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

}  // namespace Korvex2::Io
