#include "io/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

#include "Failure.h"

namespace Korvex2::Tool {
namespace {

// An image has at most 4 GiB - 1 bytes; the rest leaves room for headers and for text formats.
constexpr std::uint64_t kLargestFile = std::uint64_t{16} << 30;

[[noreturn]] void FailWithErrno(const char* action, const std::string& path) {
  const int reason = errno;
  throw Failure("cannot {} {}: {}", action, path, std::strerror(reason));
}

void RequireRegular(const struct stat& status, const std::string& path) {
  if (S_ISDIR(status.st_mode)) {
    throw Failure("{} is a folder; name a file", path);
  }
  if (!S_ISREG(status.st_mode)) {
    throw Failure("{} is not a regular file; devices and pipes are not supported", path);
  }
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : m_path(path), m_fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
  struct stat status;
  if (m_fd < 0 || fstat(m_fd, &status) != 0) {
    FailWithErrno("read", path);
  }
  try {
    RequireRegular(status, path);
    m_size = static_cast<std::uint64_t>(status.st_size);
    if (m_size > kLargestFile) {
      throw Failure("{} has {} bytes; a frame has at most 4294967295", path, m_size);
    }
  } catch (...) {
    close(m_fd);
    throw;
  }
}

InputFile::~InputFile() {
  close(m_fd);
}

void InputFile::ReadInto(unsigned char* buffer) const {
  for (std::uint64_t done = 0; done < m_size;) {
    const ssize_t count = pread(m_fd, buffer + done, m_size - done, static_cast<off_t>(done));
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      FailWithErrno("read", m_path);
    }
    if (count == 0) {
      throw Failure("{} became shorter while it was read", m_path);
    }
    done += static_cast<std::uint64_t>(count);
  }
}

Bytes InputFile::Read() const {
  Bytes bytes(m_size);
  ReadInto(bytes.data.get());
  return bytes;
}

// A new file has the permissions that the process gives, a replaced one those that it had.
struct OutputFile::Target {
  std::string path;  // symbolic links followed
  std::optional<mode_t> mode;

  static Target Of(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
      return {path, std::nullopt};
    }
    RequireRegular(status, path);
    return {std::filesystem::canonical(path).string(), status.st_mode & 07777};
  }
};

OutputFile::OutputFile(const std::string& path) : OutputFile(path, Target::Of(path)) {}

OutputFile::OutputFile(const std::string& path, const Target& target)
    : m_path(path), m_target(target.path), m_temporary(target.path) {
  const int fd = m_temporary.fd();
  if (fd < 0) {
    FailWithErrno("write", path);
  }
  m_stream = fdopen(fd, "wb");
  if (m_stream == nullptr || (target.mode && fchmod(fd, *target.mode) != 0)) {
    const int reason = errno;
    m_stream == nullptr ? close(fd) : std::fclose(m_stream);
    errno = reason;
    FailWithErrno("write", path);
  }
}

OutputFile::~OutputFile() {
  if (m_stream != nullptr) {
    std::fclose(m_stream);
  }
}

void OutputFile::Write(const void* data, std::size_t size) {
  if (size != 0 && std::fwrite(data, 1, size, m_stream) != size) {
    FailWithErrno("write", m_path);
  }
}

void OutputFile::Close() {
  const bool failed = std::fflush(m_stream) != 0 || std::ferror(m_stream) != 0;
  const int reason = errno;
  const bool closed = std::fclose(std::exchange(m_stream, nullptr)) == 0;
  if (failed) {
    errno = reason;
  }
  if (failed || !closed) {
    FailWithErrno("write", m_path);
  }
}

void OutputFile::Commit() {
  Close();
  if (!m_temporary.MoveTo(m_target)) {
    FailWithErrno("write", m_path);
  }
}

}  // namespace Korvex2::Tool
