#include "Routes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "reference/Kernels.h"
#include "reference/Routes.h"
#include "support/Probe.h"

namespace Korvex2::Test {
namespace {

TEST(Routines, AreThoseOfTheOracleAndNoOthers) {
  EXPECT_EQ(Routines().size(), Reference::Kernels().size() + Reference::Routes().size() + 1);
  EXPECT_EQ(Routines().size(), Probe::Routines().size());
  std::set<std::string_view> names;
  for (const RoutineInfo& info : Routines()) {
    EXPECT_TRUE(names.insert(info.name).second) << info.name;
    EXPECT_EQ(FindRoutine(info.name), &info) << info.name;
  }
  for (const Probe::NamedMember& member : Probe::Routines()) {
    EXPECT_EQ(names.count(member.name), 1U) << member.name;
  }
}

TEST(FindRoutine, KnowsWholeNamesOnly) {
  for (const std::string_view name :
       {"", "None", "SameFormat", "Count", "ConvertRGBToY", "convertrgbtoy8"}) {
    EXPECT_EQ(FindRoutine(name), nullptr) << name;
  }
}

TEST(Routines, KernelsStepAsTheOraclesDo) {
  for (const Reference::KernelRow& kernel : Reference::Kernels()) {
    const RoutineInfo* info = FindRoutine(kernel.name);
    ASSERT_NE(info, nullptr) << kernel.name;
    EXPECT_EQ(info->kind, RoutineInfo::Kind::Kernel) << kernel.name;
    EXPECT_EQ(info->pixelsPerStep, kernel.pixels) << kernel.name;
    EXPECT_EQ(info->sourceBytesPerStep, kernel.sourceBytes) << kernel.name;
    EXPECT_EQ(info->destinationBytesPerStep, kernel.destinationBytes) << kernel.name;
    const bool clears = std::strcmp(kernel.name, "ConvertY12ToY8") == 0;
    const bool checks = std::strcmp(kernel.name, "ConvertYUV444ToRGB") == 0;
    EXPECT_EQ(info->extra, clears   ? RoutineInfo::Extra::ClearsDestination
                           : checks ? RoutineInfo::Extra::ChecksEachPixel
                                    : RoutineInfo::Extra::Plain)
        << kernel.name;
  }
}

TEST(Routines, RoutesAreThoseOfTheOracleRowByRow) {
  for (const Reference::RouteRow& row : Reference::Routes()) {
    const RoutineInfo* info = FindRoutine(row.name);
    ASSERT_NE(info, nullptr) << row.name;
    const bool chain = row.temporary != Reference::UNSPECIFIED;
    EXPECT_EQ(info->kind, chain ? RoutineInfo::Kind::Chain : RoutineInfo::Kind::Wrapper)
        << row.name;
    EXPECT_EQ(info->guard,
              row.ownNullTest ? RoutineInfo::Guard::Guarded : RoutineInfo::Guard::Unguarded)
        << row.name;
    EXPECT_EQ(info->result, row.returns == Reference::RouteRow::Returns::LastStep
                                ? RoutineInfo::Result::LastStep
                                : RoutineInfo::Result::Success)
        << row.name;
    EXPECT_EQ(info->temporary, row.temporary) << row.name;
    EXPECT_EQ(info->firstStep, chain ? FindRoutine(row.first) : nullptr) << row.name;
    ASSERT_NE(info->lastStep, nullptr) << row.name;
    EXPECT_EQ(info->lastStep, FindRoutine(row.last)) << row.name;
  }
}

TEST(FindRoute, AgreesWithTheOracleOnEveryPair) {
  std::vector<Reference::Format> formats{Reference::UNSPECIFIED, 0x12345};
  for (const Reference::FormatRow& row : Reference::Formats()) formats.push_back(row.value);
  int routed = 0;
  for (const Reference::Format source : formats) {
    for (const Reference::Format target : formats) {
      const RoutineInfo* routine =
          FindRoute(static_cast<PixelFormat>(source), static_cast<PixelFormat>(target));
      const std::string pair =
          std::string(Reference::FormatName(source)) + " -> " + Reference::FormatName(target);
      const char* expected = Reference::Dispatch(source, target);
      if (expected == nullptr || *expected == 0) {
        EXPECT_EQ(routine, nullptr) << pair;
      } else {
        ASSERT_NE(routine, nullptr) << pair;
        EXPECT_EQ(routine->name, expected) << pair;
        EXPECT_EQ(routine, FindRoutine(expected)) << pair;
        ++routed;
      }
    }
  }
  EXPECT_EQ(routed, 201);
  RecordProperty("pairs", routed);
}

// The passes of a route by the oracle: its steps, and theirs, down to kernels.
void CollectPasses(const char* name, std::vector<std::string>& passes) {
  const Reference::RouteRow* row = Reference::FindRoute(name);
  if (row == nullptr) {
    passes.emplace_back(name);
    return;
  }
  if (row->first != nullptr) CollectPasses(row->first, passes);
  CollectPasses(row->last, passes);
}

TEST(ExpandRoute, EndsInTheKernelsOfTheOracle) {
  for (const Reference::FormatRow& source : Reference::Formats()) {
    for (const Reference::FormatRow& target : Reference::Formats()) {
      const char* routine = Reference::Dispatch(source.value, target.value);
      std::vector<std::string> expected;
      if (routine != nullptr && *routine != 0) CollectPasses(routine, expected);

      const std::vector<RouteCall> calls = ExpandRoute(static_cast<PixelFormat>(source.value),
                                                       static_cast<PixelFormat>(target.value));
      std::vector<std::string> passes;
      for (const RouteCall& call : calls) {
        if (call.IsPass()) passes.emplace_back(call.routine->name);
      }
      EXPECT_EQ(passes, expected);
      if (!calls.empty()) {
        EXPECT_EQ(calls.front().depth, 0);
        EXPECT_EQ(calls.front().source, static_cast<PixelFormat>(source.value));
        EXPECT_EQ(calls.back().target, static_cast<PixelFormat>(target.value));
      }
    }
  }
}

// Keeps the oracle itself whole: each step of each route exists and no route leads back to itself.
TEST(Oracle, ResolvesEveryRouteToKernels) {
  for (const Reference::RouteRow& row : Reference::Routes()) {
    for (const char* step : {row.first, row.last}) {
      if (step == nullptr) continue;
      EXPECT_TRUE(std::strcmp(step, Reference::kDemosaic) == 0 ||
                  Reference::FindKernel(step) != nullptr || Reference::FindRoute(step) != nullptr)
          << row.name << ": " << step;
    }
  }
}

}  // namespace
}  // namespace Korvex2::Test
