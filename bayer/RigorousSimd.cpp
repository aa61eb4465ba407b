#include "Rigorous.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RigorousSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "Rigorous-inl.h"
#include "simd/DispatchTable.h"

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(RigorousFunctions);

BlockFunctions RigorousSimd(InstructionSet set) {
  return KORVEX2_FOR_INSTRUCTION_SET(RigorousFunctions, set)();
}

}  // namespace Korvex2::Bayer
#endif
