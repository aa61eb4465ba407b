#include "Rigorous.h"

#include "FloatRows.h"
#include "Rigorous-inl.h"

namespace Korvex2::Bayer {
namespace {

std::size_t scratchBytes(int, int cols, int) {
  return floatRowsBytes(kRigorousRows, cols);
}

BlockFunctions functions([[maybe_unused]] Target target) {
#if KORVEX2_WITH_HIGHWAY
  if (target != Target::kPlain) return rigorousSimd(target);
#endif
  return Plain::rigorousFunctions();
}

}  // namespace

const Method kRigorous = {.margin = kRigorousReach,
                          .blockRows = 512,
                          .blockCols = 256,
                          .scratchBytes = scratchBytes,
                          .functions = functions};

}  // namespace Korvex2::Bayer
