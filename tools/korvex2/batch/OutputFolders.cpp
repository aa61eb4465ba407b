#include "batch/OutputFolders.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>

#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

namespace fs = std::filesystem;

// A process may open a limited number of files, and the frames need most of them.
std::size_t MostPins() {
  constexpr rlim_t kEnough = 256;
  rlimit limit;
  return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? std::min(kEnough, limit.rlim_cur / 4) : 0;
}

std::string FolderOf(const std::string& file) {
  const std::string folder = fs::path(file).parent_path().string();
  return folder.empty() ? "." : folder;
}

// Nothing where there is none. One that was removed while the process is in it has no links.
std::optional<struct stat> StatusOf(const std::string& folder) {
  struct stat status;
  const bool there = stat(folder.c_str(), &status) == 0 && status.st_nlink != 0;
  return there ? std::optional(status) : std::nullopt;
}

}  // namespace

OutputFolders::~OutputFolders() {
  for (const auto& [folder, known] : m_folders) {
    if (known.pin >= 0) {
      close(known.pin);
    }
  }
}

void OutputFolders::Prepare(const std::string& file) {
  const std::string folder = FolderOf(file);
  const std::lock_guard lock(m_mutex);
  const auto known = m_folders.find(folder);
  if (known == m_folders.end()) {
    MakeAndRemember(folder);
  } else {
    RequireThere(folder, known->second);
  }
}

void OutputFolders::RequireAll() const {
  const std::lock_guard lock(m_mutex);
  for (const auto& [folder, known] : m_folders) {
    RequireThere(folder, known);
  }
}

void OutputFolders::RequireThere(const std::string& folder, const Known& known) {
  const std::optional<struct stat> status = StatusOf(folder);
  if (!status || status->st_dev != known.device || status->st_ino != known.inode) {
    throw FatalFailure(
        "the folder {} was removed or replaced meanwhile, and the frames in it went along; the "
        "same command with --resume makes what is missing",
        folder);
  }
}

void OutputFolders::MakeAndRemember(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  const std::optional<struct stat> status = StatusOf(folder);
  if (error || !status) {
    throw Failure("cannot make the folder {}: {}", folder,
                  error ? error.message() : "it was removed meanwhile");
  }
  const int pin =
      m_folders.size() < MostPins() ? open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC) : -1;
  m_folders[folder] = {status->st_dev, status->st_ino, pin};
}

}  // namespace Korvex2::Tool
