// The converter on a machine of the test's making: linked into an executable that defines
// Utilities::GetSystemInfo itself, which takes the place of the library's.

#include <gtest/gtest.h>

#include "InternalError.h"
#include "Utilities.h"
#include "support/Probe.h"

namespace {

Korvex2::ByteOrder byteOrder = Korvex2::BYTE_ORDER_LITTLE_ENDIAN;
Korvex2::ErrorType answer = Korvex2::VORERROR_OK;
int calls = 0;

}  // namespace

namespace Korvex2 {

Error Utilities::GetSystemInfo(SystemInfo* pSystemInfo) noexcept {
  ++calls;
  pSystemInfo->byteOrder = byteOrder;
  return InternalError(answer);
}

namespace Test {
namespace {

class SystemInfoSeam : public testing::Test {
 protected:
  void SetUp() override {
    byteOrder = BYTE_ORDER_LITTLE_ENDIAN;
    answer = VORERROR_OK;
    calls = 0;
  }
};

/// The word that RAW16 makes of the packed samples 0x12?? and 0xAB??, whose nibbles go by the flag.
unsigned FirstSample() {
  unsigned char packed[] = {0x12, 0xC3, 0xAB};
  Image source(packed, sizeof packed);
  EXPECT_EQ(source.SetDimensions(1, 2, 3, PIXEL_FORMAT_RAW12, RGGB).GetType(), VORERROR_OK);
  Image samples;
  EXPECT_EQ(ImageConverter().Convert(&source, PIXEL_FORMAT_RAW16, &samples).GetType(), VORERROR_OK);
  return samples.GetData()[0] + 256U * samples.GetData()[1];
}

TEST_F(SystemInfoSeam, IsAskedOnceByEachConverter) {
  const Probe first;
  EXPECT_EQ(calls, 1);
  const Probe second;
  EXPECT_EQ(calls, 2);
}

TEST_F(SystemInfoSeam, OfALittleEndianMachineSetsTheFlag) {
  EXPECT_TRUE(Probe().IsLittleEndian());
  EXPECT_EQ(FirstSample(), 0x12C0U);
}

TEST_F(SystemInfoSeam, OfABigEndianMachineClearsTheFlag) {
  byteOrder = BYTE_ORDER_BIG_ENDIAN;
  EXPECT_FALSE(Probe().IsLittleEndian());
  EXPECT_EQ(FirstSample(), 0x1230U);
}

TEST_F(SystemInfoSeam, WhoseCallFailsIsBelievedAllTheSame) {
  answer = VORERROR_FAILED;
  EXPECT_TRUE(Probe().IsLittleEndian());
  byteOrder = BYTE_ORDER_BIG_ENDIAN;
  EXPECT_FALSE(Probe().IsLittleEndian());
}

}  // namespace
}  // namespace Test
}  // namespace Korvex2
