#include "Korvex2Version.h"

#include <gtest/gtest.h>

#include <string>

namespace Korvex2::Test {
namespace {

static_assert(KORVEX2_VERSION >= KORVEX2_MAKE_VERSION(2, 0, 0));
static_assert(KORVEX2_MAKE_VERSION(2, 0, 1) > KORVEX2_MAKE_VERSION(2, 0, 0));
static_assert(KORVEX2_MAKE_VERSION(2, 1, 0) > KORVEX2_MAKE_VERSION(2, 0, 999));
static_assert(KORVEX2_MAKE_VERSION(3, 0, 0) > KORVEX2_MAKE_VERSION(2, 999, 999));
#if KORVEX2_VERSION != \
    KORVEX2_MAKE_VERSION(KORVEX2_VERSION_MAJOR, KORVEX2_VERSION_MINOR, KORVEX2_VERSION_PATCH)
#error "the preprocessor cannot compare versions"
#endif

TEST(Version, OfHeadersAndLibraryIsThatOfTheProject) {
  const std::string headers = std::to_string(KORVEX2_VERSION_MAJOR) + "." +
                              std::to_string(KORVEX2_VERSION_MINOR) + "." +
                              std::to_string(KORVEX2_VERSION_PATCH);
  EXPECT_EQ(headers, KORVEX2_TEST_PROJECT_VERSION);
  EXPECT_EQ(headers, GetVersion());
}

}  // namespace
}  // namespace Korvex2::Test
