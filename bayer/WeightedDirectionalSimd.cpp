#include "WeightedDirectional.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "WeightedDirectionalSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "WeightedDirectional-inl.h"
#include "simd/DispatchTable.h"

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(WeightedDirectionalFunctions);

BlockFunctions WeightedDirectionalSimd(InstructionSet set) {
  return KORVEX2_FOR_INSTRUCTION_SET(WeightedDirectionalFunctions, set)();
}

}  // namespace Korvex2::Bayer
#endif
