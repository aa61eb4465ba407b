/** @file
 * The demosaic engine: one function that turns a Bayer mosaic into a colour picture.
 *
 * Plain C99, so that the engine serves C programs as well. */
#ifndef KORVEX2_VORBAYER_H
#define KORVEX2_VORBAYER_H

/** Marks what the shared library shows to its clients. */
#if defined(__GNUC__)
#define VORBAYER_API __attribute__((visibility("default")))
#else
#define VORBAYER_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** What bayerToColor answers. */
typedef enum BayerError {
  beOK = 0,              /**< the picture is made */
  beUNKNOWN_ERROR = 1,   /**< never answered; kept for its value */
  beODD_ROWS = 2,        /**< the height is not a multiple of the 2x2 tile */
  beODD_COLS = 3,        /**< the width is not a multiple of the 2x2 tile */
  beINVALID_PATTERN = 4, /**< a pattern or format that the engine does not know */
  beFAILED = 5           /**< a null buffer, a negative size, an unknown method, no memory */
} BayerError;

/** The colours of the top-left 2x2 tile, row by row. */
typedef enum BayerPattern {
  BAYER_PATTERN_RGGB = 0, /**< red top left, blue bottom right */
  BAYER_PATTERN_GRBG = 1, /**< red top right, blue bottom left */
  BAYER_PATTERN_GBRG = 2, /**< blue top right, red bottom left */
  BAYER_PATTERN_BGGR = 3  /**< blue top left, red bottom right */
} BayerPattern;

/** How missing samples are made, cheapest first but for the second and third;
 * docs/demosaicing.md describes each. */
typedef enum BayerMethod {
  BAYER_METHOD_NEAREST_NEIGHBOR = 0,            /**< those of the same tile */
  BAYER_METHOD_EDGE_SENSING = 1,                /**< along edges instead of across them */
  BAYER_METHOD_HQLINEAR = 2,                    /**< linear filters of 5x5 */
  BAYER_METHOD_DIRECTIONAL_FILTER = 3,          /**< rows or columns, decided per pixel */
  BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER = 4, /**< rows and columns, blended per pixel */
  BAYER_METHOD_RIGOROUS = 5                     /**< residual interpolation: the best picture */
} BayerMethod;

/** What lies in a buffer. 16-bit samples of RAW16 are stored low byte first; 16-bit outputs are
 * words of the host. */
typedef enum BayerPixelFormat {
  BAYER_PIXEL_FORMAT_RAW8 = 0,   /**< one 8-bit mosaic sample; input only */
  BAYER_PIXEL_FORMAT_RAW16 = 1,  /**< one 16-bit mosaic sample; input only */
  BAYER_PIXEL_FORMAT_BGR8 = 2,   /**< bytes B, G, R */
  BAYER_PIXEL_FORMAT_BGRU8 = 3,  /**< bytes B, G, R, 0xFF */
  BAYER_PIXEL_FORMAT_BGR16 = 4,  /**< words B, G, R */
  BAYER_PIXEL_FORMAT_BGRU16 = 5, /**< words B, G, R, 0xFFFF */
  BAYER_PIXEL_FORMAT_RGB8 = 6,   /**< bytes R, G, B */
  BAYER_PIXEL_FORMAT_RGBU8 = 7,  /**< bytes R, G, B, 0xFF */
  BAYER_PIXEL_FORMAT_RGB16 = 8,  /**< words R, G, B */
  BAYER_PIXEL_FORMAT_RGBU16 = 9  /**< words R, G, B, 0xFFFF */
} BayerPixelFormat;

/** Demosaics rows x cols samples at pInput into rows x cols pixels at pOutput; both run row after
 * row, top row first, without gaps. The buffers must not overlap; any address will do.
 *
 * Any of the methods, patterns, mosaic formats and colour formats go together. Missing samples
 * around the picture are those inside, mirrored about the edge sample. Where the mosaic has a
 * sample, the picture has it unchanged. Depths: 8-bit samples for 16-bit pictures are multiplied by
 * 257 before the work, so the picture keeps the precision of the interpolation; 16-bit samples for
 * 8-bit pictures are worked on in 16 bits, and the high byte of each result is kept.
 *
 * Failures, in the order in which they are looked for; nothing is written then:
 *   beFAILED           an unknown method, or rows or cols below zero
 *   beINVALID_PATTERN  inputFormat is no mosaic, outputFormat no colour format, pattern unknown
 *   (a picture without pixels succeeds here, whatever the pointers)
 *   beODD_ROWS         rows is odd
 *   beODD_COLS         cols is odd
 *   beFAILED           a null buffer, a size that no buffer can have, no memory
 *
 * Allocates line buffers, released before it returns: their size depends on the method and on cols,
 * up to a limit, not on rows; docs/demosaicing.md has the figures. Reentrant, keeps no state
 * between calls, throws nothing. */
VORBAYER_API BayerError bayerToColor(BayerPixelFormat inputFormat, const unsigned char* pInput,
                                     int rows, int cols, BayerPixelFormat outputFormat,
                                     unsigned char* pOutput, BayerMethod method,
                                     BayerPattern pattern);

#ifdef __cplusplus
}
#endif

#endif /* KORVEX2_VORBAYER_H */
