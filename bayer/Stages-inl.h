/// The stages of a method at work: the rows of their planes, and the passes over a block. What is
/// declared stands in Stages.h. See FloatRows-inl.h for how this is compiled.

#if defined(KORVEX2_BAYER_STAGES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_BAYER_STAGES_INL_H_
#undef KORVEX2_BAYER_STAGES_INL_H_
#else
#define KORVEX2_BAYER_STAGES_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "FloatRows-inl.h"
#include "Method.h"
#include "Stages.h"

KORVEX2_BAYER_BEGIN_TARGET_CODE

// --- Rows that a stage reads.

// An element for every column.
template <typename T, int kLeft, int kRight>
class WholeRow {
 public:
  explicit WholeRow(const T* row) : m_row(row) {}
  T operator[](int x) const { return m_row[x]; }
  T operator()(int x, ColumnWithinReach<kLeft, kRight> offset) const {
    return m_row[x + offset.value];
  }

  // From column 0 on.
  const T* Start() const { return m_row; }

 private:
  const T* m_row;
};

// What a row holds to the left and to the right of every other column.
class BesideRow {
 public:
  BesideRow(const float* left, const float* right) : m_left(left), m_right(right) {}
  float Left(int i) const { return m_left[i]; }
  float Right(int i) const { return m_right[i]; }

 private:
  const float* m_left;
  const float* m_right;
};

// An element for every other column; element i is that of column 2 * i or 2 * i + 1.
template <int kLeft, int kRight>
class HalfRow {
 public:
  explicit HalfRow(const float* row) : m_row(row) {}
  float operator[](int i) const { return m_row[i]; }

  // About the columns of a parity, none of which this half holds.
  BesideRow Beside(int parity) const {
    static_assert(kLeft >= 1 && kRight >= 1, "StageReadsAColumnBeyondItsReach");
    return {m_row + parity - 1, m_row + parity};
  }

 private:
  const float* m_row;
};

// Both halves.
template <int kLeft, int kRight>
class HalvesRow {
 public:
  HalvesRow(const float* even, const float* odd) : m_even(even), m_odd(odd) {}
  HalfRow<kLeft, kRight> Of(int parity) const {
    return HalfRow<kLeft, kRight>(parity == 0 ? m_even : m_odd);
  }
  // About the columns of a parity.
  BesideRow Beside(int parity) const { return Of(1 - parity).Beside(parity); }

 private:
  const float* m_even;
  const float* m_odd;
};

// --- Rows that a stage writes.

// kName tells rows apart, so that none is taken for another.
template <auto kName, typename T>
class OutRow {
 public:
  using Element = T;
  explicit OutRow(T* row) : m_row(row) {}
  T& operator[](int x) const { return m_row[x]; }

  // From column 0 on.
  T* Start() const { return m_row; }

 private:
  T* m_row;
};

struct HalfName {
  int plane;
  int parity;
};

template <int kPlane>
struct OutHalves {
  OutRow<HalfName{kPlane, 0}, float> even;
  OutRow<HalfName{kPlane, 1}, float> odd;
};

// The one loop of all stages. Compilers heed __restrict on parameters only, so what is written
// comes as such; it overlaps nothing that is read, and the loop becomes vectors without asking.
template <typename... Rows, typename Body>
[[gnu::flatten]] void LoopOverColumns(Columns c, const Body& body,
                                      typename Rows::Element* __restrict... starts) {
  for (int x = c.begin; x < c.end; ++x) body(x, Rows(starts)...);
}

// Calls body(x, rows...) for each of the columns, which may be places of halves as well.
template <typename Body, typename... Rows>
void ForColumns(Columns c, const Body& body, Rows... rows) {
  LoopOverColumns<Rows...>(c, body, rows.Start()...);
}

// --- The planes of a block.

template <typename Declared, typename Sample>
class Planes {
  static constexpr auto& kPlan = Declared::kPlan;

 public:
  explicit Planes(const Block<Sample>& block)
      : m_block(block),
        m_cols(kPlan.RoundedUp(block.cols, kPlan.kColumnStep)),
        m_stride(kPlan.Stride(block.cols)) {
    auto* next = static_cast<unsigned char*>(block.scratch);
    unsigned char** starts = m_starts;
    for (const Plane& plane : kPlan.planes) {
      const int rows = kPlan.RowsOf(plane.plane);
      const std::ptrdiff_t bytes = BytesPerColumn(plane.elements, sizeof(Sample)) * m_stride;
      const int before = kPlan.BytesBeforeBlock(plane.elements, sizeof(Sample));
      for (int i = 0; i < 2 * rows; ++i) *starts++ = next + before + i % rows * bytes;
      next += rows * bytes;
    }
  }

  const Block<Sample>& GetBlock() const { return m_block; }
  // Those of the block, in whole steps.
  int GetCols() const { return m_cols; }

  // Where the ring of a plane has row y, and with it the rows that follow: row y takes the place
  // of the row that its readers are done with.
  template <int kPlane>
  unsigned char* const* StartsFrom(int y) const {
    constexpr unsigned kRows = kPlan.RowsOf(kPlane);
    constexpr int kFirst = 2 * kPlan.RowsBefore(kPlane);
    return m_starts + kFirst + static_cast<unsigned>(y + kPlan.margin.above) % kRows;
  }

