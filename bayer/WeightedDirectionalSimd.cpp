#include "WeightedDirectional.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "WeightedDirectionalSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "WeightedDirectional-inl.h"
#include "simd/TargetTable.h"

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(weightedDirectionalFunctions);

BlockFunctions weightedDirectionalSimd(Target target) {
  return KORVEX2_FOR_TARGET(weightedDirectionalFunctions, target)();
}

}  // namespace Korvex2::Bayer
#endif
