// Runs whose destination is larger than caches: where it is aligned, vectors are stored past them.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "reference/Kernels.h"
#include "support/Comparison.h"
#include "support/PlainImage.h"
#include "support/Walk.h"

namespace Korvex2::Test {
namespace {

constexpr std::size_t kLong = std::size_t{33} << 20;
constexpr std::align_val_t kLine{64};

struct Release {
  void operator()(std::uint8_t* memory) const { ::operator delete(memory, kLine); }
};
using Memory = std::unique_ptr<std::uint8_t, Release>;

Memory Allot(std::size_t size) {
  return Memory(static_cast<std::uint8_t*>(::operator new(size, kLine)));
}

std::vector<const char*> KernelNames() {
  Walk walk;
  std::vector<const char*> names;
  for (const Reference::KernelRow& kernel : Reference::Kernels()) {
    if (walk.Takes()) names.push_back(kernel.name);
  }
  return names;
}

class LongRuns : public testing::TestWithParam<const char*> {};

TEST_P(LongRuns, EqualThePlainLoopsWhereverTheyLie) {
  const Reference::KernelRow& kernel = *Reference::FindKernel(GetParam());
  const auto steps = static_cast<unsigned>(kLong / kernel.destinationBytes);
  const unsigned pixels = steps * kernel.pixels + 1;
  const std::size_t read = Reference::BytesRead(kernel, pixels);
  const std::size_t written = Reference::BytesWritten(kernel, pixels);
  const Memory source = Allot(read);
  Fill(source.get(), read, Content::Random, 1);
  const Memory expected = Allot(written);
  std::memset(expected.get(), 0xEE, written);
  kernel.loop({source.get(), expected.get(), pixels, true, written});

  const Image from = PlainImage(pixels, source.get(), read);
  const Memory memory = Allot(written + 2);
  for (const std::size_t offset : {std::size_t{0}, std::size_t{1}}) {
    std::uint8_t* const destination = memory.get() + offset;
    std::memset(memory.get(), 0xEE, written + 2);
    Image to = PlainImage(pixels, destination, written);
    ASSERT_EQ(Probe(true).Call(kernel.name, &from, &to).GetType(), VORERROR_OK);
    EXPECT_EQ(std::memcmp(destination, expected.get(), written), 0) << "at " << offset;
    EXPECT_EQ(destination[written], 0xEE) << "at " << offset;
  }
}

INSTANTIATE_TEST_SUITE_P(Kernels, LongRuns, testing::ValuesIn(KernelNames()),
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
}  // namespace Korvex2::Test
