// The vector kernels of the instruction set in use, looked up once for each set.

#include <algorithm>
#include <array>
#include <vector>

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

struct Table {
  Target target;
  std::vector<FastKernel> kernels;  // by the value of the routine
};

Table MakeTable(Target target) {
  Table table{target, std::vector<FastKernel>(Routines().size() + 2)};
  for (const RoutineInfo& info : Routines()) {
    table.kernels[static_cast<std::size_t>(info.routine)] = Find(target, info.routine);
  }
  return table;
}

const std::vector<Table>& Tables() {
  static const std::vector<Table> tables = [] {
    std::vector<Table> made;
    for (const Target target : Simd::availableTargets()) {
      made.push_back(MakeTable(target));
    }
    return made;
  }();
  return tables;
}

}  // namespace

FastKernel FindFast(Routine routine) noexcept {
  const auto& tables = Tables();
  const auto table = std::ranges::find(tables, Simd::activeTarget(), &Table::target);
  return table == tables.end() ? nullptr : table->kernels[static_cast<std::size_t>(routine)];
}

}  // namespace Korvex2::kernels
