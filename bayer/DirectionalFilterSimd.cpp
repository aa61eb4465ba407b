#include "DirectionalFilter.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "DirectionalFilterSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "DirectionalFilter-inl.h"
#include "simd/DispatchTable.h"

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(DirectionalFilterFunctions);

BlockFunctions DirectionalFilterSimd(InstructionSet set) {
  return KORVEX2_FOR_INSTRUCTION_SET(DirectionalFilterFunctions, set)();
}

}  // namespace Korvex2::Bayer
#endif
