#include "CommandLine.h"
#include "io/Temporary.h"

int main(int argc, char** argv) {
  using namespace Korvex2::Tool;
  RemoveUnfinishedFilesWhenStopped();
  return RunCommandLine(argc, argv);
}
