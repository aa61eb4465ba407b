#include "Error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "InternalError.h"
#include "support/Allocation.h"

namespace Korvex2::Test {
namespace {

struct NamedType {
  ErrorType type;
  const char* name;
};

#define NAMED(type) \
  { type, #type }
constexpr NamedType kTypes[] = {
    NAMED(VORERROR_UNDEFINED),
    NAMED(VORERROR_OK),
    NAMED(VORERROR_FAILED),
    NAMED(VORERROR_NOT_IMPLEMENTED),
    NAMED(VORERROR_FAILED_BUS_MASTER_CONNECTION),
    NAMED(VORERROR_NOT_CONNECTED),
    NAMED(VORERROR_INIT_FAILED),
    NAMED(VORERROR_NOT_INTITIALIZED),
    NAMED(VORERROR_INVALID_PARAMETER),
    NAMED(VORERROR_INVALID_SETTINGS),
    NAMED(VORERROR_INVALID_BUS_MANAGER),
    NAMED(VORERROR_MEMORY_ALLOCATION_FAILED),
    NAMED(VORERROR_LOW_LEVEL_FAILURE),
    NAMED(VORERROR_NOT_FOUND),
    NAMED(VORERROR_FAILED_GUID),
    NAMED(VORERROR_INVALID_PACKET_SIZE),
    NAMED(VORERROR_INVALID_MODE),
    NAMED(VORERROR_NOT_IN_FORMAT7),
    NAMED(VORERROR_NOT_SUPPORTED),
    NAMED(VORERROR_TIMEOUT),
    NAMED(VORERROR_BUS_MASTER_FAILED),
    NAMED(VORERROR_INVALID_GENERATION),
    NAMED(VORERROR_LUT_FAILED),
    NAMED(VORERROR_IIDC_FAILED),
    NAMED(VORERROR_STROBE_FAILED),
    NAMED(VORERROR_TRIGGER_FAILED),
    NAMED(VORERROR_PROPERTY_FAILED),
    NAMED(VORERROR_PROPERTY_NOT_PRESENT),
    NAMED(VORERROR_REGISTER_FAILED),
    NAMED(VORERROR_READ_REGISTER_FAILED),
    NAMED(VORERROR_WRITE_REGISTER_FAILED),
    NAMED(VORERROR_ISOCH_FAILED),
    NAMED(VORERROR_ISOCH_ALREADY_STARTED),
    NAMED(VORERROR_ISOCH_NOT_STARTED),
    NAMED(VORERROR_ISOCH_START_FAILED),
    NAMED(VORERROR_ISOCH_RETRIEVE_BUFFER_FAILED),
    NAMED(VORERROR_ISOCH_STOP_FAILED),
    NAMED(VORERROR_ISOCH_SYNC_FAILED),
    NAMED(VORERROR_ISOCH_BANDWIDTH_EXCEEDED),
    NAMED(VORERROR_IMAGE_CONVERSION_FAILED),
    NAMED(VORERROR_IMAGE_LIBRARY_FAILURE),
    NAMED(VORERROR_BUFFER_TOO_SMALL),
    NAMED(VORERROR_IMAGE_CONSISTENCY_ERROR),
    NAMED(VORERROR_INCOMPATIBLE_DRIVER),
};
#undef NAMED

static_assert(sizeof(ErrorType) == 4 && VORERROR_FORCE_32BITS == 0x7fffffff);

Error Simple(ErrorType type, const char* message) {
  return InternalError(12, "File.cpp", "Jan  2 2003", "04:05:06", type, "%s", message);
}

Error Nested(const Error& cause, const char* message) {
  return InternalError(34, "Outer.cpp", "Feb  3 2004", "05:06:07", VORERROR_FAILED,
                       InternalError(cause), "%s", message);
}

TEST(ErrorType, RunsConsecutivelyFromMinusOneTo42) {
  ASSERT_EQ(std::size(kTypes), 44U);
  int expected = -1;
  for (const NamedType& named : kTypes) EXPECT_EQ(named.type, expected++) << named.name;
}

TEST(ErrorType, HasANameForEachCode) {
  for (const NamedType& named : kTypes) EXPECT_STREQ(GetErrorTypeName(named.type), named.name);
  EXPECT_STREQ(GetErrorTypeName(static_cast<ErrorType>(43)), "VORERROR_UNKNOWN");
  EXPECT_STREQ(GetErrorTypeName(static_cast<ErrorType>(-2)), "VORERROR_UNKNOWN");
}

TEST(Error, StartsAsSuccess) {
  const Error error;
  EXPECT_EQ(error.GetType(), VORERROR_OK);
  EXPECT_STREQ(error.GetMessage(), "");
  EXPECT_STREQ(error.GetFile(), "");
  EXPECT_STREQ(error.GetDate(), "");
  EXPECT_STREQ(error.GetTime(), "");
  EXPECT_EQ(error.GetLine(), 0);
  EXPECT_EQ(error.GetCause(), nullptr);
  EXPECT_EQ(error.ToString(), "VORERROR_OK");
}

TEST(Error, ComparesWithACode) {
  const Error ok = InternalError(VORERROR_OK);
  EXPECT_FALSE(ok != VORERROR_OK);
  EXPECT_TRUE(ok == VORERROR_OK);
  const Error failed = Simple(VORERROR_TIMEOUT, "late");
  EXPECT_TRUE(failed != VORERROR_OK);
  EXPECT_TRUE(failed != VORERROR_FAILED);
  EXPECT_FALSE(failed != VORERROR_TIMEOUT);
  EXPECT_TRUE(failed == VORERROR_TIMEOUT);
}

TEST(Error, CarriesWhereWhenAndWhy) {
  const Error error = Simple(VORERROR_NOT_FOUND, "nobody there");
  EXPECT_EQ(error.GetType(), VORERROR_NOT_FOUND);
  EXPECT_STREQ(error.GetMessage(), "nobody there");
  EXPECT_STREQ(error.GetFile(), "File.cpp");
  EXPECT_EQ(error.GetLine(), 12);
  EXPECT_STREQ(error.GetDate(), "Jan  2 2003");
  EXPECT_STREQ(error.GetTime(), "04:05:06");
  EXPECT_EQ(error.GetCause(), nullptr);
}

TEST(Error, FormatsItsMessageWhateverTheLength) {
  const std::string longText(5000, 'x');
  const Error error =
      InternalError(1, "f", "d", "t", VORERROR_FAILED, "%d %s %u!", -7, longText.c_str(), 9U);
  EXPECT_EQ(error.GetMessage(), "-7 " + longText + " 9!");
}

TEST(Error, CopiesItsStrings) {
  std::string file = "temporary.cpp";
  std::string date = "date";
  const Error error = InternalError(1, file.c_str(), date.c_str(), "t", VORERROR_FAILED, "message");
  file.assign(file.size(), '?');
  date.assign(date.size(), '?');
  EXPECT_STREQ(error.GetFile(), "temporary.cpp");
  EXPECT_STREQ(error.GetDate(), "date");
}

TEST(Error, SurvivesNullStrings) {
  const Error error = InternalError(1, nullptr, nullptr, nullptr, VORERROR_FAILED, "message");
  EXPECT_STREQ(error.GetFile(), "");
  EXPECT_STREQ(error.GetDate(), "");
  EXPECT_STREQ(error.GetTime(), "");
}

TEST(Error, NestsItsCausesToAnyDepth) {
  const Error inner = Simple(VORERROR_BUFFER_TOO_SMALL, "inner");
  const Error middle = Nested(inner, "middle");
  const Error outer = Nested(middle, "outer");
  ASSERT_NE(outer.GetCause(), nullptr);
  EXPECT_STREQ(outer.GetCause()->GetMessage(), "middle");
  ASSERT_NE(outer.GetCause()->GetCause(), nullptr);
  EXPECT_STREQ(outer.GetCause()->GetCause()->GetMessage(), "inner");
  EXPECT_EQ(outer.GetCause()->GetCause()->GetType(), VORERROR_BUFFER_TOO_SMALL);
  EXPECT_EQ(outer.GetCause()->GetCause()->GetCause(), nullptr);
}

TEST(Error, OutlivesTheErrorsItWasMadeFrom) {
  Error outer;
  {
    const Error inner = Simple(VORERROR_TIMEOUT, "inner");
    outer = Nested(inner, "outer");
  }
  const Error copy = outer;
  outer = Error();
  EXPECT_EQ(outer.GetCause(), nullptr);
  EXPECT_STREQ(copy.GetCause()->GetMessage(), "inner");
}

TEST(Error, RoundTripsThroughTheBuilder) {
  const Error error = Simple(VORERROR_LUT_FAILED, "again");
  const Error again = InternalError(error);
  EXPECT_EQ(again.GetType(), VORERROR_LUT_FAILED);
  EXPECT_STREQ(again.GetMessage(), "again");
  EXPECT_EQ(again.GetLine(), 12);
}

TEST(Error, ReadsAsOneLine) {
  EXPECT_EQ(Simple(VORERROR_FAILED, "It broke.").ToString(), "VORERROR_FAILED: It broke.");
  std::ostringstream stream;
  stream << Nested(Simple(VORERROR_TIMEOUT, "late"), "It broke.");
  EXPECT_EQ(stream.str().find('\n'), std::string::npos);
  EXPECT_EQ(stream.str().find("VORERROR_FAILED: It broke."), 0U);
}

TEST(Error, TracesOneLineForItselfAndForEachCause) {
  const std::string trace =
      Nested(Nested(Simple(VORERROR_TIMEOUT, "inner"), "middle"), "outer").GetTrace();
  std::vector<std::string> lines;
  std::istringstream stream(trace);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  ASSERT_EQ(lines.size(), 3U) << trace;
  const char* const messages[] = {"outer", "middle", "inner"};
  const char* const files[] = {"Outer.cpp", "Outer.cpp", "File.cpp"};
  const char* const numbers[] = {"34", "34", "12"};
  const char* const dates[] = {"Feb  3 2004", "Feb  3 2004", "Jan  2 2003"};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NE(lines[i].find(messages[i]), std::string::npos) << trace;
    EXPECT_NE(lines[i].find(files[i]), std::string::npos) << trace;
    EXPECT_NE(lines[i].find(numbers[i]), std::string::npos) << trace;
    EXPECT_NE(lines[i].find(dates[i]), std::string::npos) << trace;
  }
}

TEST(Error, SuccessCostsNoAllocation) {
  const std::size_t before = OrdinaryAllocations() + AlignedAllocations();
  Error error = InternalError(VORERROR_OK);
  const Error copy = error;
  error = copy;
  EXPECT_TRUE(error == VORERROR_OK);
  EXPECT_EQ(OrdinaryAllocations() + AlignedAllocations(), before);
}

TEST(Error, KeepsItsCodeWhenThereIsNoMemoryForItsTexts) {
  Error error;
  Error outer;
  {
    const HeapShortage shortage;
    error = Simple(VORERROR_TRIGGER_FAILED, "a message too long for any small-string buffer there");
    outer = Nested(error, "outer");
  }
  EXPECT_EQ(error.GetType(), VORERROR_TRIGGER_FAILED);
  EXPECT_STREQ(error.GetMessage(), "");
  EXPECT_EQ(outer.GetType(), VORERROR_FAILED);
}

}  // namespace
}  // namespace Korvex2::Test
