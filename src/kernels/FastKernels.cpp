// The vector kernels of the instruction set in use, looked up once for each set.

#include <algorithm>

#include "kernels/Kernels.h"
#include "kernels/simd/Simd.h"
#include "simd/Target.h"

namespace Korvex2::kernels {
namespace {

using Simd::Target;

FastKernel Find([[maybe_unused]] Target target, [[maybe_unused]] Routine routine) {
#if KORVEX2_WITH_HIGHWAY
  if (target != Target::kPlain) {
    for (const auto family : {simd::Moves, simd::Packed12, simd::Encodes, simd::Decodes}) {
      if (const FastKernel kernel = family(target, routine)) {
        return kernel;
      }
    }
  }
#endif
  return nullptr;
}

constexpr auto kRoutines = static_cast<std::size_t>(Routine::Count);

struct Table {
  Target target = Target::kPlain;
  FastKernel kernels[kRoutines] = {};  // by the value of the routine
};

// Arrays of fixed size: the first conversion of a process may come when there is no memory.
struct Tables {
  Table tables[Simd::kMostTargets];
  std::size_t count = 0;

  Tables() noexcept {
    for (const Target target : Simd::availableTargets()) {
      Table& table = tables[count++];
      table.target = target;
      for (std::size_t routine = 0; routine < kRoutines; ++routine) {
        table.kernels[routine] = Find(target, static_cast<Routine>(routine));
      }
    }
  }
};

}  // namespace

FastKernel FindFast(Routine routine) noexcept {
  static const Tables all;
  const Table* end = all.tables + all.count;
  const Table* table =
      std::find_if(all.tables, end,
                   [active = Simd::activeTarget()](const Table& t) { return t.target == active; });
  return table == end ? nullptr : table->kernels[static_cast<std::size_t>(routine)];
}

}  // namespace Korvex2::kernels
