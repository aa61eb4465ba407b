#pragma once

/// The folders that a run writes to: made once, and missed when someone takes them away.

#include <sys/types.h>

#include <map>
#include <mutex>
#include <string>

namespace Korvex2::Tool {

/// Any thread may call the members.
class OutputFolders {
 public:
  OutputFolders() = default;
  OutputFolders(const OutputFolders&) = delete;
  OutputFolders& operator=(const OutputFolders&) = delete;
  ~OutputFolders();

  /// Makes the folder of `file` where it is missing, the first time that it is asked for; a Failure
  /// when that cannot be. A FatalFailure when it was there before and is not any more.
  void Prepare(const std::string& file);

  /// A FatalFailure when one of the folders is not there any more, or is another one of its name.
  void RequireAll() const;

 private:
  struct Known {
    dev_t device;
    ino_t inode;
    int pin;  // keeps the inode's number from being given to another; negative: none
  };

  void MakeAndRemember(const std::string& folder);
  static void RequireThere(const std::string& folder, const Known& known);

  mutable std::mutex m_mutex;
  std::map<std::string, Known> m_folders;
};

}  // namespace Korvex2::Tool
