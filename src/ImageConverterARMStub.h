#pragma once

/// @file
/// The converter. Beside its source rather than in include/, with Singleton.h: the two are known by
/// their place, and clients find both among the other headers all the same.

#include <cstddef>

#include "Error.h"
#include "Image.h"
#include "Korvex2Defs.h"
#include "Korvex2Export.h"
#include "Singleton.h"
#include "vorbayer.h"

namespace Korvex2 {

struct RoutineInfo;
struct SourceBytes;
struct DestinationBytes;

/// Converts a frame from one pixel format into another, exactly.
///
/// Share one instance through getInstance()/releaseInstance(), or make one: it holds a single flag.
/// Concurrent calls on one converter are safe as long as no two write the same image.
///
/// Colour arithmetic is BT.601 with full range, in double precision, every narrowing truncated
/// toward zero. Widening 8 to 16 bits multiplies by 257; narrowing keeps the high byte.
class KORVEX2_API ImageConverter : public Singleton<ImageConverter> {
 public:
  /// Takes no memory; asks for the byte order of the host.
  ImageConverter();
  /// Gives nothing back, since nothing was taken.
  virtual ~ImageConverter();

  /// Converts *pSrc into destFormat, writing into *pDst.
  ///
  /// Shapes *pDst first: the source's rows, columns and Bayer tile, rows without padding; a buffer
  /// that is large enough is reused. A request for the source's own format makes a full copy. Raw
  /// sources are demosaiced as GetColorProcessing() of the source asks.
  ///
  /// Failures, in the order in which they are looked for:
  ///   VORERROR_INVALID_PARAMETER  pSrc is null or has no buffer
  ///   VORERROR_INVALID_PARAMETER  pDst is null
  ///   VORERROR_FAILED             *pDst refused its shape; GetCause() says why
  ///   VORERROR_INVALID_PARAMETER  destFormat is no target, or the source no source for it; *pDst
  ///                               has been reshaped already
  /// A route through a temporary image reports success even where one of its steps could not do
  /// its work: a mosaic with odd sides, say. CheckConversion tells beforehand.
  /// A failing step leaves what it wrote, as a rule nothing: a destination that had its shape
  /// before then shows its earlier frame, a lent one the caller's bytes, any other one zeros.
  ///
  /// Nothing outside the two buffers is touched, whatever the size of a group: see Image.
  ///
  /// *pSrc and *pDst must be different images: the destination is shaped before the source is read.
  /// Plain Images whose buffers lie apart convert fastest and without memory of their own; images
  /// of a subclass and overlapping buffers take the plain loops and whole temporary images.
  Error Convert(const Image* pSrc, PixelFormat destFormat, Image* pDst);

  /// Always VORERROR_NOT_IMPLEMENTED; nothing is touched.
  Error ConvertInPlace(Image* pImage, PixelFormat format);

 protected:
  /// @name The routine of each target format
  /// @{

  /// Looks the source's format up and passes the pair on. The destination is shaped already.
  /// VORERROR_INVALID_PARAMETER for a source that does not convert into this target.
  ///
  /// ConvertToMono8, ConvertToRGB and so on, as Formats.def names them.
  /// @cond
#define KORVEX2_FORMAT(enumerator, value, name, routine, ...) \
  Error ConvertTo##routine(const Image* pSrc, Image* pDst);
#include "Formats.def"
  /// @endcond

  /// @}

  // Every conversion routine, kernel and primitive: a member per row of Routines.def.
  // What each does, its row says: Routines(), `korvex2 routes`.
  /// @cond
#define KORVEX2_KERNEL(routine, ...) Error routine(const Image* pSrc, Image* pDst) const;
#define KORVEX2_WRAPPER(routine, ...) Error routine(const Image* pSrc, Image* pDst) const;
#define KORVEX2_CHAIN(routine, ...) Error routine(const Image* pSrc, Image* pDst) const;
#define KORVEX2_DEMOSAIC(routine) Error routine(const Image* pSrc, Image* pDst) const;
#include "Routines.def"
  /// @endcond

  /// Shapes *pTemporary to the source's rows, columns and tile in `format`, rows without padding.
  Error TempImage(const Image* pSrc, Image* pTemporary, PixelFormat format) const;

  /// rows x columns, wrapping at 32 bits; 0 for null.
  unsigned int GetNumberOfPixels(const Image* pImage) const;

  /// Saturates to 0 ... 255.
  unsigned char Clamp_8bit(short value) const;

  /// The bridge to the demosaic engine: makes srcRows x srcCols pixels of colour in destPixFmt at
  /// pOutputBuffer from as many mosaic samples at pInputBuffer, both without row padding.
  /// VORERROR_FAILED where bayerToColor answers anything but beOK.
  Error ProcessImage(PixelFormat srcPixFmt, const unsigned char* pInputBuffer, unsigned int srcRows,
                     unsigned int srcCols, PixelFormat destPixFmt, unsigned char* pOutputBuffer,
                     ColorProcessingAlgorithm algorithm, BayerTileFormat tilePattern) const;
  /// RAW8 for a format that the engine does not know.
  BayerPixelFormat TranslateToBayerPixelFormat(PixelFormat pixFmt) const;
  /// NEAREST_NEIGHBOR for a method that the engine is never asked for.
  BayerMethod TranslateToBayerMethod(ColorProcessingAlgorithm algorithm) const;
  /// RGGB for a tile that is none of the four.
  BayerPattern TranslateToBayerPattern(BayerTileFormat tile) const;

  /// Whether the host stores the low byte of a word first; fixed at construction.
  bool m_LittleEndian;

 private:
  Error Dispatch(PixelFormat target, const Image* pSrc, Image* pDst) const;
  Error Run(const RoutineInfo& info, const Image* pSrc, Image* pDst) const;
  bool MayWalk(const RoutineInfo& info, const Image* pSrc, const Image* pDst) const;
  Error WalkRoutine(const RoutineInfo& info, const Image* pSrc, Image* pDst) const;
  Error RunKernel(const RoutineInfo& info, const Image* pSrc, Image* pDst) const;
  Error RunWrapper(const RoutineInfo& info, const Image* pSrc, Image* pDst) const;
  Error RunChain(const RoutineInfo& info, const Image* pSrc, Image* pDst) const;
  Error ProcessCopies(PixelFormat srcPixFmt, const SourceBytes& input, unsigned int rows,
                      unsigned int cols, PixelFormat destPixFmt, const DestinationBytes& output,
                      ColorProcessingAlgorithm algorithm, BayerTileFormat tilePattern) const;
  static SourceBytes BytesToRead(const RoutineInfo& info, const Image& source,
                                 const unsigned char* data, std::size_t pixels);
  static DestinationBytes BytesToWrite(const RoutineInfo& info, const Image& destination,
                                       unsigned char* data, std::size_t pixels);
};

extern template class Singleton<ImageConverter>;

}  // namespace Korvex2
