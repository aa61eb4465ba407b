/* A mosaic of the tile RGGB becomes a picture, by the demosaic engine alone. Writes colour.ppm. */

#include <stdio.h>
#include <vorbayer.h>

enum { kRows = 480, kCols = 640 };

static unsigned char mosaic[kRows * kCols];
static unsigned char picture[kRows * kCols * 3];

int main(void) {
  FILE* file;
  BayerError error;
  int row, col;
  for (row = 0; row < kRows; ++row) {
    for (col = 0; col < kCols; ++col) {
      const int red = col * 255 / kCols, green = row * 255 / kRows, blue = 255 - red;
      mosaic[row * kCols + col] = (unsigned char)(row % 2 != col % 2 ? green
                                                  : row % 2 == 0     ? red
                                                                     : blue);
    }
  }

  error = bayerToColor(BAYER_PIXEL_FORMAT_RAW8, mosaic, kRows, kCols, BAYER_PIXEL_FORMAT_RGB8,
                       picture, BAYER_METHOD_RIGOROUS, BAYER_PATTERN_RGGB);
  printf("bayerToColor: %d, centre %d %d %d\n", (int)error, picture[(240 * kCols + 320) * 3],
         picture[(240 * kCols + 320) * 3 + 1], picture[(240 * kCols + 320) * 3 + 2]);
  if (error != beOK) return 1;

  file = fopen("colour.ppm", "wb");
  if (file == NULL) return 1;
  fprintf(file, "P6\n%d %d\n255\n", kCols, kRows);
  fwrite(picture, 1, sizeof(picture), file);
  return fclose(file) == 0 ? 0 : 1;
}
