#include "ArrayView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ranges>
#include <span>
#include <type_traits>
#include <vector>

#include "PixelFormats.h"

namespace Korvex2::Test {
namespace {

constexpr int kNumbers[] = {3, 1, 4, 1, 5};
constexpr ArrayView<int> kView = kNumbers;

static_assert(kView.size() == 5 && !kView.empty() && kView.data() == kNumbers);
static_assert(kView.front() == 3 && kView.back() == 5 && kView[2] == 4);
static_assert(kView.end() - kView.begin() == 5 && *kView.begin() == 3);
static_assert(ArrayView<int>().empty() && ArrayView<int>().data() == nullptr);
static_assert(ArrayView<int>(kNumbers + 1, 2).back() == 4);

// What a reader of C++20 expects of a view.
static_assert(std::is_convertible_v<ArrayView<int>, std::span<const int>>);
static_assert(std::ranges::contiguous_range<ArrayView<int>>);
static_assert(std::ranges::sized_range<ArrayView<int>>);
static_assert(std::ranges::borrowed_range<ArrayView<int>>);
static_assert(std::is_trivially_copyable_v<ArrayView<int>>);
// Nobody writes through it.
static_assert(!std::is_convertible_v<ArrayView<int>, std::span<int>>);

TEST(ArrayView, WalksItsElementsInOrder) {
  std::vector<int> walked;
  for (const int number : kView) walked.push_back(number);
  EXPECT_EQ(walked, (std::vector<int>{3, 1, 4, 1, 5}));
  EXPECT_EQ(std::ranges::max(kView), 5);
  EXPECT_EQ(std::count(kView.begin(), kView.end(), 1), 2);
}

TEST(ArrayView, OfATableIsASpanOfTheSameRows) {
  const std::span<const PixelFormatInfo> formats = PixelFormats();
  EXPECT_EQ(formats.data(), PixelFormats().data());
  EXPECT_EQ(formats.size(), PixelFormats().size());
}

}  // namespace
}  // namespace Korvex2::Test
