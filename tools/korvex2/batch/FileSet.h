#pragma once

/// Files told apart by what they are, whatever leads to them.

#include <sys/types.h>

#include <map>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Korvex2::Tool {

/// The path with symbolic links followed, as far as there is something.
std::string Identity(const std::string& path);

/// Any thread may ask.
class FileSet {
 public:
  explicit FileSet(const std::vector<std::string>& paths);

  /// Whether the path leads to one of the files. Another hard link is another file, since what is
  /// written replaces names.
  bool Contains(const std::string& path) const;

 private:
  using Number = std::pair<dev_t, ino_t>;

  std::multimap<Number, std::string> m_there;
  std::unordered_set<std::string> m_missing;  // identities
};

}  // namespace Korvex2::Tool
