/// What the compiler derives from declared stages, and stages at work. What it refuses to compile
/// stands in stages/.

#include "Stages-inl.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "WeightedDirectionalStages.h"

namespace Korvex2::Bayer::Plain {
namespace {

// Reaches that differ towards each side.
struct Lopsided {
  enum PlaneNumber { kMosaic, kFirst, kSecond };
  static constexpr Plane kPlanes[] = {
      {kMosaic, Elements::kSamples}, {kFirst, Elements::kFloats}, {kSecond, Elements::kFloats}};

  enum StageNumber { kWriteFirst, kWriteSecond, kWritePicture };
  static constexpr Stage kStages[] = {
      {kWriteFirst, {kFirst}, {{kMosaic, {1, 2, 3, 1}}}},
      {kWriteSecond, {kSecond}, {{kFirst, {2, 0, 0, 4}}}},
      {kWritePicture, {}, {{kFirst, {3, 1, 0, 0}}, {kSecond, {0, 1, 2, 0}}}},
  };
  static constexpr Plan kPlan{kPlanes, kStages};
};

TEST(Stages, ReachesAddUpFromThePictureBackwards) {
  constexpr auto& kPlan = Lopsided::kPlan;
  EXPECT_EQ(kPlan.around[Lopsided::kWritePicture], Reach{});
  EXPECT_EQ(kPlan.around[Lopsided::kWriteSecond], (Reach{0, 1, 2, 0}));
  EXPECT_EQ(kPlan.around[Lopsided::kWriteFirst], (Reach{3, 1, 2, 4}));
  EXPECT_EQ(kPlan.margin, (Reach{4, 3, 5, 5}));
}

TEST(Stages, EachRunsAsLateAsItsReadersAllow) {
  EXPECT_EQ(Lopsided::kPlan.lag, (std::array{2, 2, 3}));
}

TEST(Stages, RingsReachFromTheWriterToTheFarthestReader) {
  EXPECT_EQ(Lopsided::kPlan.rows, (std::array{0, 5, 2}));
}

TEST(Stages, MemoryIsThatOfTheRings) {
  // 100 columns in whole cache lines, 48 before them for 16 that are computed and 4 that are read.
  EXPECT_EQ(Lopsided::kPlan.ColumnsBefore(), 48);
  EXPECT_EQ(Lopsided::kPlan.Stride(100), 128 + 128);
  EXPECT_EQ(Lopsided::kPlan.ScratchBytes(100, 1), (5 + 2) * sizeof(float) * 256);
}

// Walks through the passes with rings that hold the numbers of their rows.
template <std::size_t kPlanes, std::size_t kStages>
bool HoldsAllThatIsRead(const Plan<kPlanes, kStages>& plan, const std::array<int, kPlanes>& rows) {
  constexpr int kBlockRows = 40;
  constexpr int kBias = 1000;
  std::array<std::vector<int>, kPlanes> rings;
  for (std::size_t p = 0; p < kPlanes; ++p) {
    rings[p].assign(static_cast<std::size_t>(rows[p]), std::numeric_limits<int>::max());
  }
  const auto at = [&](int plane, int y) -> int& {
    auto& ring = rings[static_cast<std::size_t>(plane)];
    return ring[static_cast<std::size_t>(y + kBias) % ring.size()];
  };
  for (int last = -plan.margin.above; last < kBlockRows + plan.margin.below; ++last) {
    for (std::size_t k = 0; k < kStages; ++k) {
      const int y = last - plan.lag[k];
      if (y < -plan.around[k].above || y >= kBlockRows + plan.around[k].below) continue;
      for (const int plane : plan.stages[k].writes) at(plane, y) = y;
      for (const Read& read : plan.stages[k].reads) {
        for (int row = y - read.reach.above; row <= y + read.reach.below; ++row) {
          const bool isMosaic = plan.ElementsOf(read.plane) == Elements::kSamples;
          if (isMosaic ? row > last : at(read.plane, row) != row) return false;
        }
      }
    }
  }
  return true;
}

template <std::size_t kPlanes, std::size_t kStages>
void ExpectTightRings(const Plan<kPlanes, kStages>& plan) {
  EXPECT_TRUE(HoldsAllThatIsRead(plan, plan.rows));
  for (std::size_t p = 0; p < kPlanes; ++p) {
    if (plan.rows[p] < 2) continue;
    auto shorter = plan.rows;
    --shorter[p];
    EXPECT_FALSE(HoldsAllThatIsRead(plan, shorter)) << "plane " << p;
  }
}

TEST(Stages, RingsAreAsLongAsNeededAndNoLonger) {
  ExpectTightRings(Lopsided::kPlan);
  ExpectTightRings(WeightedDirectionalStages::kPlan);
}

using Picture = OutRow<-1, std::uint16_t>;

struct LopsidedAtWork : Lopsided {
  template <int kStage>
  using At = StageAt<Lopsided, kStage, std::uint16_t>;

