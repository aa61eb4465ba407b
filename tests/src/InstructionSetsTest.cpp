#include "InstructionSets.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Korvex2::Test {
namespace {

TEST(InstructionSets, BeginWithPlainAndHoldTheOneInUse) {
  const auto names = InstructionSets();
  ASSERT_FALSE(names.empty());
  EXPECT_EQ(names.front(), "plain");
  EXPECT_NE(std::ranges::find(names, GetInstructionSet()), names.end());
}

TEST(InstructionSets, AreTakenByName) {
  const std::string_view before = GetInstructionSet();
  for (const std::string_view name : InstructionSets()) {
    EXPECT_EQ(SetInstructionSet(name).GetType(), VORERROR_OK);
    EXPECT_EQ(GetInstructionSet(), name);
  }
  EXPECT_EQ(SetInstructionSet(before).GetType(), VORERROR_OK);
}

TEST(InstructionSets, RefuseANameThatTheyDoNotList) {
  const std::string_view before = GetInstructionSet();
  const Error error = SetInstructionSet("SSE99");
  EXPECT_EQ(error.GetType(), VORERROR_NOT_FOUND);
  EXPECT_NE(std::string_view(error.GetMessage()).find("SSE99"), std::string_view::npos);
  EXPECT_EQ(GetInstructionSet(), before);
}

}  // namespace
}  // namespace Korvex2::Test
