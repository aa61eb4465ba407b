// Files that change while they are read, and files on their way to their names.

#include "io/File.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "io/Failure.h"
#include "io/Temporary.h"
#include "support/TemporaryFolder.h"

namespace Korvex2::Io {
namespace {

namespace fs = std::filesystem;

class Files : public TemporaryFolder {};

std::string MessageOf(const InputFile& file) {
  try {
    (void)file.Read();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return "no failure";
}

TEST_F(Files, ThatShrinkBeforeTheyAreReadAreAFailure) {
  const std::string path = Write("in.raw", "0123456789");
  const InputFile file(path);
  for (const off_t left : {9, 1, 0}) {
    ASSERT_EQ(truncate(path.c_str(), left), 0);
    EXPECT_EQ(MessageOf(file), path + " became shorter while it was read");
  }
}

TEST_F(Files, ThatGrowAreReadAsTheyWere) {
  const std::string path = Write("in.raw", "0123456789");
  const InputFile file(path);
  std::ofstream(path, std::ios::app) << "more";
  const Bytes& bytes = file.Read();
  EXPECT_EQ(std::string(bytes.data.get(), bytes.data.get() + bytes.size), "0123456789");
}

TEST_F(Files, AreNotThereBeforeTheyAreComplete) {
  {
    OutputFile file(Path("out.raw"));
    file.Write("abc", 3);
    EXPECT_FALSE(fs::exists(Path("out.raw")));
    EXPECT_EQ(Names().size(), 1U);
    file.Commit();
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"out.raw"}));
  EXPECT_EQ(Read("out.raw"), "abc");
}

TEST_F(Files, ThatAreGivenUpLeaveWhatWasThere) {
  Write("out.raw", "old");
  {
    OutputFile file(Path("out.raw"));
    file.Write("new", 3);
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"out.raw"}));
  EXPECT_EQ(Read("out.raw"), "old");
}

TEST_F(Files, ThatAreRemovedBeforeTheyAreCompleteAreAFailure) {
  OutputFile file(Path("out.raw"));
  fs::remove(Path(*Names().begin()));
  EXPECT_THROW(file.Commit(), FatalFailure);
  EXPECT_TRUE(Names().empty());
}

TEST_F(Files, KeepThePermissionsOfWhatTheyReplace) {
  fs::permissions(Write("out.raw", "old"), fs::perms(0640));
  OutputFile file(Path("out.raw"));
  file.Commit();
  EXPECT_EQ(fs::status(Path("out.raw")).permissions(), fs::perms(0640));
}

TEST_F(Files, GiveNobodyTheRightsOfTheirNewOwner) {
  const std::string path = Write("out.raw", "old");
  ASSERT_EQ(chmod(path.c_str(), 06755), 0);
  OutputFile file(path);
  file.Commit();
  EXPECT_EQ(fs::status(path).permissions(), fs::perms(0755));
}

TEST_F(Files, ManyAtOnceFromManyThreadsHaveNamesOfTheirOwn) {
  constexpr int kThreads = 8;
  constexpr int kEach = 50;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([this, t] {
      for (int i = 0; i < kEach; ++i) {
        OutputFile file(Path("out" + std::to_string(i % 2)));  // the same names in every thread
        const std::string text = std::to_string(t);
        file.Write(text.data(), text.size());
        if (i % 3 != 0) file.Commit();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Names(), (std::set<std::string>{"out0", "out1"}));
  EXPECT_EQ(Read("out0").size(), 1U);
}

TEST_F(Files, MoreThanCanBeKeptTrackOfAreRefused) {
  std::vector<std::unique_ptr<OutputFile>> files;
  for (int i = 0; i < TemporaryFile::kMost; ++i) {
    files.push_back(std::make_unique<OutputFile>(Path("out" + std::to_string(i))));
  }
  EXPECT_THROW(OutputFile(Path("one-more")), Failure);
  files.pop_back();
  OutputFile last(Path("one-more"));
  last.Commit();
  files.clear();
  EXPECT_EQ(Names(), (std::set<std::string>{"one-more"}));
}

// A process with threads that write files is told to stop: what is complete stays, the rest is
// gone.
TEST_F(Files, OfManyThreadsAreGoneWhenTheProcessIsStopped) {
  for (int round = 0; round < 20; ++round) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      close(STDERR_FILENO);
      RemoveUnfinishedFilesWhenStopped();
      for (int t = 0; t < 4; ++t) {
        std::thread([this, t] {
          for (int i = 0;; ++i) {
            OutputFile file(Path("out" + std::to_string(t)));
            file.Write("complete", 8);
            if (i % 2 == 0) file.Commit();
          }
        }).detach();
      }
      for (;;) pause();
    }
    usleep(static_cast<useconds_t>(3000 + 700 * round));
    ASSERT_EQ(kill(child, SIGTERM), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
    for (const std::string& name : Names()) {
      ASSERT_EQ(name.size(), 4U) << name << " is left";
      ASSERT_EQ(Read(name), "complete");
    }
  }
}

TEST_F(Files, AreGoneWhenThePipeThatTakesTheMessagesIsBroken) {
  Write("out.raw", "old");
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    int ends[2];
    if (pipe(ends) != 0 || std::signal(SIGPIPE, SIG_DFL) == SIG_ERR) _exit(1);
    close(ends[0]);
    RemoveUnfinishedFilesWhenStopped();
    OutputFile file(Path("out.raw"));
    (void)!write(ends[1], "message", 7);
    _exit(2);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGPIPE) << status;
  EXPECT_EQ(Names(), (std::set<std::string>{"out.raw"}));
  EXPECT_EQ(Read("out.raw"), "old");
}

}  // namespace
}  // namespace Korvex2::Io
