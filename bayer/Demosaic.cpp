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
int bytesPerSample(int format) {
  switch (format) {
    case BAYER_PIXEL_FORMAT_RAW8:
      return 1;
    case BAYER_PIXEL_FORMAT_RAW16:
      return 2;
    default:
      return 0;
  }
}

bool knownPattern(int pattern) {
  return pattern >= BAYER_PATTERN_RGGB && pattern <= BAYER_PATTERN_BGGR;
}

// No buffer is larger than this, so offsets into a picture that passed need no further care.
bool tooLarge(const Request& request) {
  const auto pixels = static_cast<size_t>(request.rows) * static_cast<size_t>(request.cols);
  constexpr size_t kMostBytesPerPixel = 8;
  return pixels > static_cast<size_t>(std::numeric_limits<ptrdiff_t>::max()) / kMostBytesPerPixel;
}

constexpr size_t roundedUp(size_t bytes) {
  return (bytes + kVectorBytes - 1) / kVectorBytes * kVectorBytes;
}

// One allocation, cut into pieces that begin on multiples of kVectorBytes.
class Workspace {
 public:
  explicit Workspace(size_t bytes)
      : start_(static_cast<unsigned char*>(
            ::operator new (bytes, std::align_val_t{kVectorBytes}, std::nothrow))),
        next_(start_) {
    // What lies around the samples is read by whole vectors and must not be old memory.
    if (start_ != nullptr) std::memset(start_, 0, bytes);
  }
  ~Workspace() { ::operator delete (start_, std::align_val_t{kVectorBytes}); }
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  explicit operator bool() const { return start_ != nullptr; }

  template <typename T>
  T* take(size_t bytes) {
    unsigned char* const piece = next_;
    next_ += roundedUp(bytes);
    return reinterpret_cast<T*>(piece);
  }

 private:
  unsigned char* start_;
  unsigned char* next_;
};

// The width of blocks of at most `most` columns, when all are to be of almost the same width.
int evenShare(int cols, int most) {
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
            evenShare(request.cols, settings.blockCols ? settings.blockCols : method.blockCols)),
        margin(method.margin),
        besideRow(roundedUp(static_cast<size_t>(margin * sampleBytes)) + kVectorBytes),
        mosaicRow(roundedUp(static_cast<size_t>(blockCols) * static_cast<size_t>(sampleBytes)) +
                  2 * besideRow),
        planeRow(roundedUp(static_cast<size_t>(blockCols) * static_cast<size_t>(sampleBytes)) +
                 kVectorBytes),
        scratch(method.scratchBytes ? method.scratchBytes(blockRows, blockCols, sampleBytes) : 0),
        outputRow(static_cast<size_t>(blockCols) * static_cast<size_t>(format.bytesPerPixel())) {}

  int mosaicRows() const { return blockRows + 2 * margin; }
  size_t mosaic() const { return mosaicRow * static_cast<size_t>(mosaicRows()); }
  size_t mosaicTable() const { return sizeof(void*) * static_cast<size_t>(mosaicRows()); }
  size_t plane() const { return planeRow * static_cast<size_t>(blockRows); }
  size_t total() const {
    return roundedUp(mosaic()) + roundedUp(mosaicTable()) + 3 * roundedUp(plane()) +
           roundedUp(scratch) + roundedUp(outputRow);
  }
};

// Walks the picture in blocks, down one column of blocks after the other.
template <typename Sample>
class Walk {
 public:
  Walk(const Request& request, const Layout& layout, Workspace& workspace,
       const OutputFormat& format, const RowWriters& writers)
      : request_(request),
        layout_(layout),
        format_(format),
        writer_(writers.pick(format, Sample{})),
        inputSampleBytes_(bytesPerSample(request.inputFormat)),
        mosaic_(workspace.take<unsigned char>(layout.mosaic())),
        table_(workspace.take<const Sample*>(layout.mosaicTable())),
        outputRow_(workspace.take<unsigned char>(layout.outputRow)) {
    block_.redRow = request.pattern >> 1;
    block_.redColumn = request.pattern & 1;
    block_.red = workspace.take<Sample>(layout.plane());
    block_.green = workspace.take<Sample>(layout.plane());
    block_.blue = workspace.take<Sample>(layout.plane());
    block_.stride = static_cast<ptrdiff_t>(layout.planeRow / sizeof(Sample));
    block_.scratch = layout.scratch ? workspace.take<unsigned char>(layout.scratch) : nullptr;
    block_.mosaic = table_ + layout.margin;
  }

