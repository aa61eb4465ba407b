// What other machines made is what this one makes, on each of its instruction sets.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "InstructionSets.h"
#include "golden/Golden.h"

namespace Korvex2::Test {
namespace {

void ExpectEqual(const Golden::Table& made, const Golden::Table& recorded) {
  ASSERT_EQ(made.size(), recorded.size());
  for (std::size_t i = 0; i < made.size(); ++i) EXPECT_EQ(made[i], recorded[i]);
}

TEST(Golden, TheReferenceMakesTheRecordedConversions) {
  ExpectEqual(Golden::ConversionsByTheReference(), Golden::Read(Golden::ConversionsFile()));
}

TEST(Golden, TheReferenceMakesTheRecordedPictures) {
  const Golden::Table made = Golden::DemosaicingByTheReference();
  ASSERT_EQ(made.size(), 3U * 2 * 8);  // methods, mosaics, colour formats
  Golden::Table recorded = Golden::Read(Golden::DemosaicingFile());
  recorded.resize(made.size());
  ExpectEqual(made, recorded);
}

class GoldenOnEachInstructionSet : public testing::TestWithParam<std::string_view> {
 protected:
  void SetUp() override {
    m_before = GetInstructionSet();
    ASSERT_EQ(SetInstructionSet(GetParam()), VORERROR_OK);
  }
  void TearDown() override { (void)SetInstructionSet(m_before); }

 private:
  std::string_view m_before;
};

TEST_P(GoldenOnEachInstructionSet, TheConverterMakesTheRecordedConversions) {
  ExpectEqual(Golden::ConversionsByTheConverter(), Golden::Read(Golden::ConversionsFile()));
}

TEST_P(GoldenOnEachInstructionSet, TheEngineMakesTheRecordedPictures) {
  ExpectEqual(Golden::DemosaicingByTheEngine(), Golden::Read(Golden::DemosaicingFile()));
}

// All of them, or the one that KORVEX2_CPU asks for.
std::vector<std::string_view> AskedFor() {
  if (std::getenv("KORVEX2_CPU") != nullptr) return {GetInstructionSet()};
  return {InstructionSets().begin(), InstructionSets().end()};
}

INSTANTIATE_TEST_SUITE_P(On, GoldenOnEachInstructionSet, testing::ValuesIn(AskedFor()),
                         [](const auto& param) { return std::string(param.param); });

}  // namespace
}  // namespace Korvex2::Test
