#include "io/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "io/Failure.h"

namespace Korvex2::Io {
namespace {

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

void RequireReadable(std::uint64_t size, const std::string& path) {
  if (size > kLargestFile) {
    throw Failure("{} has {} bytes; a frame has at most 4294967295", path, size);
  }
}

class Descriptor {
 public:
  explicit Descriptor(const std::string& path)
      : m_fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
    if (m_fd < 0 || fstat(m_fd, &m_status) != 0) {
      FailWithErrno("read", path);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (m_fd >= 0) {
      close(m_fd);
    }
  }

  std::uint64_t SizeOfRegular(const std::string& path) const {
    RequireRegular(m_status, path);
    return static_cast<std::uint64_t>(m_status.st_size);
  }
  int Release() { return std::exchange(m_fd, -1); }

 private:
  int m_fd;
  struct stat m_status {};
};

// Of a path where no file is. Opening would make the file that a link leads to.
std::string WhereLinksLead(std::filesystem::path path) {
  constexpr int kMostLinks = 40;  // as many as the system follows
  std::error_code isNone;
  for (int i = 0; i < kMostLinks; ++i) {
    const std::filesystem::path next = std::filesystem::read_symlink(path, isNone);
    if (isNone) {
      break;
    }
    path = path.parent_path() / next;
  }
  return path.string();
}

}  // namespace

bool IsStandardStream(std::string_view path) {
  return path == "-" || path.ends_with(":-");
}

std::uint64_t SizeOfFile(const std::string& path) {
  return Descriptor(path).SizeOfRegular(path);
}

Bytes ReadStandardInput(std::uint64_t size) {
  constexpr std::size_t kStep = std::size_t{1} << 20;
  std::vector<unsigned char> content;
  std::size_t count = 1;
  while (count != 0 && content.size() < size) {
    const std::size_t done = content.size();
    content.resize(done + static_cast<std::size_t>(std::min<std::uint64_t>(size - done, kStep)));
    count = std::fread(content.data() + done, 1, content.size() - done, stdin);
    content.resize(done + count);
  }
  if (std::ferror(stdin) != 0) {
    const int reason = errno;
    throw FatalFailure("cannot read standard input: {}", std::strerror(reason));
  }
  Bytes bytes(content.size());
  std::copy(content.begin(), content.end(), bytes.data.get());
  return bytes;
}

InputFile::InputFile(const std::string& path, std::uint64_t most) : m_path(path) {
  if (IsStandardStream(path)) {
    m_path = "standard input";
    m_content = ReadStandardInput(std::min(most, kLargestFile) + 1);
    RequireReadable(m_content->size, m_path);
    m_size = std::min<std::uint64_t>(m_content->size, most);
    m_goesOn = m_size != m_content->size;
    return;
  }
  Descriptor descriptor(path);
  m_size = descriptor.SizeOfRegular(path);
  RequireReadable(m_size, path);
  m_fd = descriptor.Release();
}

InputFile::InputFile(const std::string& path, std::uint64_t begin, std::uint64_t size,
                     std::string name)
    : m_path(std::move(name)), m_begin(begin), m_size(size) {
  Descriptor descriptor(path);
  descriptor.SizeOfRegular(path);
  RequireReadable(size, m_path);
  m_fd = descriptor.Release();
}

InputFile::InputFile(std::string name, Bytes content)
    : m_path(std::move(name)), m_size(content.size), m_content(std::move(content)) {}

InputFile::~InputFile() {
  if (m_fd >= 0) {
    close(m_fd);
  }
}

void InputFile::ReadInto(unsigned char* buffer) const {
  if (m_content) {
    std::copy_n(m_content->data.get(), m_size, buffer);
    return;
  }
  for (std::uint64_t done = 0; done < m_size;) {
    const ssize_t count =
        pread(m_fd, buffer + done, m_size - done, static_cast<off_t>(m_begin + done));
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

const Bytes& InputFile::Read() const {
  if (!m_content) {
    Bytes bytes(m_size);
    ReadInto(bytes.data.get());
    m_content = std::move(bytes);
  }
  return *m_content;
}

// A new file has the permissions that the process gives, a replaced one those that it had, without
// the bits that would let anyone run it as its new owner.
struct OutputFile::Target {
  std::string path;  // symbolic links followed
  std::optional<mode_t> mode;

  static Target Of(const std::string& path) {
    struct stat status;
    if (IsStandardStream(path)) {
      return {path, std::nullopt};
    }
    if (stat(path.c_str(), &status) != 0) {
      if (errno != ENOENT) {
        FailWithErrno("write", path);
      }
      return {WhereLinksLead(path), std::nullopt};
    }
    RequireRegular(status, path);
    std::error_code isGone;  // since it was looked at
    const std::filesystem::path followed = std::filesystem::canonical(path, isGone);
    if (isGone) {
      return {WhereLinksLead(path), std::nullopt};
    }
    return {followed.string(), status.st_mode & 0777};
  }
};

OutputFile::OutputFile(const std::string& path) : OutputFile(path, Target::Of(path)) {}

OutputFile::OutputFile(const std::string& path, const Target& target)
    : m_path(path), m_target(target.path) {
  if (IsStandardStream(path)) {
    m_path = "standard output";
    m_stream = stdout;
    return;
  }
  m_temporary.emplace(m_target);
  const int fd = m_temporary->fd();
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
  if (m_stream != nullptr && m_stream != stdout) {
    std::fclose(m_stream);
  }
}

void OutputFile::Write(const void* data, std::size_t size) {
  m_empty = false;
  if (size != 0 && std::fwrite(data, 1, size, m_stream) != size) {
    FailWithErrno("write", m_path);
  }
}

void OutputFile::Close() {
  const bool failed = std::fflush(m_stream) != 0 || std::ferror(m_stream) != 0;
  const int reason = errno;
  const bool standard = m_stream == stdout;
  const bool closed = standard || std::fclose(std::exchange(m_stream, nullptr)) == 0;
  if (failed) {
    errno = reason;
  }
  if (failed || !closed) {
    FailWithErrno("write", m_path);
  }
}

void OutputFile::Commit() {
  Close();
  if (!m_temporary || m_temporary->MoveTo(m_target)) {
    return;
  }
  if (errno == ENOENT) {
    throw FatalFailure("cannot write {}: it was removed before it was complete", m_path);
  }
  FailWithErrno("write", m_path);
}

}  // namespace Korvex2::Io
