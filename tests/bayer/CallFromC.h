/* bayerToColor() called by a C program. */
#ifndef KORVEX2_TESTS_BAYER_CALL_FROM_C_H
#define KORVEX2_TESTS_BAYER_CALL_FROM_C_H

#include "vorbayer.h"

#ifdef __cplusplus
extern "C" {
#endif

int bayerToColorByNumbers(int inputFormat, const unsigned char* input, int rows, int cols,
                          int outputFormat, unsigned char* output, int method, int pattern);

#ifdef __cplusplus
}
#endif

#endif
