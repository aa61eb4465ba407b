#include "kernels/Kernels.h"

#include "kernels/scalar/Scalar.h"
#include "kernels/simd/Simd.h"

namespace Korvex2::kernels {

Kernel Find(Routine routine) noexcept {
  switch (routine) {
#define KERNEL(routine, ...) \
  case Routine::routine:     \
    return scalar::routine;
#include "routes/Routines.def"
    default:
      return nullptr;
  }
}

FastKernel FindFast(Routine routine) noexcept {
  if (const FastKernel move = simd::Moves(routine)) {
    return move;
  }
  return simd::Colour(routine);
}

}  // namespace Korvex2::kernels
