#pragma once

/// A folder that is gone with the process, and files in it.

#include <span>
#include <string>
#include <vector>

#include "Fuzz.h"

namespace Korvex2::Fuzz {

class Folder {
 public:
  Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder();

  const std::string& Path() const { return m_path; }
  std::string Path(std::string_view name) const { return m_path + '/' + std::string(name); }

  void Write(std::string_view name, std::span<const std::uint8_t> bytes) const;
  Bytes Read(std::string_view name) const;
  void Remove(std::string_view name) const;

  /// Names, sorted.
  std::vector<std::string> Names() const;

 private:
  std::string m_path;
};

}  // namespace Korvex2::Fuzz
