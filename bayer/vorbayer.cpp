#include "vorbayer.h"

// Knows no method yet, and says so.
BayerError bayerToColor(BayerPixelFormat, const unsigned char*, int, int, BayerPixelFormat,
                        unsigned char*, BayerMethod, BayerPattern) {
  return beFAILED;
}
