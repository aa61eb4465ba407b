#include "Korvex2Version.h"

#define TEXT_OF(number) #number
#define TEXT(number) TEXT_OF(number)

namespace Korvex2 {

const char* GetVersion() noexcept {
  return TEXT(KORVEX2_VERSION_MAJOR) "." TEXT(KORVEX2_VERSION_MINOR) "." TEXT(
      KORVEX2_VERSION_PATCH);
}

}  // namespace Korvex2
