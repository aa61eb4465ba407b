/* The header serves C99 programs. */
#include "vorbayer.h"

int demosaicFromC(const unsigned char* mosaic, unsigned char* picture);

int demosaicFromC(const unsigned char* mosaic, unsigned char* picture) {
  BayerError error = bayerToColor(BAYER_PIXEL_FORMAT_RAW8, mosaic, 2, 2, BAYER_PIXEL_FORMAT_RGB8,
                                  picture, BAYER_METHOD_NEAREST_NEIGHBOR, BAYER_PATTERN_RGGB);
  return error == beOK;
}
