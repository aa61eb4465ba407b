#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "CommandLine.h"
#include "io/Temporary.h"

namespace {

// A file takes the lowest free number, so where a standard stream was closed, messages would go
// into a picture. What is opened here instead can be neither read nor written.
bool HoldStandardStreams() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) < 0 && open("/", O_PATH) != fd) {
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace Korvex2::Tool;
  if (!HoldStandardStreams()) {
    return EXIT_FAILURE;
  }
  Korvex2::Io::RemoveUnfinishedFilesWhenStopped();
  return RunCommandLine(argc, argv);
}
