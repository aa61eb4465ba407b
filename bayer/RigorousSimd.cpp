#include "Rigorous.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RigorousSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "Rigorous-inl.h"
#include "simd/TargetTable.h"

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(rigorousFunctions);

BlockFunctions rigorousSimd(Target target) {
  return KORVEX2_FOR_TARGET(rigorousFunctions, target)();
}

}  // namespace Korvex2::Bayer
#endif
