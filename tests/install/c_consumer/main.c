/* A client in C of the installed demosaic engine: one picture, checked; one refusal. */

#include <stdio.h>
#include <vorbayer.h>

int main(void) {
  const unsigned char mosaic[4] = {200, 100, 100, 50}; /* R G / G B */
  unsigned char picture[12] = {0};
  const BayerError made =
      bayerToColor(BAYER_PIXEL_FORMAT_RAW8, mosaic, 2, 2, BAYER_PIXEL_FORMAT_RGB8, picture,
                   BAYER_METHOD_NEAREST_NEIGHBOR, BAYER_PATTERN_RGGB);
  const BayerError refused =
      bayerToColor(BAYER_PIXEL_FORMAT_RAW8, mosaic, 1, 2, BAYER_PIXEL_FORMAT_RGB8, picture,
                   BAYER_METHOD_NEAREST_NEIGHBOR, BAYER_PATTERN_RGGB);
  int i;
  for (i = 0; i < 12; i += 3) {
    if (picture[i] != 200 || picture[i + 1] != 100 || picture[i + 2] != 50) return 1;
  }
  printf("vorbayer: %d %d\n", (int)made, (int)refused);
  return made == beOK && refused == beODD_ROWS ? 0 : 1;
}
