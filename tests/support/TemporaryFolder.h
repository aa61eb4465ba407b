#pragma once

/// A folder for a test's files, gone after it.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

namespace Korvex2 {

class TemporaryFolder : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "korvex2-test-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    m_folder = name;
  }
  void TearDown() override { std::filesystem::remove_all(m_folder); }

  std::string Path(const std::string& name) const { return (m_folder / name).string(); }

  std::string Write(const std::string& name, std::string_view text) const {
    std::ofstream(Path(name), std::ios::binary) << text;
    return Path(name);
  }
  std::string Read(const std::string& name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }

 private:
  std::filesystem::path m_folder;
};

}  // namespace Korvex2