  static void Compute(const At<kWriteFirst>& at) {
    const auto m = Reads<kMosaic>(at);
    const auto first = [m](int x, OutRow<int{kFirst}, float> out) {
      out[x] = static_cast<float>(m[-1](x, -3) + 2 * m[2](x, 1));
    };
    ForColumns(at.GetColumns(), first, Writes<kFirst>(at));
  }
  static void Compute(const At<kWriteSecond>& at) {
    const auto first = Reads<kFirst>(at);
    const auto second = [first](int x, OutRow<int{kSecond}, float> out) {
      out[x] = 3 * first[-2](x, 4) + first[0][x];
    };
    ForColumns(at.GetColumns(), second, Writes<kSecond>(at));
  }
  static void Compute(const At<kWritePicture>& at) {
    const auto first = Reads<kFirst>(at);
    const auto second = Reads<kSecond>(at);
    const auto pixel = [first, second](int x, Picture out) {
      out[x] = static_cast<std::uint16_t>(first[-3][x] + first[1][x] + second[1](x, -2));
    };
    const Block<std::uint16_t>& block = at.GetBlock();
    ForColumns(at.GetColumns(), pixel, Picture(block.red + at.y * block.stride));
  }
};

constexpr int kRows = 30;
constexpr int kCols = 32;
constexpr int kBeside = 64;

int MosaicAt(int y, int x) {
  return ((y + 50) * 37 + (x + 100) * 11) % 101;
}
int FirstAt(int y, int x) {
  return MosaicAt(y - 1, x - 3) + 2 * MosaicAt(y + 2, x + 1);
}
int SecondAt(int y, int x) {
  return 3 * FirstAt(y - 2, x + 4) + FirstAt(y, x);
}
int PictureAt(int y, int x) {
  return FirstAt(y - 3, x) + FirstAt(y + 1, x) + SecondAt(y + 1, x - 2);
}

// Memory that no stage has written yet is no number, and so is the picture that looks at it.
TEST(Stages, ComputeFromRowsThatAreThereAndStayWithinTheirMemory) {
  constexpr Reach kMargin = Lopsided::kPlan.margin;
  constexpr std::size_t kStride = kCols + 2 * kBeside;
  std::vector<std::uint16_t> samples((kRows + kMargin.above + kMargin.below) * kStride);
  std::vector<const std::uint16_t*> table;
  for (int y = -kMargin.above; y < kRows + kMargin.below; ++y) {
    std::uint16_t* const row = samples.data() + table.size() * kStride + kBeside;
    for (int x = -kBeside; x < kCols + kBeside; ++x) {
      row[x] = static_cast<std::uint16_t>(MosaicAt(y, x));
    }
    table.push_back(row);
  }
  const std::size_t floats =
      Lopsided::kPlan.ScratchBytes(kCols, sizeof(std::uint16_t)) / sizeof(float);
  constexpr std::size_t kGuard = 64;
  std::vector<float> scratch(floats + kGuard, std::numeric_limits<float>::quiet_NaN());
  std::vector<std::uint16_t> picture(kRows * kCols);
  const Block<std::uint16_t> block{.rows = kRows,
                                   .cols = kCols,
                                   .redRow = 0,
                                   .redColumn = 0,
                                   .mosaic = table.data() + kMargin.above,
                                   .red = picture.data(),
                                   .green = nullptr,
                                   .blue = nullptr,
                                   .stride = kCols,
                                   .scratch = scratch.data()};
  RunStages<LopsidedAtWork, Lopsided>(block);
  for (int y = 0; y < kRows; ++y) {
    for (int x = 0; x < kCols; ++x) {
      ASSERT_EQ(picture[static_cast<std::size_t>(y * kCols + x)], PictureAt(y, x))
          << "row " << y << " column " << x;
    }
  }
  for (std::size_t i = floats; i < scratch.size(); ++i) EXPECT_TRUE(std::isnan(scratch[i]));
}

}  // namespace
}  // namespace Korvex2::Bayer::Plain
