#pragma once

/// Files: read whole, written beside their place and moved there when complete.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "io/Temporary.h"

namespace Korvex2::Tool {

/// A block of memory of exactly `size` bytes, not cleared.
struct Bytes {
  explicit Bytes(std::size_t count) : data(new unsigned char[count]), size(count) {}

  std::unique_ptr<unsigned char[]> data;
  std::size_t size;
};

/// An opened regular file; anything else is a Failure.
class InputFile {
 public:
  explicit InputFile(const std::string& path);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  const std::string& path() const { return m_path; }
  std::uint64_t size() const { return m_size; }

  /// Fills the first size() bytes of `buffer`.
  void ReadInto(unsigned char* buffer) const;
  Bytes Read() const;

 private:
  std::string m_path;
  int m_fd;
  std::uint64_t m_size = 0;
};

/// A file under a temporary name in the folder of `path`. Commit moves it to its name; without
/// that, or when the process is told to stop, it vanishes and what stood at `path` stays.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  const std::string& path() const { return m_path; }
  std::FILE* stream() { return m_stream; }

  void Write(const void* data, std::size_t size);
  void Commit();

 private:
  struct Target;
  OutputFile(const std::string& path, const Target& target);
  void Close();

  std::string m_path;    // as the user called it
  std::string m_target;  // the same, symbolic links followed
  TemporaryFile m_temporary;
  std::FILE* m_stream = nullptr;
};

}  // namespace Korvex2::Tool
