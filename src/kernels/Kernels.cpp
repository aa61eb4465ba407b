#include "kernels/Kernels.h"

#include "kernels/scalar/Scalar.h"

namespace Korvex2::Kernels {

Kernel Find(Routine routine) noexcept {
  switch (routine) {
#define KORVEX2_KERNEL(routine, ...) \
  case Routine::routine:             \
    return Scalar::routine;
#include "Routines.def"
    default:
      return nullptr;
  }
}

}  // namespace Korvex2::Kernels
