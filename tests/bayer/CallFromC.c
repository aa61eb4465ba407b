/* The header serves C99 programs, which may pass any number for an enumerator. */
#include "CallFromC.h"

int bayerToColorByNumbers(int inputFormat, const unsigned char* input, int rows, int cols,
                          int outputFormat, unsigned char* output, int method, int pattern) {
  return (int)bayerToColor((BayerPixelFormat)inputFormat, input, rows, cols,
                           (BayerPixelFormat)outputFormat, output, (BayerMethod)method,
                           (BayerPattern)pattern);
}
