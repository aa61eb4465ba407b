#pragma once

/// Looks up a function exported with HWY_EXPORT for an instruction set that the caller names;
/// Highway's own dispatch knows the best set of the machine only. Include after highway.h, use in
/// the HWY_ONCE part of a file.

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

inline std::size_t TableIndex(InstructionSet set) {
  hwy::ChosenTarget chosen;
  chosen.Update(static_cast<std::int64_t>(set));
  return chosen.GetIndex();
}

}  // namespace Korvex2::Simd
#endif
