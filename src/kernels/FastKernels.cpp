// The vector kernels of the instruction set in use, looked up once for each set.

#include <algorithm>

#include "kernels/Kernels.h"
#include "kernels/vector/Vector.h"
#include "simd/InstructionSet.h"

namespace Korvex2::Kernels {
namespace {

using Simd::InstructionSet;

FastKernel Find([[maybe_unused]] InstructionSet set, [[maybe_unused]] Routine routine) {
#if KORVEX2_WITH_HIGHWAY
  if (set != InstructionSet::Plain) {
    for (const auto family : {Vector::Moves, Vector::Packed12, Vector::Encodes, Vector::Decodes}) {
      if (const FastKernel kernel = family(set, routine)) {
        return kernel;
      }
    }
  }
#endif
  return nullptr;
}

constexpr auto kRoutines = static_cast<std::size_t>(Routine::Count);

struct Table {
  InstructionSet set = InstructionSet::Plain;
  FastKernel kernels[kRoutines] = {};  // by the value of the routine
};

// Arrays of fixed size: the first conversion of a process may come when there is no memory.
struct Tables {
  Table tables[Simd::kMostInstructionSets];
  std::size_t count = 0;

  Tables() noexcept {
    for (const InstructionSet set : Simd::AvailableInstructionSets()) {
      Table& table = tables[count++];
      table.set = set;
      for (std::size_t routine = 0; routine < kRoutines; ++routine) {
        table.kernels[routine] = Find(set, static_cast<Routine>(routine));
      }
    }
  }
};

}  // namespace

FastKernel FindFast(Routine routine) noexcept {
  static const Tables all;
  const Table* end = all.tables + all.count;
  const Table* table = std::find_if(
      all.tables, end,
      [active = Simd::ActiveInstructionSet()](const Table& t) { return t.set == active; });
  return table == end ? nullptr : table->kernels[static_cast<std::size_t>(routine)];
}

}  // namespace Korvex2::Kernels
