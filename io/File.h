#pragma once

/// Files: read whole, written beside their place and moved there when complete.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "io/Temporary.h"

namespace Korvex2::Io {

/// A block of memory of exactly `size` bytes, not cleared.
struct Bytes {
  explicit Bytes(std::size_t count) : data(new unsigned char[count]), size(count) {}

  std::unique_ptr<unsigned char[]> data;
  std::size_t size;
};

/// Whether a name means standard input or output: "-", or "png:-" to say what kind of file flows
/// there.
bool IsStandardStream(std::string_view path);

// An image has at most 4 GiB - 1 bytes; the rest leaves room for headers and for text formats.
constexpr std::uint64_t kLargestFile = std::uint64_t{16} << 30;

/// A regular file, a part of one, or standard input; anything else is a Failure. One thread at a
/// time.
class InputFile {
 public:
  /// Of standard input `most` bytes are kept, and one more is asked for to see whether it ends.
  explicit InputFile(const std::string& path, std::uint64_t most = kLargestFile);
  /// `size` bytes from `begin` on, called `name` in messages.
  InputFile(const std::string& path, std::uint64_t begin, std::uint64_t size, std::string name);
  /// What was read elsewhere.
  InputFile(std::string name, Bytes content);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  const std::string& path() const { return m_path; }
  std::uint64_t size() const { return m_size; }
  bool goesOn() const { return m_goesOn; }  ///< standard input, which has more than size() bytes

  /// Fills the first size() bytes of `buffer`.
  void ReadInto(unsigned char* buffer) const;
  /// All bytes, read when they are first asked for and kept.
  const Bytes& Read() const;

 private:
  std::string m_path;
  int m_fd = -1;
  std::uint64_t m_begin = 0;
  std::uint64_t m_size = 0;
  bool m_goesOn = false;
  mutable std::optional<Bytes> m_content;
};

/// The size of a regular file; a Failure for anything else.
std::uint64_t SizeOfFile(const std::string& path);

/// Standard input, `size` bytes of it or as many as are left. A FatalFailure when it cannot be
/// read.
Bytes ReadStandardInput(std::uint64_t size);

/// A file under a temporary name in the folder of `path`, or where a symbolic link there leads.
/// Commit moves it to its name; without that, or when the process is told to stop, it vanishes and
/// what stood at `path` stays. For a standard stream it is standard output, where nothing can be
/// taken back.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  const std::string& path() const { return m_path; }
  std::FILE* stream() { return m_stream; }
  bool empty() const { return m_empty; }  ///< Write has not been called

  void Write(const void* data, std::size_t size);
  /// A FatalFailure when someone removed the file under its temporary name, or the folder.
  void Commit();

 private:
  struct Target;
  OutputFile(const std::string& path, const Target& target);
  void Close();

  std::string m_path;    // as the user called it
  std::string m_target;  // the same, symbolic links followed
  std::optional<TemporaryFile> m_temporary;
  bool m_empty = true;
  std::FILE* m_stream = nullptr;
};

}  // namespace Korvex2::Io
