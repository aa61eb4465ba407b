#include "Demosaic.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#include "Method.h"
#include "Methods.h"
#include "Mosaic.h"
#include "Output.h"

namespace Korvex2::Bayer {
namespace {

using std::ptrdiff_t;
using std::size_t;

// Bytes of a mosaic sample, 0 for a format that is no mosaic.
int BytesPerSample(int format) {
  switch (format) {
    case BAYER_PIXEL_FORMAT_RAW8:
      return 1;
    case BAYER_PIXEL_FORMAT_RAW16:
      return 2;
    default:
      return 0;
  }
}

bool KnownPattern(int pattern) {
  return pattern >= BAYER_PATTERN_RGGB && pattern <= BAYER_PATTERN_BGGR;
}

// No buffer is larger than this, so offsets into a picture that passed need no further care.
bool TooLarge(const Request& request) {
  const auto pixels = static_cast<size_t>(request.rows) * static_cast<size_t>(request.cols);
  constexpr size_t kMostBytesPerPixel = 8;
  return pixels > static_cast<size_t>(std::numeric_limits<ptrdiff_t>::max()) / kMostBytesPerPixel;
}

constexpr size_t RoundedUp(size_t bytes) {
  return (bytes + kVectorBytes - 1) / kVectorBytes * kVectorBytes;
}

// One allocation, cut into pieces that begin on multiples of kVectorBytes.
class Workspace {
 public:
  explicit Workspace(size_t bytes)
      : m_start(static_cast<unsigned char*>(
            ::operator new (bytes, std::align_val_t{kVectorBytes}, std::nothrow))),
        m_next(m_start) {
    // What lies around the samples is read by whole vectors and must not be old memory.
    if (m_start != nullptr) std::memset(m_start, 0, bytes);
  }
  ~Workspace() { ::operator delete (m_start, std::align_val_t{kVectorBytes}); }
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  explicit operator bool() const { return m_start != nullptr; }

  template <typename T>
  T* Take(size_t bytes) {
    unsigned char* const piece = m_next;
    m_next += RoundedUp(bytes);
    return reinterpret_cast<T*>(piece);
  }

 private:
  unsigned char* m_start;
  unsigned char* m_next;
};

// The width of blocks of at most `most` columns, when all are to be of almost the same width.
int EvenShare(int cols, int most) {
  const int blocks = cols / most + (cols % most != 0);
  const int share = cols / blocks + (cols % blocks != 0);
  return share + share % 2;
}

// Sizes of what one demosaic needs, in bytes; everything is a multiple of kVectorBytes.
struct Layout {
  int blockRows, blockCols, margin;
  size_t besideRow, mosaicRow, planeRow, scratch, outputRow;

  Layout(const Request& request, const Settings& settings, const Method& method,
         const OutputFormat& format, int sampleBytes)
      : blockRows(
            std::min(request.rows, settings.blockRows ? settings.blockRows : method.blockRows)),
        blockCols(
            EvenShare(request.cols, settings.blockCols ? settings.blockCols : method.blockCols)),
        margin(method.margin),
        besideRow(RoundedUp(static_cast<size_t>(margin * sampleBytes)) + kVectorBytes),
        mosaicRow(RoundedUp(static_cast<size_t>(blockCols) * static_cast<size_t>(sampleBytes)) +
                  2 * besideRow),
        planeRow(RoundedUp(static_cast<size_t>(blockCols) * static_cast<size_t>(sampleBytes)) +
                 kVectorBytes),
        scratch(method.scratchBytes ? method.scratchBytes(blockRows, blockCols, sampleBytes) : 0),
        outputRow(static_cast<size_t>(blockCols) * static_cast<size_t>(format.BytesPerPixel())) {}

  int MosaicRows() const { return blockRows + 2 * margin; }
  size_t MosaicBytes() const { return mosaicRow * static_cast<size_t>(MosaicRows()); }
  size_t MosaicTableBytes() const { return sizeof(void*) * static_cast<size_t>(MosaicRows()); }
  size_t PlaneBytes() const { return planeRow * static_cast<size_t>(blockRows); }
  size_t TotalBytes() const {
    return RoundedUp(MosaicBytes()) + RoundedUp(MosaicTableBytes()) + 3 * RoundedUp(PlaneBytes()) +
           RoundedUp(scratch) + RoundedUp(outputRow);
  }
};

// Walks the picture in blocks, down one column of blocks after the other.
template <typename Sample>
class Walk {
 public:
  Walk(const Request& request, const Layout& layout, Workspace& workspace,
       const OutputFormat& format, const RowWriters& writers)
      : m_request(request),
        m_layout(layout),
        m_format(format),
        m_writer(writers.Pick(format, Sample{})),
        m_inputSampleBytes(BytesPerSample(request.inputFormat)),
        m_mosaic(workspace.Take<unsigned char>(layout.MosaicBytes())),
        m_table(workspace.Take<const Sample*>(layout.MosaicTableBytes())),
        m_outputRow(workspace.Take<unsigned char>(layout.outputRow)) {
    m_block.redRow = request.pattern >> 1;
    m_block.redColumn = request.pattern & 1;
    m_block.red = workspace.Take<Sample>(layout.PlaneBytes());
    m_block.green = workspace.Take<Sample>(layout.PlaneBytes());
    m_block.blue = workspace.Take<Sample>(layout.PlaneBytes());
    m_block.stride = static_cast<ptrdiff_t>(layout.planeRow / sizeof(Sample));
    m_block.scratch = layout.scratch ? workspace.Take<unsigned char>(layout.scratch) : nullptr;
    m_block.mosaic = m_table + layout.margin;
  }

