// A packed 12-bit mosaic becomes colour by a method of its own choice.

#include <Korvex2.h>

#include <iostream>

using namespace Korvex2;

namespace {

// A frame as a camera packs it, two samples in three bytes: 0xABC and 0x123, over and over.
Image Grab() {
  Image frame;
  frame.SetDimensions(480, 640, 960, PIXEL_FORMAT_RAW12, RGGB);
  const unsigned char pair[] = {0xAB, 0x3C, 0x12};
  for (unsigned int i = 0; i < frame.GetDataSize(); ++i) {
    frame.GetData()[i] = pair[i % 3];
  }
  return frame;
}

}  // namespace

int main() {
  Image frame = Grab();
  frame.SetColorProcessing(HQ_LINEAR);

  // On its way to colour, RAW12 takes the process default instead of the frame's own method.
  // Convert would not say so.
  const Error warning = CheckConversion(frame, PIXEL_FORMAT_BGR16);
  std::cout << warning << '\n';

  // RAW16 holds the same samples and heeds the method that is set on it.
  ImageConverter converter;
  Image samples;
  Image picture;
  Error error = converter.Convert(&frame, PIXEL_FORMAT_RAW16, &samples);
  if (error == VORERROR_OK) {
    samples.SetColorProcessing(frame.GetColorProcessing());
    error = CheckConversion(samples, PIXEL_FORMAT_BGR16);
  }
  if (error == VORERROR_OK) {
    error = converter.Convert(&samples, PIXEL_FORMAT_BGR16, &picture);
  }
  std::cout << error << ", " << picture.GetCols() << " x " << picture.GetRows() << " pixels of "
            << picture.GetBitsPerPixel() << " bits\n";
  return error == VORERROR_OK ? 0 : 1;
}
