#pragma once

/// Methods as stages: each computes a row of its planes from rows that earlier stages computed. A
/// method declares in two tables which planes there are and what each stage writes and reads, and
/// how far from its own place; the compiler derives from them when each stage runs, how many rows
/// of a plane are kept, and how much memory that takes. Reading farther than declared does not
/// compile. README.md draws a plane with its writer and readers; Stages-inl.h runs the stages.

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <type_traits>

namespace Korvex2::Bayer {

/// What a row of a plane holds.
enum class Elements {
  kSamples,  ///< the mosaic's samples; the block brings them along
  kSums,     ///< a SumOf<Sample> for every column
  kFloats,   ///< a float for every column
  kHalf,     ///< a float for every other column: those with red and blue, or those with green
  kHalves,   ///< a float for every column, those of even columns apart from those of odd ones
};

/// Holds sums of a few dozen samples, and as a float still is exact.
template <typename Sample>
using SumOf = std::conditional_t<sizeof(Sample) == 1, std::int16_t, std::int32_t>;

/// Bytes that a row takes for each of its columns, by the bytes of a sample.
constexpr int BytesPerColumn(Elements elements, int sampleBytes) {
  switch (elements) {
    case Elements::kSamples:
      return 0;
    case Elements::kSums:
      return 2 * sampleBytes;
    case Elements::kFloats:
    case Elements::kHalves:
      return 4;
    case Elements::kHalf:
      return 2;
  }
  return 0;
}

/// Rows and columns about a place, or beyond the edges of a block.
struct Reach {
  int above = 0, below = 0;
  int left = 0, right = 0;

  constexpr bool operator==(const Reach&) const = default;
};

constexpr int Larger(int a, int b) {
  return a > b ? a : b;
}
constexpr Reach Larger(Reach a, Reach b) {
  return {Larger(a.above, b.above), Larger(a.below, b.below), Larger(a.left, b.left),
          Larger(a.right, b.right)};
}
constexpr Reach operator+(Reach a, Reach b) {
  return {a.above + b.above, a.below + b.below, a.left + b.left, a.right + b.right};
}

/// As many items as are given, for tables.
template <typename Item, int kMost>
struct List {
  constexpr List() = default;
  constexpr List(std::initializer_list<Item> given) {
    for (const Item& item : given) items[static_cast<std::size_t>(count++)] = item;
  }
  constexpr const Item* begin() const { return items.data(); }
  constexpr const Item* end() const { return items.data() + count; }

  std::array<Item, kMost> items{};
  int count = 0;
};

/// A row of the table of planes. Rows stand in the order of the numbers of the planes.
struct Plane {
  int plane;
  Elements elements;
};

/// A plane that a stage reads: so many rows and columns about the place that it computes.
struct Read {
  int plane;
  Reach reach;
};

/// A row of the table of stages. Rows stand in the order in which the stages run; a stage that
/// writes no plane writes the picture.
struct Stage {
  int stage;
  List<int, 4> writes;
  List<Read, 12> reads;
};

/// Names of mistakes. The compiler shows them where a table or a stage makes one, because none of
/// these functions can be called while compiling. Where a lambda reads beyond its reach, newer
/// compilers (C++23's P2564) refuse the lambda as an "immediate function" and name its stage.
namespace Mistake {
void TablesDoNotFollowTheirNumbers();
void PlaneIsWrittenTwice();
void PlaneIsWrittenThoughTheBlockBringsIt();
void PlaneIsReadBeforeItIsWritten();
void PlaneIsNeverRead();
void StageReadsAPlaneThatItDoesNotDeclare();
void StageReadsARowBeyondItsReach();
void StageReadsAColumnBeyondItsReach();
void StageWritesAPlaneThatItDoesNotDeclare();
}  // namespace Mistake

/// What follows from the tables of a method.
///
/// Stages run in passes, one for each row of the mosaic, from `margin.above` rows above the block
/// to `margin.below` rows below it. In pass `last` stage k computes row last - lag[k] of its
/// planes, if that row lies within around[k] of the block. Every stage runs as late as those allow
/// that read what it writes, so the last row of all stages is computed in the last pass.
template <std::size_t kPlanes, std::size_t kStages>
struct Plan {
  std::array<Plane, kPlanes> planes{};
  std::array<Stage, kStages> stages{};

  /// How far beyond the block each stage computes.
  std::array<Reach, kStages> around{};
  /// How far beyond the block the mosaic is read.
  Reach margin;
  /// How many rows behind the newest row of the mosaic each stage is.
  std::array<int, kStages> lag{};
  /// How many rows of each plane are kept: its farthest reader looks so far back, plus one.
  std::array<int, kPlanes> rows{};
  /// How far left and right of what it computes a stage may look at most.
  int beside = 0;

  constexpr Plan(const Plane (&planeTable)[kPlanes], const Stage (&stageTable)[kStages]) {
    for (std::size_t p = 0; p < kPlanes; ++p) planes[p] = planeTable[p];
    for (std::size_t k = 0; k < kStages; ++k) stages[k] = stageTable[k];
    Check();
    FindReaches();
    FindRows();
  }

  /// What a stage declares to read of a plane.
  constexpr Reach ReachOf(int stage, int plane) const {
    for (const Read& read : At(stages, stage).reads) {
      if (read.plane == plane) return read.reach;
    }
    Mistake::StageReadsAPlaneThatItDoesNotDeclare();
    return {};
  }

