#include "batch/FrameList.h"

#include <fmt/format.h>
#include <glob.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <limits>
#include <string_view>
#include <utility>

#include "io/Containers.h"
#include "io/File.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

namespace fs = std::filesystem;

bool IsDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

std::string_view TakeNumber(std::string_view& text) {
  const auto* end = std::ranges::find_if_not(text, IsDigit);
  std::string_view number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(number.size());
  while (number.size() > 1 && number.front() == '0') {
    number.remove_prefix(1);
  }
  return number;
}

// frame2 comes before frame10.
bool ComesBefore(const std::string& left, const std::string& right) {
  std::string_view a = left;
  std::string_view b = right;
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      const std::string_view x = TakeNumber(a);
      const std::string_view y = TakeNumber(b);
      if (x != y) {
        return x.size() != y.size() ? x.size() < y.size() : x < y;
      }
    } else if (a.front() != b.front()) {
      return a.front() < b.front();
    } else {
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
  }
  return a.empty() != b.empty() ? a.empty() : left < right;
}

// Links that lead nowhere count as files, which fail when they are read: pictures are missing.
bool MayBeFile(const fs::directory_entry& entry) {
  std::error_code error;
  const fs::file_status status = entry.status(error);
  return fs::is_regular_file(status) || !fs::exists(status);
}

std::vector<std::string> FilesIn(const std::string& folder) {
  std::error_code error;
  const fs::directory_iterator entries(folder, error);
  if (error) {
    throw Failure("cannot read the folder {}: {}", folder, error.message());
  }
  std::vector<std::string> files;
  for (const fs::directory_entry& entry : entries) {
    const std::string name = entry.path().filename().string();
    if (name.front() != '.' && HasContainer(name) && MayBeFile(entry)) {
      files.push_back(entry.path().string());
    }
  }
  if (files.empty()) {
    throw Failure("the folder {} holds no file of a known kind", folder);
  }
  std::ranges::sort(files, ComesBefore);
  return files;
}

std::vector<std::string> FilesLike(const std::string& pattern) {
  glob_t found{};
  const int result = glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found);
  std::vector<std::string> files(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  globfree(&found);
  if (result != 0 || files.empty()) {
    throw Failure("no file is like {}", pattern);
  }
  std::ranges::sort(files, ComesBefore);
  return files;
}

bool IsFolder(const std::string& input) {
  std::error_code isNone;
  return fs::is_directory(input, isNone);
}

bool IsGlob(const std::string& input) {
  std::error_code isNone;
  return input.find_first_of("*?[") != std::string::npos && !fs::exists(input, isNone);
}

std::vector<std::string> Expand(const std::string& input) {
  if (IsFolder(input)) {
    return FilesIn(input);
  }
  if (IsGlob(input)) {
    return FilesLike(input);
  }
  return {input};
}

constexpr std::uint64_t kEndless = std::numeric_limits<std::uint64_t>::max();

std::uint64_t Sum(std::uint64_t a, std::uint64_t b) {
  return a > kEndless - b ? kEndless : a + b;
}

std::uint64_t Product(std::uint64_t a, std::uint64_t b) {
  return b != 0 && a > kEndless / b ? kEndless : a * b;
}

}  // namespace

std::uint64_t FrameLayout::BeginOf(std::uint64_t number) const {
  return Sum(headerBytes, Product(number, frameBytes));
}

bool NamesMany(const std::string& input) {
  return IsFolder(input) || IsGlob(input);
}

std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs) {
  std::vector<std::string> files;
  for (const std::string& input : inputs) {
    std::ranges::move(Expand(input), std::back_inserter(files));
  }
  if (files.size() > 1 && std::ranges::any_of(files, IsStandardStream)) {
    throw UsageFailure("standard input is one input by itself; leave the other ones out");
  }
  return files;
}

FrameList::FrameList(std::vector<std::string> inputs, const FrameLayout& layout)
    : m_files(std::move(inputs)), m_layout(layout) {
  if (HoldsMany(m_files.front()) && IsStandardStream(m_files.front())) {
    m_count = layout.most;
    return;
  }
  std::uint64_t all = 0;
  for (const std::string& file : m_files) {
    m_first.push_back(all);
    all = Sum(all, FramesIn(file));
  }
  const std::uint64_t left = all - std::min(all, layout.skip);
  const std::uint64_t taken = left / layout.every + (left % layout.every != 0 ? 1 : 0);
  m_count = std::min(taken, layout.most.value_or(taken));
}

bool FrameList::HoldsMany(const std::string& path) const {
  return m_layout.backToBack && HasContainer(path) && IsHeaderless(ContainerOf(path));
}

// A file that cannot be looked at counts as one frame, which then fails.
std::uint64_t FrameList::FramesIn(const std::string& path) {
  if (!HoldsMany(path)) {
    m_sizes.push_back(0);
    return 1;
  }
  std::uint64_t size = 0;
  try {
    size = SizeOfFile(path);
  } catch (const Failure&) {
  }
  m_sizes.push_back(size);
  const std::uint64_t bytes = size - std::min(size, m_layout.headerBytes);
  return std::max<std::uint64_t>(
      1, bytes / m_layout.frameBytes + (bytes % m_layout.frameBytes != 0 ? 1 : 0));
}

FramePlace FrameList::operator[](std::uint64_t index) const {
  const std::uint64_t ordinal = Sum(m_layout.skip, Product(index, m_layout.every));
  if (m_first.empty()) {
    return {m_files.front(),
            index,
            ordinal,
            true,
            m_layout.BeginOf(ordinal),
            m_layout.pixelBytes,
            fmt::format("frame {} of standard input", ordinal)};
  }
  const auto file =
      static_cast<std::size_t>(std::ranges::upper_bound(m_first, ordinal) - m_first.begin() - 1);
  const std::string& path = m_files[file];
  if (!HoldsMany(path)) {
    return {path, index, 0, false, 0, 0, path};
  }
  const std::uint64_t number = ordinal - m_first[file];
  const std::uint64_t begin = m_layout.BeginOf(number);
  const std::uint64_t left = m_sizes[file] - std::min(m_sizes[file], begin);
  return {path,
          index,
          number,
          true,
          begin,
          std::min(left, m_layout.pixelBytes),
          fmt::format("frame {} of {}", number, path)};
}

}  // namespace Korvex2::Tool