  // The row that starts there, as a stage writes it.
  template <int kPlane>
  auto Out(unsigned char* start) const {
    constexpr Elements kElements = kPlan.ElementsOf(kPlane);
    if constexpr (kElements == Elements::kSums) {
      return OutRow<kPlane, SumOf<Sample>>(reinterpret_cast<SumOf<Sample>*>(start));
    } else if constexpr (kElements == Elements::kHalves) {
      auto* const even = reinterpret_cast<float*>(start);
      return OutHalves<kPlane>{OutRow<HalfName{kPlane, 0}, float>(even),
                               OutRow<HalfName{kPlane, 1}, float>(even + m_stride / 2)};
    } else {
      return OutRow<kPlane, float>(reinterpret_cast<float*>(start));
    }
  }

  // The same as a stage reads it.
  template <int kPlane, int kLeft, int kRight>
  auto In(unsigned char* start) const {
    constexpr Elements kElements = kPlan.ElementsOf(kPlane);
    const auto row = Out<kPlane>(start);
    if constexpr (kElements == Elements::kHalf) {
      return HalfRow<kLeft, kRight>(row.Start());
    } else if constexpr (kElements == Elements::kHalves) {
      return HalvesRow<kLeft, kRight>(row.even.Start(), row.odd.Start());
    } else {
      return WholeRow<typename decltype(row)::Element, kLeft, kRight>(row.Start());
    }
  }

 private:
  const Block<Sample>& m_block;
  const int m_cols;
  const std::ptrdiff_t m_stride;
  // Column 0 of all rows of all rings, each ring twice, so that no window reaches around its end.
  unsigned char* m_starts[2 * kPlan.RowsBefore(kPlan.planes.size())];
};

// --- Stages at work.

// A stage at the row that it computes.
template <typename Declared, int kStageNumber, typename SampleType>
struct StageAt {
  using Sample = SampleType;
  static constexpr int kStage = kStageNumber;
  static constexpr auto& kPlan = Declared::kPlan;

  const Planes<Declared, Sample>& planes;
  int y;

  const Block<Sample>& GetBlock() const { return planes.GetBlock(); }

  // The columns to compute: whole vectors, and at least as many beyond the block as are looked at.
  // Those farthest out come from columns that mean nothing and mean nothing themselves.
  Columns GetColumns() const {
    constexpr Reach kAround = kPlan.around[kStage];
    constexpr int kStep = kPlan.kColumnStep;
    return {-kPlan.RoundedUp(kAround.left, kStep),
            planes.GetCols() + kPlan.RoundedUp(kAround.right, kStep)};
  }
  // The same as places of halves.
  Columns GetPlaces() const { return {GetColumns().begin / 2, GetColumns().end / 2}; }
};

// The rows of a plane about the one that a stage computes: window[-1] is the row above.
template <typename Row, int kAbove, int kBelow>
struct Window {
  const Row& operator[](RowWithinReach<kAbove, kBelow> offset) const {
    return rows[kAbove + offset.value];
  }

  Row rows[kAbove + 1 + kBelow];
};

template <int kPlane, typename At, int... kIndex>
auto WindowAt(const At& at, std::integer_sequence<int, kIndex...>) {
  constexpr Reach kReach = At::kPlan.ReachOf(At::kStage, kPlane);
  const int top = at.y - kReach.above;
  if constexpr (At::kPlan.ElementsOf(kPlane) == Elements::kSamples) {
    using Row = WholeRow<typename At::Sample, kReach.left, kReach.right>;
    return Window<Row, kReach.above, kReach.below>{Row(at.GetBlock().mosaic[top + kIndex])...};
  } else {
    unsigned char* const* const starts = at.planes.template StartsFrom<kPlane>(top);
    using Row = decltype(at.planes.template In<kPlane, kReach.left, kReach.right>(*starts));
    return Window<Row, kReach.above, kReach.below>{
        at.planes.template In<kPlane, kReach.left, kReach.right>(starts[kIndex])...};
  }
}

// The rows of a plane that the stage reads.
template <int kPlane, typename At>
auto Reads(const At& at) {
  constexpr Reach kReach = At::kPlan.ReachOf(At::kStage, kPlane);
  return WindowAt<kPlane>(at, std::make_integer_sequence<int, kReach.above + 1 + kReach.below>());
}

// The row of a plane that the stage writes.
template <int kPlane, typename At>
auto Writes(const At& at) {
  static_assert(At::kPlan.Writes(At::kStage, kPlane), "StageWritesAPlaneThatItDoesNotDeclare");
  return at.planes.template Out<kPlane>(*at.planes.template StartsFrom<kPlane>(at.y));
}

template <typename Method, typename Declared, typename Sample, int kStage>
void RunStage(const Planes<Declared, Sample>& planes, int last) {
  constexpr Reach kAround = Declared::kPlan.around[kStage];
  const int y = last - Declared::kPlan.lag[kStage];
  if (-kAround.above <= y && y < planes.GetBlock().rows + kAround.below) {
    Method::Compute(StageAt<Declared, kStage, Sample>{planes, y});
  }
}

template <typename Method, typename Declared, typename Sample, int... kStage>
void RunPass(const Planes<Declared, Sample>& planes, int last,
             std::integer_sequence<int, kStage...>) {
  (RunStage<Method, Declared, Sample, kStage>(planes, last), ...);
}

// Computes a block: Method::Compute(at) computes a row of a stage, and is overloaded for each.
template <typename Method, typename Declared, typename Sample>
void RunStages(const Block<Sample>& block) {
  constexpr Reach kMargin = Declared::kPlan.margin;
  constexpr auto kStages = static_cast<int>(Declared::kPlan.stages.size());
  const Planes<Declared, Sample> planes(block);
  for (int last = -kMargin.above; last < block.rows + kMargin.below; ++last) {
    RunPass<Method>(planes, last, std::make_integer_sequence<int, kStages>());
  }
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
