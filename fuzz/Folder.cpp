#include "Folder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace Korvex2::Fuzz {
namespace fs = std::filesystem;

// In memory, where there is such a folder.
Folder::Folder()
    : m_path((fs::exists("/dev/shm") ? "/dev/shm" : fs::temp_directory_path()) /
             "korvex2-fuzz-XXXXXX") {
  if (mkdtemp(m_path.data()) == nullptr) {
    Fail("cannot make a folder");
  }
}

Folder::~Folder() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

void Folder::Write(std::string_view name, std::span<const std::uint8_t> bytes) const {
  std::ofstream file(Path(name), std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) {
    Fail("cannot write " + Path(name));
  }
}

Bytes Folder::Read(std::string_view name) const {
  std::ifstream file(Path(name), std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

void Folder::Remove(std::string_view name) const {
  fs::remove_all(Path(name));
}

std::vector<std::string> Folder::Names() const {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(m_path)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace Korvex2::Fuzz