  void Run(void (*method)(const Block<Sample>&)) {
    const ptrdiff_t rows = m_request.rows;
    const ptrdiff_t cols = m_request.cols;
    for (ptrdiff_t left = 0; left < cols; left += m_layout.blockCols) {
      m_block.cols = static_cast<int>(std::min<ptrdiff_t>(m_layout.blockCols, cols - left));
      m_loadedTo = -m_layout.margin;
      for (ptrdiff_t top = 0; top < rows; top += m_layout.blockRows) {
        m_block.rows = static_cast<int>(std::min<ptrdiff_t>(m_layout.blockRows, rows - top));
        Load(top, left);
        method(m_block);
        Write(top, left);
      }
    }
  }

 private:
  // The mosaic rows live in a ring: a row stays where it is as long as any block needs it.
  Sample* RingRow(ptrdiff_t y) {
    const auto place = static_cast<size_t>((y + m_layout.margin) % m_layout.MosaicRows());
    return reinterpret_cast<Sample*>(m_mosaic + place * m_layout.mosaicRow + m_layout.besideRow);
  }

  void Load(ptrdiff_t top, ptrdiff_t left) {
    const ptrdiff_t end = top + m_block.rows + m_layout.margin;
    for (; m_loadedTo < end; ++m_loadedTo) LoadRow(m_loadedTo, left);
    for (ptrdiff_t y = top - m_layout.margin; y < end; ++y) {
      m_table[y - top + m_layout.margin] = RingRow(y);
    }
  }

  void LoadRow(ptrdiff_t y, ptrdiff_t left) {
    const unsigned char* const row =
        m_request.input + Mirrored(y, m_request.rows) * m_request.cols * m_inputSampleBytes;
    const ptrdiff_t from = left - m_layout.margin;
    const ptrdiff_t to = left + m_block.cols + m_layout.margin;
    Sample* const out = RingRow(y) - m_layout.margin;
    if constexpr (sizeof(Sample) == 2) {
      if (m_inputSampleBytes == 2) return LoadRow16(row, m_request.cols, from, to, out);
    }
    LoadRow8(row, m_request.cols, from, to, out);
  }

  void Write(ptrdiff_t top, ptrdiff_t left) {
    const int pixelBytes = m_format.BytesPerPixel();
    for (int y = 0; y < m_block.rows; ++y) {
      unsigned char* const out =
          m_request.output + ((top + y) * m_request.cols + left) * pixelBytes;
      if (reinterpret_cast<std::uintptr_t>(out) % static_cast<unsigned>(m_format.bytesPerChannel)) {
        // Words at odd addresses: made in a row of our own.
        WriteRow(y, m_outputRow);
        std::memcpy(out, m_outputRow,
                    static_cast<size_t>(m_block.cols) * static_cast<size_t>(pixelBytes));
      } else {
        WriteRow(y, out);
      }
    }
  }

  void WriteRow(int y, unsigned char* out) {
    const ptrdiff_t offset = y * m_block.stride;
    const Sample* const first = (m_format.blueFirst ? m_block.blue : m_block.red) + offset;
    const Sample* const third = (m_format.blueFirst ? m_block.red : m_block.blue) + offset;
    m_writer(first, m_block.green + offset, third, m_block.cols, out);
  }

  const Request& m_request;
  const Layout& m_layout;
  const OutputFormat& m_format;
  const RowWriter<Sample> m_writer;
  const int m_inputSampleBytes;
  unsigned char* const m_mosaic;
  const Sample** const m_table;
  unsigned char* const m_outputRow;
  Block<Sample> m_block{};
  ptrdiff_t m_loadedTo = 0;
};

}  // namespace

BayerError Check(const Request& request) {
  if (FindMethod(request.method) == nullptr || request.rows < 0 || request.cols < 0) {
    return beFAILED;
  }
  if (BytesPerSample(request.inputFormat) == 0 ||
      FindOutputFormat(request.outputFormat) == nullptr || !KnownPattern(request.pattern)) {
    return beINVALID_PATTERN;
  }
  if (request.rows == 0 || request.cols == 0) return beOK;
  if (request.rows % 2 != 0) return beODD_ROWS;
  if (request.cols % 2 != 0) return beODD_COLS;
  if (request.input == nullptr || request.output == nullptr || TooLarge(request)) return beFAILED;
  return beOK;
}

BayerError Demosaic(const Request& request, const Settings& settings) {
  const BayerError error = Check(request);
  if (error != beOK || request.rows == 0 || request.cols == 0) return error;

  const Method& method = *FindMethod(request.method);
  const OutputFormat& format = *FindOutputFormat(request.outputFormat);
  // The work is done in 16 bits unless both ends have 8.
  const int sampleBytes = std::max(BytesPerSample(request.inputFormat), format.bytesPerChannel);

  const Layout layout(request, settings, method, format, sampleBytes);
  Workspace workspace(layout.TotalBytes());
  if (!workspace) return beFAILED;

  const BlockFunctions functions = method.functions(settings.instructionSet);
  const RowWriters writers = RowWritersFor(settings.instructionSet);
  if (sampleBytes == 1) {
    Walk<std::uint8_t>(request, layout, workspace, format, writers).Run(functions.on8);
  } else {
    Walk<std::uint16_t>(request, layout, workspace, format, writers).Run(functions.on16);
  }
  return beOK;
}

}  // namespace Korvex2::Bayer
