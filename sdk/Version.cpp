#include "Korvex2Version.h"

namespace Korvex2 {

const char* GetVersion() noexcept {
  return KORVEX2_VERSION;
}

}  // namespace Korvex2
