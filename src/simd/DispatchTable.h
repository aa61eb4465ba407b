#pragma once

/// Looks up a function exported with HWY_EXPORT for an instruction set that the caller names;
/// Highway's own dispatch knows the best set of the machine only. A file may leave out the better
/// one of two sets where it gains nothing; its function for the other one is found then. Include
/// after highway.h, use in the HWY_ONCE part of a file.

#include "hwy/highway.h"
#include "simd/InstructionSet.h"

// With a single target Highway makes no table.
#if (HWY_TARGETS & (HWY_TARGETS - 1)) == 0
#define KORVEX2_FOR_INSTRUCTION_SET(FUNCTION, SET) \
  (static_cast<void>(SET), &HWY_STATIC_DISPATCH(FUNCTION))
#else
#define KORVEX2_FOR_INSTRUCTION_SET(FUNCTION, SET) \
  (HWY_DISPATCH_TABLE(FUNCTION)[::Korvex2::Simd::TableIndex(SET)])

namespace Korvex2::Simd {

// In each file of its own, as what HWY_TARGETS holds is. The lower bit is the better set.
static inline std::size_t TableIndex(InstructionSet set) {
  const auto bit = static_cast<std::int64_t>(set);
  hwy::ChosenTarget chosen;
  chosen.Update(HWY_TARGETS & -bit);
  return chosen.GetIndex();
}

}  // namespace Korvex2::Simd
#endif
