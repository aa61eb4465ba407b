// With OpenCV: an Image works on the memory of a cv::Mat, in and out, and no pixel is copied that
// is not converted.

#include <Korvex2.h>

#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

using namespace Korvex2;

namespace {

// An Image on the memory of a matrix, which must outlive it. Rows have to follow each other without
// gaps: a region of a larger matrix is to be cloned first.
Image ImageOn(cv::Mat& matrix, PixelFormat format, BayerTileFormat tile, Error& error) {
  CV_Assert(matrix.isContinuous());
  Image image(matrix.data, matrix.total() * matrix.elemSize());
  error = image.SetDimensions(static_cast<unsigned int>(matrix.rows),
                              static_cast<unsigned int>(matrix.cols),
                              static_cast<unsigned int>(matrix.step), format, tile);
  return image;
}

// A gradient from blue to red, with a white disc.
cv::Mat Scene() {
  cv::Mat scene(480, 640, CV_8UC3);
  for (int x = 0; x < scene.cols; ++x) {
    scene.col(x).setTo(cv::Scalar(255 - x * 2 / 5, 0, x * 2 / 5));
  }
  cv::circle(scene, {320, 240}, 100, cv::Scalar(255, 255, 255), cv::FILLED);
  return scene;
}

// The mosaic of a picture: red at the top left of each tile, blue at its bottom right, green
// elsewhere.
cv::Mat MosaicOf(const cv::Mat& picture) {
  cv::Mat mosaic(picture.size(), CV_8UC1);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const int channel = 2 - (y % 2 + x % 2);  // OpenCV's pixels are blue, green, red
      mosaic.at<unsigned char>(y, x) = picture.at<cv::Vec3b>(y, x)[channel];
    }
  }
  return mosaic;
}

}  // namespace

int main() {
  const cv::Mat scene = Scene();
  cv::Mat mosaic = MosaicOf(scene);
  cv::Mat picture(scene.size(), CV_8UC3);

  Error error;
  Image frame = ImageOn(mosaic, PIXEL_FORMAT_RAW8, RGGB, error);
  frame.SetColorProcessing(DIRECTIONAL_FILTER);
  // The destination is shaped by Convert, within the memory of the matrix.
  Image result(picture.data, picture.total() * picture.elemSize());
  if (error == VORERROR_OK) {
    error = CheckConversion(frame, PIXEL_FORMAT_BGR);
  }
  if (error == VORERROR_OK) {
    error = ImageConverter().Convert(&frame, PIXEL_FORMAT_BGR, &result);
  }
  std::cout << error << ", written into the matrix: " << (result.GetData() == picture.data) << '\n';
  std::cout << "ours:   " << cvRound(cv::PSNR(scene, picture)) << " dB\n";

  // OpenCV names a tile by its second row and column: its BayerBG is RGGB.
  cv::Mat theirs;
  cv::cvtColor(mosaic, theirs, cv::COLOR_BayerBG2BGR);
  std::cout << "OpenCV: " << cvRound(cv::PSNR(scene, theirs)) << " dB\n";
  return error == VORERROR_OK ? 0 : 1;
}
