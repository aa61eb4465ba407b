#include "DirectionalFilter.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "DirectionalFilterSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "DirectionalFilter-inl.h"
#include "simd/TargetTable.h"

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(directionalFilterFunctions);

BlockFunctions directionalFilterSimd(Target target) {
  return KORVEX2_FOR_TARGET(directionalFilterFunctions, target)();
}

}  // namespace Korvex2::Bayer
#endif
