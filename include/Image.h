#pragma once

/// @file
/// A frame: its shape and its bytes.

#include <cstddef>

#include "Error.h"
#include "Korvex2Defs.h"
#include "Korvex2Export.h"

namespace Korvex2 {

/// A buffer of pixels with rows, columns, stride, pixel format, Bayer tile and colour-processing
/// choice. It either owns its buffer or works on one that the caller lends and keeps alive.
///
/// Memory. The buffer of a shaped image is never null, even with 0 rows or columns, and holds
/// rows x stride bytes at least. One of its own holds also the tightly packed pixels with a begun
/// group completed (PixelFormatInfo::pixelsPerReach: up to 3 pixels past the last), and what no one
/// has written of it since it was shaped reads as zero. A buffer that is lent, or a subclass's,
/// need not: bytes that a conversion would read past it count as zero, bytes that it would write
/// past it are dropped. Of a lent source only the frame is read: rows x stride, or the last group
/// of packed pixels whole.
///
/// Pixels. Conversions take the buffer as one run of rows x columns packed pixels from GetData();
/// the stride is recorded for other readers and never consulted.
///
/// Threads. Distinct images are independent; one image may be read by many threads while none
/// writes. The default colour processing is one atomic value of the process.
///
/// Nothing here throws. A copy that finds no memory, or a source that throws, is an image without
/// a buffer (GetData() is null); use DeepCopy where the reason is wanted.
///
/// Subclasses may keep their bytes elsewhere. They owe the converter rows x stride of them, or as
/// many as GetDataSize() tells if these are more, and GetData() must answer the same pointer until
/// the image is reshaped. What an operation of theirs throws comes out of Convert and DeepCopy,
/// which keep nothing; the destination of Convert is then partly written, that of DeepCopy as it
/// was.
class KORVEX2_API Image {
 public:
  /// No buffer, 0 x 0, UNSPECIFIED_PIXEL_FORMAT, tile NONE, colour processing DEFAULT.
  Image() noexcept;

  /// An unshaped image on the caller's buffer: SetDimensions shapes it within dataSize bytes and
  /// refuses what rows x stride does not fit into. Not owned, never freed; a null buffer makes an
  /// image that owns.
  Image(unsigned char* pData, std::size_t dataSize) noexcept;

  /// Deep copies own their buffer, whoever owned the source's. Colour processing comes along.
  Image(const Image& other) noexcept;
  /// As the copy constructor; a buffer that the caller lent to this image is let go, not written.
  Image& operator=(const Image& other) noexcept;
  /// Moves leave `other` as default-constructed.
  Image(Image&& other) noexcept;
  /// Gives up what this image had, its buffer freed if it was its own.
  Image& operator=(Image&& other) noexcept;

  /// Frees the buffer if it is its own.
  virtual ~Image();

  /// Makes this image a full copy of *pSrc: shape, tile, colour processing and pixels. On the
  /// caller's buffer the bytes are copied into it. Copying an image onto itself changes nothing.
  /// VORERROR_INVALID_PARAMETER for null; otherwise fails as SetDimensions does, leaving this
  /// image as it was.
  virtual Error DeepCopy(const Image* pSrc);

  /// Shapes the image. stride is in bytes and is recorded as given.
  ///
  /// A buffer that is large enough is kept. All of a new buffer reads as zero, and all of a kept
  /// one of our own whose rows, columns, stride or format change. Where none of them changes, the
  /// pixels survive and only what lies past them is zeroed: past the last group of packed pixels,
  /// or past rows x stride where the stride pads the rows. A caller's buffer, whose bytes are the
  /// caller's frame, is not written.
  ///
  /// The image is unchanged by a failure: VORERROR_INVALID_PARAMETER for a shape that, its
  /// last group completed, exceeds 4 GiB - 1,
  /// VORERROR_BUFFER_TOO_SMALL on a caller's buffer, VORERROR_MEMORY_ALLOCATION_FAILED.
  virtual Error SetDimensions(unsigned int rows, unsigned int cols, unsigned int stride,
                              PixelFormat format, BayerTileFormat bayerFormat);

  /// How the bytes are laid out; UNSPECIFIED_PIXEL_FORMAT until shaped.
  virtual PixelFormat GetPixelFormat() const;
  /// What SetColorProcessing recorded; DEFAULT until then.
  virtual ColorProcessingAlgorithm GetColorProcessing() const;
  /// The method by which a conversion of this image, if it is raw, makes colour. Any value is
  /// recorded; the converter refuses the ones that it does not know. Succeeds always.
  virtual Error SetColorProcessing(ColorProcessingAlgorithm method);
  /// Rows of pixels.
  virtual unsigned int GetRows() const;
  /// Pixels of a row.
  virtual unsigned int GetCols() const;
  /// Bytes from one row to the next, as recorded.
  virtual unsigned int GetStride() const;
  /// DetermineBitsPerPixel of the format.
  virtual unsigned int GetBitsPerPixel() const;
  /// The colours of the mosaic's top-left 2x2. Pictures made from a mosaic keep its tile.
  virtual BayerTileFormat GetBayerTileFormat() const;
  /// rows x stride, in bytes.
  virtual unsigned int GetDataSize() const;
  /// The whole shape in one call; a null pointer skips that output.
  virtual void GetDimensions(unsigned int* rows, unsigned int* cols, unsigned int* stride,
                             PixelFormat* format, BayerTileFormat* bayerFormat) const;
  /// The first byte; null for an image without a buffer.
  virtual unsigned char* GetData();
  /// The first byte; null for an image without a buffer.
  virtual const unsigned char* GetData() const;

  /// Whether a shape, its last group completed, stays within 4 GiB - 1, or the failure that
  /// SetDimensions would answer. Allots nothing.
  static Error CheckDimensions(unsigned int rows, unsigned int cols, unsigned int stride,
                               PixelFormat format) noexcept;

  /// Bits per pixel of every format that has a name (422YUV8_JPEG: 16); 0 for any other value.
  static unsigned int DetermineBitsPerPixel(PixelFormat format) noexcept;

  /// What DEFAULT stands for in this process; NEAREST_NEIGHBOR until it is set, the cheapest method
  /// and the one that any mosaic supports.
  static ColorProcessingAlgorithm GetDefaultColorProcessing() noexcept;
  /// As SetColorProcessing, for every image whose own choice is DEFAULT.
  static Error SetDefaultColorProcessing(ColorProcessingAlgorithm method) noexcept;

 private:
  struct Shape {
    unsigned int rows = 0;
    unsigned int cols = 0;
    unsigned int stride = 0;
    PixelFormat format = UNSPECIFIED_PIXEL_FORMAT;
    BayerTileFormat tile = NONE;
  };
  struct Layout;

  Error Reserve(const Shape& shape, const Layout& layout, unsigned char** ppOld) noexcept;
  void Swap(Image& other) noexcept;

  // How many of the `wanted` bytes at `data`, which GetData() answered, a conversion of `pixels`
  // pixels may read or write; the rest it must do without.
  friend class ImageConverter;
  std::size_t Readable(const unsigned char* data, std::size_t wanted) const;
  std::size_t Writable(const unsigned char* data, std::size_t wanted, std::size_t pixels) const;
  std::size_t Told(std::size_t wanted) const;

  Shape m_shape;
  ColorProcessingAlgorithm m_colorProcessing = DEFAULT;
  unsigned char* m_pData = nullptr;    // what GetData answers; null until shaped
  unsigned char* m_pBuffer = nullptr;  // the memory, m_capacity bytes of it
  std::size_t m_capacity = 0;
  bool m_ownsBuffer = true;
};

}  // namespace Korvex2
