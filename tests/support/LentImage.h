#pragma once

/// Images that test how the converter uses an image: on any memory, counting and failing on demand.

#include <string>
#include <vector>

#include "Image.h"
#include "InternalError.h"

namespace Korvex2::Test {

/// Answers exactly what it is told, on memory that the test holds; records the calls in order.
class LentImage : public Image {
 public:
  LentImage() = default;
  LentImage(unsigned int rowCount, unsigned int colCount, PixelFormat pixelFormat,
            unsigned char* bytes, std::size_t size)
      : rows(rowCount),
        cols(colCount),
        format(pixelFormat),
        data(bytes),
        dataSize(static_cast<unsigned int>(size)) {}

  unsigned int rows = 0;
  unsigned int cols = 0;
  unsigned int stride = 0;
  PixelFormat format = UNSPECIFIED_PIXEL_FORMAT;
  BayerTileFormat tile = NONE;
  ColorProcessingAlgorithm method = DEFAULT;
  unsigned char* data = nullptr;
  unsigned int dataSize = 0;

  /// GetData answers null after so many calls (both forms counted together).
  int dataCallsUntilNull = -1;
  /// SetDimensions refuses with this.
  ErrorType refuseShape = VORERROR_OK;
  /// SetDimensions takes the new shape (on the same memory).
  bool acceptShape = true;
  /// DeepCopy answers this.
  ErrorType copyResult = VORERROR_OK;

  mutable std::vector<std::string> calls;
  mutable int dataCalls = 0;

  Error DeepCopy(const Image*) override {
    calls.emplace_back("DeepCopy");
    if (copyResult == VORERROR_OK) return Error();
    return InternalError(__LINE__, "LentImage.h", __DATE__, __TIME__, copyResult, "No copy.");
  }

  Error SetDimensions(unsigned int newRows, unsigned int newCols, unsigned int newStride,
                      PixelFormat newFormat, BayerTileFormat newTile) override {
    calls.emplace_back("SetDimensions");
    if (refuseShape != VORERROR_OK) {
      return InternalError(__LINE__, "LentImage.h", __DATE__, __TIME__, refuseShape, "No room.");
    }
    if (acceptShape) {
      rows = newRows;
      cols = newCols;
      stride = newStride;
      format = newFormat;
      tile = newTile;
    }
    return Error();
  }

  PixelFormat GetPixelFormat() const override {
    calls.emplace_back("GetPixelFormat");
    return format;
  }
  ColorProcessingAlgorithm GetColorProcessing() const override {
    calls.emplace_back("GetColorProcessing");
    return method;
  }
  unsigned int GetRows() const override { return rows; }
  unsigned int GetCols() const override { return cols; }
  unsigned int GetStride() const override { return stride; }
  unsigned int GetBitsPerPixel() const override { return DetermineBitsPerPixel(format); }
  BayerTileFormat GetBayerTileFormat() const override {
    calls.emplace_back("GetBayerTileFormat");
    return tile;
  }
  unsigned int GetDataSize() const override { return dataSize; }
  void GetDimensions(unsigned int* pRows, unsigned int* pCols, unsigned int* pStride,
                     PixelFormat* pFormat, BayerTileFormat* pTile) const override {
    calls.emplace_back("GetDimensions");
    if (pRows != nullptr) *pRows = rows;
    if (pCols != nullptr) *pCols = cols;
    if (pStride != nullptr) *pStride = stride;
    if (pFormat != nullptr) *pFormat = format;
    if (pTile != nullptr) *pTile = tile;
  }
  unsigned char* GetData() override { return NextData(); }
  const unsigned char* GetData() const override { return NextData(); }

 private:
  unsigned char* NextData() const {
    calls.emplace_back("GetData");
    return dataCallsUntilNull >= 0 && dataCalls++ >= dataCallsUntilNull ? nullptr : data;
  }
};

}  // namespace Korvex2::Test
