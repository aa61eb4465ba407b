// Skips every test, aloud, where KORVEX2_CPU asks for an instruction set that this machine lacks:
// the library would run its best one, and the tests would prove nothing of the one that was meant.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>

#include "InstructionSets.h"

namespace Korvex2::Test {
namespace {

class AskedForInstructionSet : public testing::Environment {
  void SetUp() override {
    const char* const asked = std::getenv("KORVEX2_CPU");
    if (asked != nullptr && GetInstructionSet() != std::string_view(asked)) {
      GTEST_SKIP() << asked << " is no instruction set of this machine";
    }
  }
};

[[maybe_unused]] const auto* const kRegistered =
    testing::AddGlobalTestEnvironment(new AskedForInstructionSet);

}  // namespace
}  // namespace Korvex2::Test
