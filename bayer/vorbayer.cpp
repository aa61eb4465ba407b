#include "vorbayer.h"

#include "Demosaic.h"

BayerError bayerToColor(BayerPixelFormat inputFormat, const unsigned char* pInput, int rows,
                        int cols, BayerPixelFormat outputFormat, unsigned char* pOutput,
                        BayerMethod method, BayerPattern pattern) {
  using namespace Korvex2::Bayer;
  return demosaic({.inputFormat = inputFormat,
                   .input = pInput,
                   .rows = rows,
                   .cols = cols,
                   .outputFormat = outputFormat,
                   .output = pOutput,
                   .method = method,
                   .pattern = pattern},
                  Settings{});
}
