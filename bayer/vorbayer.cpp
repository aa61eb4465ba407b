#include "vorbayer.h"

#include <cstring>

#include "Demosaic.h"

namespace {

// The number behind an enumerator, also where it is none of the enumeration's.
template <typename Enum>
int Number(const Enum& value) {
  static_assert(sizeof(Enum) == sizeof(int));
  int result;
  std::memcpy(&result, &value, sizeof(result));
  return result;
}

}  // namespace

BayerError bayerToColor(BayerPixelFormat inputFormat, const unsigned char* pInput, int rows,
                        int cols, BayerPixelFormat outputFormat, unsigned char* pOutput,
                        BayerMethod method, BayerPattern pattern) {
  using namespace Korvex2::Bayer;
  return Demosaic({.inputFormat = Number(inputFormat),
                   .input = pInput,
                   .rows = rows,
                   .cols = cols,
                   .outputFormat = Number(outputFormat),
                   .output = pOutput,
                   .method = Number(method),
                   .pattern = Number(pattern)},
                  Settings{});
}
