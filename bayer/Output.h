#pragma once

/// The colour formats, and writing rows of three planes in them.

#include <cstdint>

#include "InstructionSet.h"

namespace Korvex2::Bayer {

struct OutputFormat {
  int channels;  ///< 3, or 4 with an opaque alpha behind the colours
  int bytesPerChannel;
  bool blueFirst;

  int BytesPerPixel() const { return channels * bytesPerChannel; }
};

/// The layout of a BayerPixelFormat, null for a format that is none.
const OutputFormat* FindOutputFormat(int format);

/// Writes `cols` pixels, their channels in the order of the arguments. The planes may be read up to
/// the next multiple of kVectorBytes; exactly the pixels are written.
template <typename Sample>
using RowWriter = void (*)(const Sample* first, const Sample* second, const Sample* third, int cols,
                           unsigned char* out);

/// One writer per number of channels and depth. 16-bit samples go to 8 bits by their high byte.
struct RowWriters {
  RowWriter<std::uint8_t> three8;
  RowWriter<std::uint8_t> four8;
  RowWriter<std::uint16_t> three8Narrowed;
  RowWriter<std::uint16_t> four8Narrowed;
  /// 16-bit channels are words of the host; `out` must be even.
  RowWriter<std::uint16_t> three16;
  RowWriter<std::uint16_t> four16;

  RowWriter<std::uint8_t> Pick(const OutputFormat& format, std::uint8_t) const {
    return format.channels == 3 ? three8 : four8;
  }
  RowWriter<std::uint16_t> Pick(const OutputFormat& format, std::uint16_t) const {
    if (format.bytesPerChannel == 1) return format.channels == 3 ? three8Narrowed : four8Narrowed;
    return format.channels == 3 ? three16 : four16;
  }
};

RowWriters RowWritersFor(InstructionSet set);

/// The vector versions; only where Highway is compiled in.
RowWriters SimdRowWriters(InstructionSet set);

/// The plain loops, which also write what is left at the end of a row.
RowWriters PlainRowWriters();

}  // namespace Korvex2::Bayer
