// Frames that stay where they are: both images work on buffers of the caller, and no pixel is
// copied that is not converted.

#include <Korvex2.h>

#include <iostream>
#include <vector>

using namespace Korvex2;

int main() {
  // What a driver, a decoder or a display lends. Conversions work in groups of up to four pixels
  // and complete the last one; sizes that are multiples of four leave nothing to complete.
  constexpr unsigned int kRows = 480;
  constexpr unsigned int kCols = 640;
  std::vector<unsigned char> camera(kRows * kCols * 2, 128);  // grey, as UYVY
  std::vector<unsigned char> display(kRows * kCols * 4);

  // Shaping an image on a borrowed buffer keeps the pixels in it.
  Image frame(camera.data(), camera.size());
  Error error = frame.SetDimensions(kRows, kCols, kCols * 2, PIXEL_FORMAT_422YUV8, NONE);

  // Convert shapes the destination within its buffer, or says that it is too small.
  Image picture(display.data(), display.size());
  if (error == VORERROR_OK) {
    error = ImageConverter().Convert(&frame, PIXEL_FORMAT_BGRU, &picture);
  }
  std::cout << error << ", B G R A = " << int{display[0]} << ' ' << int{display[1]} << ' '
            << int{display[2]} << ' ' << int{display[3]} << '\n';
  std::cout << (picture.GetData() == display.data() ? "written into the display's buffer\n"
                                                    : "written elsewhere\n");

  // Sixteen bits per channel take twice the room.
  const Error refusal = ImageConverter().Convert(&frame, PIXEL_FORMAT_BGRU16, &picture);
  std::cout << refusal.GetCause()->GetMessage() << '\n';
  return error == VORERROR_OK ? 0 : 1;
}
