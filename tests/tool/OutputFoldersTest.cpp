// The folders that a batch writes to, which others may take away meanwhile.

#include "batch/OutputFolders.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <filesystem>
#include <string>

#include "io/File.h"
#include "support/TemporaryFolder.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

namespace fs = std::filesystem;

class OutputFoldersOfABatch : public TemporaryFolder {};

TEST_F(OutputFoldersOfABatch, AreMadeOnceAndNeverAgain) {
  OutputFolders folders;
  const std::string file = Path("a/b/out.raw");
  for (int i = 0; i < 2; ++i) {
    folders.Prepare(file);
    folders.RequireAll();
    EXPECT_TRUE(fs::is_directory(Path("a/b")));
  }
  fs::remove(Path("a/b"));
  EXPECT_THROW(folders.Prepare(file), FatalFailure);
  EXPECT_THROW(folders.RequireAll(), FatalFailure);
  EXPECT_FALSE(fs::exists(Path("a/b")));
}

// File systems like to give the number of what was removed to what is made next.
TEST_F(OutputFoldersOfABatch, AreKnownFromOthersOfTheirName) {
  OutputFolders folders;
  const std::string file = Path("a/out.raw");
  folders.Prepare(file);
  for (int i = 0; i < 20; ++i) {
    fs::remove(Path("a"));
    fs::create_directory(Path("a"));
    EXPECT_THROW(folders.Prepare(file), FatalFailure);
  }
}

TEST_F(OutputFoldersOfABatch, CanBeMoreThanAProcessMayOpenFiles) {
  rlimit before;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit few = {300, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  {
    OutputFolders folders;
    for (int i = 0; i < 310; ++i) {
      const std::string file = Path(std::to_string(i) + "/out.raw");
      folders.Prepare(file);
      OutputFile(file).Commit();
    }
    folders.RequireAll();
    fs::remove_all(Path("309"));
    EXPECT_THROW(folders.RequireAll(), FatalFailure);
  }
  setrlimit(RLIMIT_NOFILE, &before);
}

}  // namespace
}  // namespace Korvex2::Tool