  constexpr bool Writes(int stage, int plane) const {
    for (const int written : At(stages, stage).writes) {
      if (written == plane) return true;
    }
    return false;
  }

  constexpr Elements ElementsOf(int plane) const { return At(planes, plane).elements; }
  constexpr int RowsOf(int plane) const { return At(rows, plane); }

  /// Columns from a row's start to the block's. Column -kColumnStep, or its place in a half,
  /// begins a cache line: 16 more than a multiple of 32.
  constexpr int ColumnsBefore() const {
    return (RoundedUp(margin.left, kColumnStep) + beside + 15) / 32 * 32 + 16;
  }

  /// Columns from one row to the next: a multiple of cache lines, whatever the elements.
  constexpr std::ptrdiff_t Stride(int cols) const {
    constexpr int kApart = 64;
    return RoundedUp(cols, 32) +
           RoundedUp(ColumnsBefore() + RoundedUp(margin.right, kColumnStep) + beside, kApart);
  }

  /// Rows of all planes before `plane`.
  constexpr int RowsBefore(int plane) const {
    int sum = 0;
    for (int p = 0; p < plane; ++p) sum += RowsOf(p);
    return sum;
  }

  /// Bytes from a row's start to the block's column 0.
  constexpr int BytesBeforeBlock(Elements elements, int sampleBytes) const {
    const Elements parts = elements == Elements::kHalves ? Elements::kHalf : elements;
    return ColumnsBefore() * BytesPerColumn(parts, sampleBytes);
  }

  /// Memory for blocks of this width.
  constexpr std::size_t ScratchBytes(int cols, int sampleBytes) const {
    int bytes = 0;  // for each column
    for (std::size_t p = 0; p < kPlanes; ++p) {
      bytes += rows[p] * BytesPerColumn(planes[p].elements, sampleBytes);
    }
    return static_cast<std::size_t>(bytes) * static_cast<std::size_t>(Stride(cols));
  }

  /// Columns are computed in steps of so many.
  static constexpr int kColumnStep = 16;
  static constexpr int RoundedUp(int columns, int step) {
    return (columns + step - 1) / step * step;
  }

 private:
  template <typename Items>
  static constexpr auto& At(Items& items, int index) {
    return items[static_cast<std::size_t>(index)];
  }

  constexpr void Check() const {
    std::array<bool, kPlanes> written{};
    std::array<bool, kPlanes> read{};
    for (std::size_t p = 0; p < kPlanes; ++p) {
      if (planes[p].plane != static_cast<int>(p)) Mistake::TablesDoNotFollowTheirNumbers();
      written[p] = planes[p].elements == Elements::kSamples;
    }
    for (std::size_t k = 0; k < kStages; ++k) {
      if (stages[k].stage != static_cast<int>(k)) Mistake::TablesDoNotFollowTheirNumbers();
      for (const Read& item : stages[k].reads) {
        if (!At(written, item.plane)) Mistake::PlaneIsReadBeforeItIsWritten();
        At(read, item.plane) = true;
      }
      for (const int plane : stages[k].writes) {
        if (ElementsOf(plane) == Elements::kSamples) {
          Mistake::PlaneIsWrittenThoughTheBlockBringsIt();
        }
        if (At(written, plane)) Mistake::PlaneIsWrittenTwice();
        At(written, plane) = true;
      }
    }
    for (const bool isRead : read) {
      if (!isRead) Mistake::PlaneIsNeverRead();
    }
  }

  // From the picture backwards: a stage computes what its readers read in what they compute.
  constexpr void FindReaches() {
    std::array<Reach, kPlanes> needed{};
    for (std::size_t k = kStages; k-- > 0;) {
      for (const int plane : stages[k].writes) around[k] = Larger(around[k], At(needed, plane));
      for (const Read& read : stages[k].reads) {
        Reach& whole = At(needed, read.plane);
        whole = Larger(whole, around[k] + read.reach);
        beside = Larger(beside, Larger(read.reach.left, read.reach.right));
      }
    }
    for (std::size_t p = 0; p < kPlanes; ++p) margin = Larger(margin, needed[p]);
    for (std::size_t k = 0; k < kStages; ++k) lag[k] = margin.below - around[k].below;
  }

  constexpr void FindRows() {
    std::array<int, kPlanes> written{};  // the lag of the writer
    for (std::size_t k = 0; k < kStages; ++k) {
      for (const int plane : stages[k].writes) At(written, plane) = lag[k];
      for (const Read& read : stages[k].reads) {
        int& kept = At(rows, read.plane);
        kept = Larger(kept, lag[k] + read.reach.above - At(written, read.plane) + 1);
      }
    }
    for (std::size_t p = 0; p < kPlanes; ++p) {
      if (planes[p].elements == Elements::kSamples) rows[p] = 0;
    }
  }
};

/// A row about the one that a stage computes: -1 is the one above. Only what is declared compiles.
template <int kAbove, int kBelow>
struct RowWithinReach {
  consteval RowWithinReach(int offset) : value(offset) {
    if (offset < -kAbove || offset > kBelow) Mistake::StageReadsARowBeyondItsReach();
  }
  int value;
};

/// A column about the one that a stage computes: -1 is the one to the left.
template <int kLeft, int kRight>
struct ColumnWithinReach {
  consteval ColumnWithinReach(int offset) : value(offset) {
    if (offset < -kLeft || offset > kRight) Mistake::StageReadsAColumnBeyondItsReach();
  }
  int value;
};

}  // namespace Korvex2::Bayer
