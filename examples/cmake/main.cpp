// A project of its own: a mosaic becomes a picture, written as a PPM file.

#include <Korvex2.h>

#include <fstream>
#include <iostream>

int main() {
  using namespace Korvex2;
  Image mosaic;
  mosaic.SetDimensions(480, 640, 640, PIXEL_FORMAT_RAW8, RGGB);
  mosaic.SetColorProcessing(HQ_LINEAR);
  for (unsigned int i = 0; i < mosaic.GetDataSize(); ++i) {
    mosaic.GetData()[i] = static_cast<unsigned char>(i % 640 * 255 / 639);  // a grey ramp
  }

  Image picture;
  const Error error = ImageConverter().Convert(&mosaic, PIXEL_FORMAT_RGB8, &picture);
  std::ofstream file("picture.ppm", std::ios::binary);
  file << "P6\n" << picture.GetCols() << ' ' << picture.GetRows() << "\n255\n";
  file.write(reinterpret_cast<const char*>(picture.GetData()), picture.GetDataSize());

  std::cout << "Korvex2 " << GetVersion() << ": " << error << ", " << picture.GetCols() << " x "
            << picture.GetRows() << " pixels\n";
  return error == VORERROR_OK && file ? 0 : 1;
}
