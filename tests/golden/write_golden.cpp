// Writes the tables of digests anew, for a change that is meant to change bytes: the conversions of
// this machine's byte order and the demosaic methods by the reference, which leaves those in floats
// to the engine's plain loops.

#include <cstdio>
#include <exception>

#include "InstructionSets.h"
#include "golden/Golden.h"

int main() {
  using namespace Korvex2;
  using namespace Korvex2::Test;
  try {
    (void)SetInstructionSet("plain");
    Golden::Write(Golden::ConversionsFile(), Golden::ConversionsByTheReference());
    Golden::Write(Golden::DemosaicingFile(), Golden::DemosaicingByTheReference());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "write_golden: %s\n", error.what());
    return 1;
  }
  return 0;
}
