#include "batch/FileSet.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>

#include "io/File.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

std::optional<struct stat> StatusOf(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

}  // namespace

std::string Identity(const std::string& path) {
  std::error_code error;
  const std::filesystem::path followed = std::filesystem::weakly_canonical(path, error);
  return error ? path : followed.string();
}

FileSet::FileSet(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    if (IsStandardStream(path)) {
      continue;
    }
    if (const auto status = StatusOf(path)) {
      m_there.emplace(Number(status->st_dev, status->st_ino), path);
    } else {
      m_missing.insert(Identity(path));
    }
  }
}

// Following links takes many calls of the system, a number takes one.
bool FileSet::Contains(const std::string& path) const {
  const auto status = StatusOf(path);
  if (!status) {
    return !m_missing.empty() && m_missing.contains(Identity(path));
  }
  const auto [begin, end] = m_there.equal_range(Number(status->st_dev, status->st_ino));
  return std::any_of(begin, end, [identity = begin == end ? "" : Identity(path)](const auto& file) {
    return Identity(file.second) == identity;
  });
}

}  // namespace Korvex2::Tool
