#include <Korvex2.h>

#include <iostream>

int main() {
  using namespace Korvex2;
  Image mosaic;  // a raw 8-bit frame; yours comes from a camera
  mosaic.SetDimensions(480, 640, 640, PIXEL_FORMAT_RAW8, RGGB);
  mosaic.SetColorProcessing(HQ_LINEAR);

  Image picture;
  const Error error = ImageConverter().Convert(&mosaic, PIXEL_FORMAT_BGRU, &picture);
  std::cout << error << ", " << picture.GetDataSize() << " bytes of BGRA\n";
  return error == VORERROR_OK ? 0 : 1;
}
