// Writes the tables of digests anew, for a change that is meant to change bytes: the conversions of
// this machine's byte order and the demosaic methods in integers by the reference, those in floats
// by the engine's plain loops.

#include <algorithm>
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
    Golden::Table demosaicing = Golden::DemosaicingByTheEngine();
    std::ranges::copy(Golden::DemosaicingByTheReference(), demosaicing.begin());
    Golden::Write(Golden::DemosaicingFile(), demosaicing);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "write_golden: %s\n", error.what());
    return 1;
  }
  return 0;
}
