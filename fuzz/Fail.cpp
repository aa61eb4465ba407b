#include <cstdio>
#include <cstdlib>

#include "Fuzz.h"

namespace Korvex2::Fuzz {

void Fail(std::string_view report) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(report.size()), report.data());
  std::abort();
}

}  // namespace Korvex2::Fuzz
