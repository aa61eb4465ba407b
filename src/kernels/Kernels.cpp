#include "kernels/Kernels.h"

#include "kernels/scalar/Scalar.h"

namespace Korvex2::Kernels {

Kernel Find(Routine routine) noexcept {
  switch (routine) {
#define KERNEL(routine, ...) \
  case Routine::routine:     \
    return Scalar::routine;
#include "routes/Routines.def"
    default:
      return nullptr;
  }
}

}  // namespace Korvex2::Kernels