  void run(void (*method)(const Block<Sample>&)) {
    const ptrdiff_t rows = request_.rows;
    const ptrdiff_t cols = request_.cols;
    for (ptrdiff_t left = 0; left < cols; left += layout_.blockCols) {
      block_.cols = static_cast<int>(std::min<ptrdiff_t>(layout_.blockCols, cols - left));
      loadedTo_ = -layout_.margin;
      for (ptrdiff_t top = 0; top < rows; top += layout_.blockRows) {
        block_.rows = static_cast<int>(std::min<ptrdiff_t>(layout_.blockRows, rows - top));
        load(top, left);
        method(block_);
        write(top, left);
      }
    }
  }

 private:
  // The mosaic rows live in a ring: a row stays where it is as long as any block needs it.
  Sample* ringRow(ptrdiff_t y) {
    const auto place = static_cast<size_t>((y + layout_.margin) % layout_.mosaicRows());
    return reinterpret_cast<Sample*>(mosaic_ + place * layout_.mosaicRow + layout_.besideRow);
  }

  void load(ptrdiff_t top, ptrdiff_t left) {
    const ptrdiff_t end = top + block_.rows + layout_.margin;
    for (; loadedTo_ < end; ++loadedTo_) loadRow(loadedTo_, left);
    for (ptrdiff_t y = top - layout_.margin; y < end; ++y) {
      table_[y - top + layout_.margin] = ringRow(y);
    }
  }

  void loadRow(ptrdiff_t y, ptrdiff_t left) {
    const unsigned char* const row =
        request_.input + mirrored(y, request_.rows) * request_.cols * inputSampleBytes_;
    const ptrdiff_t from = left - layout_.margin;
    const ptrdiff_t to = left + block_.cols + layout_.margin;
    Sample* const out = ringRow(y) - layout_.margin;
    if constexpr (sizeof(Sample) == 2) {
      if (inputSampleBytes_ == 2) return loadRow16(row, request_.cols, from, to, out);
    }
    loadRow8(row, request_.cols, from, to, out);
  }

  void write(ptrdiff_t top, ptrdiff_t left) {
    const int pixelBytes = format_.bytesPerPixel();
    for (int y = 0; y < block_.rows; ++y) {
      unsigned char* const out = request_.output + ((top + y) * request_.cols + left) * pixelBytes;
      if (reinterpret_cast<std::uintptr_t>(out) % static_cast<unsigned>(format_.bytesPerChannel)) {
        // Words at odd addresses: made in a row of our own.
        writeRow(y, outputRow_);
        std::memcpy(out, outputRow_,
                    static_cast<size_t>(block_.cols) * static_cast<size_t>(pixelBytes));
      } else {
        writeRow(y, out);
      }
    }
  }

  void writeRow(int y, unsigned char* out) {
    const ptrdiff_t offset = y * block_.stride;
    const Sample* const first = (format_.blueFirst ? block_.blue : block_.red) + offset;
    const Sample* const third = (format_.blueFirst ? block_.red : block_.blue) + offset;
    writer_(first, block_.green + offset, third, block_.cols, out);
  }

  const Request& request_;
  const Layout& layout_;
  const OutputFormat& format_;
  const RowWriter<Sample> writer_;
  const int inputSampleBytes_;
  unsigned char* const mosaic_;
  const Sample** const table_;
  unsigned char* const outputRow_;
  Block<Sample> block_{};
  ptrdiff_t loadedTo_ = 0;
};

}  // namespace

BayerError check(const Request& request) {
  if (findMethod(request.method) == nullptr || request.rows < 0 || request.cols < 0) {
    return beFAILED;
  }
  if (bytesPerSample(request.inputFormat) == 0 ||
      findOutputFormat(request.outputFormat) == nullptr || !knownPattern(request.pattern)) {
    return beINVALID_PATTERN;
  }
  if (request.rows == 0 || request.cols == 0) return beOK;
  if (request.rows % 2 != 0) return beODD_ROWS;
  if (request.cols % 2 != 0) return beODD_COLS;
  if (request.input == nullptr || request.output == nullptr || tooLarge(request)) return beFAILED;
  return beOK;
}

BayerError demosaic(const Request& request, const Settings& settings) {
  const BayerError error = check(request);
  if (error != beOK || request.rows == 0 || request.cols == 0) return error;

  const Method& method = *findMethod(request.method);
  const OutputFormat& format = *findOutputFormat(request.outputFormat);
  // The work is done in 16 bits unless both ends have 8.
  const int sampleBytes = std::max(bytesPerSample(request.inputFormat), format.bytesPerChannel);

  const Layout layout(request, settings, method, format, sampleBytes);
  Workspace workspace(layout.total());
  if (!workspace) return beFAILED;

  const BlockFunctions functions = method.functions(settings.target);
  const RowWriters writers = rowWriters(settings.target);
  if (sampleBytes == 1) {
    Walk<std::uint8_t>(request, layout, workspace, format, writers).run(functions.on8);
  } else {
    Walk<std::uint16_t>(request, layout, workspace, format, writers).run(functions.on16);
  }
  return beOK;
}

}  // namespace Korvex2::Bayer
