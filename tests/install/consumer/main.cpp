// A client of the installed library: one conversion of each kind, results checked.

#include <Korvex2.h>
#include <vorbayer.h>

#include <cstdio>

int main() {
  Korvex2::Image grey;
  if (grey.SetDimensions(2, 2, 2, Korvex2::PIXEL_FORMAT_MONO8, Korvex2::NONE) !=
      Korvex2::VORERROR_OK) {
    return 1;
  }
  grey.GetData()[0] = 42;

  Korvex2::ImageConverter* const converter = Korvex2::ImageConverter::getInstance();
  Korvex2::Image colour;
  const Korvex2::Error error = converter->Convert(&grey, Korvex2::PIXEL_FORMAT_BGRU, &colour);
  const bool right = error == Korvex2::VORERROR_OK && colour.GetData()[2] == 42 &&
                     colour.GetData()[3] == 255 && colour.GetDataSize() == 16;
  const bool refused = converter->ConvertInPlace(&grey, Korvex2::PIXEL_FORMAT_RGB8) ==
                       Korvex2::VORERROR_NOT_IMPLEMENTED;
  Korvex2::ImageConverter::releaseInstance();

  const bool table = Korvex2::FindPixelFormat("bgru16") != nullptr &&
                     Korvex2::FindRoutine("ConvertRGBToY8") != nullptr;
  const bool engine =
      bayerToColor(BAYER_PIXEL_FORMAT_RAW8, grey.GetData(), 1, 2, BAYER_PIXEL_FORMAT_BGR8,
                   colour.GetData(), BAYER_METHOD_NEAREST_NEIGHBOR, BAYER_PATTERN_RGGB) != beOK;
  std::printf("Korvex2 %s\n", Korvex2::GetVersion());
  return right && refused && table && engine ? 0 : 1;
}
