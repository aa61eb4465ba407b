#include "Utilities.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <bit>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <vector>

#include "support/Allocation.h"

namespace Korvex2::Test {
namespace {

static_assert(WINDOWS_X86 == 0 && WINDOWS_X64 == 1 && LINUX_X86 == 2 && LINUX_X64 == 3 &&
              MAC == 4 && UNKNOWN_OS == 5);
static_assert(BYTE_ORDER_LITTLE_ENDIAN == 0 && BYTE_ORDER_BIG_ENDIAN == 1);
static_assert(sizeof(SystemInfo::osDescription) == 512 && sizeof(SystemInfo::reserved) == 64);
static_assert(std::is_standard_layout_v<SystemInfo>);
static_assert(offsetof(SystemInfo, osType) < offsetof(SystemInfo, osDescription) &&
              offsetof(SystemInfo, osDescription) < offsetof(SystemInfo, byteOrder) &&
              offsetof(SystemInfo, byteOrder) < offsetof(SystemInfo, sysMemSize) &&
              offsetof(SystemInfo, sysMemSize) < offsetof(SystemInfo, cpuDescription) &&
              offsetof(SystemInfo, cpuDescription) < offsetof(SystemInfo, numCpuCores) &&
              offsetof(SystemInfo, numCpuCores) < offsetof(SystemInfo, driverList) &&
              offsetof(SystemInfo, driverList) < offsetof(SystemInfo, libraryList) &&
              offsetof(SystemInfo, libraryList) < offsetof(SystemInfo, gpuDescription) &&
              offsetof(SystemInfo, gpuDescription) < offsetof(SystemInfo, screenWidth) &&
              offsetof(SystemInfo, screenWidth) < offsetof(SystemInfo, screenHeight) &&
              offsetof(SystemInfo, screenHeight) < offsetof(SystemInfo, reserved));

void ExpectText(const char (&text)[512]) {
  const void* end = std::memchr(text, 0, sizeof text);
  ASSERT_NE(end, nullptr);
  EXPECT_STRNE(text, "");
}

// The first call of the process, which ctest gives each test.
TEST(SystemInfo, HasTheByteOrderEvenWhereTheCallFails) {
  SystemInfo info;
  std::memset(static_cast<void*>(&info), 0x5A, sizeof info);
  Error error;
  {
    const HeapShortage shortage;
    error = Utilities::GetSystemInfo(&info);
  }
  if (error == VORERROR_OK) GTEST_SKIP() << "Another test of this process has asked before.";
  EXPECT_EQ(error.GetType(), VORERROR_FAILED);
  EXPECT_EQ(info.byteOrder, std::endian::native == std::endian::little ? BYTE_ORDER_LITTLE_ENDIAN
                                                                       : BYTE_ORDER_BIG_ENDIAN);
}

TEST(SystemInfo, IsFilledWholeFromTheRunningMachine) {
  SystemInfo info;
  std::memset(static_cast<void*>(&info), 0x5A, sizeof info);
  EXPECT_EQ(Utilities::GetSystemInfo(&info).GetType(), VORERROR_OK);
  EXPECT_EQ(info.byteOrder, std::endian::native == std::endian::little ? BYTE_ORDER_LITTLE_ENDIAN
                                                                       : BYTE_ORDER_BIG_ENDIAN);
#if defined(__linux__)
  EXPECT_EQ(info.osType, sizeof(void*) == 8 ? LINUX_X64 : LINUX_X86);
#endif
  EXPECT_EQ(info.numCpuCores, static_cast<std::size_t>(sysconf(_SC_NPROCESSORS_ONLN)));
  const auto pages = static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES));
  EXPECT_EQ(info.sysMemSize, pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)));
  ExpectText(info.osDescription);
  ExpectText(info.cpuDescription);
  ExpectText(info.driverList);
  ExpectText(info.libraryList);
  ExpectText(info.gpuDescription);
  EXPECT_LT(info.screenWidth, 1000000U);
  EXPECT_LT(info.screenHeight, 1000000U);
  for (const unsigned int word : info.reserved) EXPECT_EQ(word, 0U);
}

TEST(SystemInfo, IsReadOnce) {
  SystemInfo first;
  ASSERT_EQ(Utilities::GetSystemInfo(&first).GetType(), VORERROR_OK);
  SystemInfo again;
  const std::size_t before = OrdinaryAllocations();
  ASSERT_EQ(Utilities::GetSystemInfo(&again).GetType(), VORERROR_OK);
  EXPECT_EQ(OrdinaryAllocations(), before);
  EXPECT_STREQ(again.libraryList, first.libraryList);
}

TEST(SystemInfo, RefusesNull) {
  EXPECT_EQ(Utilities::GetSystemInfo(nullptr).GetType(), VORERROR_INVALID_PARAMETER);
}

}  // namespace
}  // namespace Korvex2::Test
