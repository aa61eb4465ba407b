#include "Image.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

#include "InternalError.h"
#include "PixelFormats.h"

#define KORVEX2_RAISE(type, ...) \
  InternalError(__LINE__, "Image.cpp", __DATE__, __TIME__, type, __VA_ARGS__)

namespace Korvex2 {
namespace {

constexpr std::uint64_t kMaxBytes = std::numeric_limits<std::uint32_t>::max();

// One cache line, and the widest vector of any processor we run on.
constexpr std::align_val_t kAlignment{64};

// Faulting in a large frame page by page takes longer than converting it, so what is whole huge
// pages of it asks to be that. A wish, no more.
void AskForHugePages([[maybe_unused]] void* buffer, [[maybe_unused]] std::size_t size) noexcept {
#ifdef MADV_HUGEPAGE
  constexpr std::size_t kHugePage = std::size_t{2} << 20;
  if (size < 2 * kHugePage) return;
  const std::size_t past = reinterpret_cast<std::uintptr_t>(buffer) % kHugePage;
  const std::size_t before = past == 0 ? 0 : kHugePage - past;
  (void)madvise(static_cast<char*>(buffer) + before, (size - before) / kHugePage * kHugePage,
                MADV_HUGEPAGE);
#endif
}

unsigned char* Allocate(std::size_t size) noexcept {
  void* buffer = ::operator new(size, kAlignment, std::nothrow);
  if (buffer != nullptr) {
    AskForHugePages(buffer, size);
  }
  return static_cast<unsigned char*>(buffer);
}

void Free(unsigned char* buffer) noexcept {
  ::operator delete(buffer, kAlignment);
}

std::atomic<ColorProcessingAlgorithm> g_defaultColorProcessing{NEAREST_NEIGHBOR};

Error RaiseTooLarge(unsigned int rows, unsigned int cols, unsigned int stride) {
  return KORVEX2_RAISE(
      VORERROR_INVALID_PARAMETER,
      "An image of %u rows, %u columns and a stride of %u bytes exceeds 4 GiB - 1.", rows, cols,
      stride);
}

}  // namespace

/// How many bytes a shape takes.
struct Image::Layout {
  std::uint64_t strided = 0;  ///< rows x stride: what a buffer must hold, whoever it belongs to
  std::uint64_t frame = 0;    ///< bytes that hold pixels, row padding included
  std::uint64_t needed = 1;   ///< what a buffer of our own holds; never 0, so that it is never null
  bool fits = true;           ///< within 4 GiB - 1

  explicit Layout(const Shape& shape) noexcept {
    const PixelFormatInfo* format = FindPixelFormat(shape.format);
    const std::uint64_t pixels = std::uint64_t{shape.rows} * shape.cols;
    strided = std::uint64_t{shape.rows} * shape.stride;
    if (strided > kMaxBytes || (format != nullptr && pixels > kMaxBytes)) {
      fits = false;
      return;
    }
    const std::uint64_t packed = format == nullptr ? 0 : GroupedSize(*format, pixels);
    const std::uint64_t reached = format == nullptr ? 0 : ReachedSize(*format, pixels);
    const bool padded =
        format == nullptr || shape.stride > PackedStride(shape.cols, format->bitsPerPixel);
    frame = padded ? std::max(packed, strided) : packed;
    needed = std::max({reached, strided, std::uint64_t{1}});
    fits = needed <= kMaxBytes;
  }

  /// Of a buffer of so many bytes that is a caller's: what of it is the frame.
  std::size_t FrameWithin(std::size_t capacity) const noexcept {
    return std::min(static_cast<std::size_t>(std::max(frame, strided)), capacity);
  }
};

Image::Image() noexcept = default;

Image::Image(unsigned char* pData, std::size_t dataSize) noexcept
    : m_pBuffer(pData),
      m_capacity(pData == nullptr ? 0 : dataSize),
      m_ownsBuffer(pData == nullptr) {}

Image::Image(const Image& other) noexcept {
  try {
    (void)Image::DeepCopy(&other);
  } catch (...) {  // by an operation of a subclass; this stays without a buffer
  }
}

Image& Image::operator=(const Image& other) noexcept {
  if (this != &other) {
    Image copy(other);
    Swap(copy);
  }
  return *this;
}

Image::Image(Image&& other) noexcept {
  Swap(other);
}

Image& Image::operator=(Image&& other) noexcept {
  Image moved(std::move(other));
  Swap(moved);
  return *this;
}

Image::~Image() {
  if (m_ownsBuffer) {
    Free(m_pBuffer);
  }
}

void Image::Swap(Image& other) noexcept {
  std::swap(m_shape, other.m_shape);
  std::swap(m_colorProcessing, other.m_colorProcessing);
  std::swap(m_pData, other.m_pData);
  std::swap(m_pBuffer, other.m_pBuffer);
  std::swap(m_capacity, other.m_capacity);
  std::swap(m_ownsBuffer, other.m_ownsBuffer);
}

// Makes room for a shape, or refuses it and changes nothing. A buffer that had to be replaced is
// handed out through ppOld, still alive, for the caller to free.
Error Image::Reserve(const Shape& shape, const Layout& layout, unsigned char** ppOld) noexcept {
  *ppOld = nullptr;
  if (!layout.fits) {
    return RaiseTooLarge(shape.rows, shape.cols, shape.stride);
  }
  const auto needed = static_cast<std::size_t>(m_ownsBuffer ? layout.needed : layout.strided);
  if (needed <= m_capacity) {
    return Error();
  }
  if (!m_ownsBuffer) {
    return KORVEX2_RAISE(VORERROR_BUFFER_TOO_SMALL,
                         "The caller's buffer holds %zu bytes; %u rows with a stride of %u bytes "
                         "need %zu.",
                         m_capacity, shape.rows, shape.stride, needed);
  }
  unsigned char* buffer = Allocate(needed);
  if (buffer == nullptr) {
    return KORVEX2_RAISE(VORERROR_MEMORY_ALLOCATION_FAILED,
                         "There is no memory for an image of %zu bytes.", needed);
  }
  *ppOld = std::exchange(m_pBuffer, buffer);
  m_capacity = needed;
  return Error();
}

Error Image::DeepCopy(const Image* pSrc) {
  if (pSrc == nullptr) {
    return KORVEX2_RAISE(VORERROR_INVALID_PARAMETER, "The image to copy is NULL.");
  }
  if (pSrc == this) {
    return Error();
  }
  Shape shape;
  pSrc->GetDimensions(&shape.rows, &shape.cols, &shape.stride, &shape.format, &shape.tile);
  const unsigned char* data = pSrc->GetData();
  const unsigned int size = data == nullptr ? 0 : pSrc->GetDataSize();
  const ColorProcessingAlgorithm colorProcessing = pSrc->GetColorProcessing();
  const Layout layout(shape);
  // Our own buffer is filled, a caller's no further than the frame.
  const auto filled =
      m_ownsBuffer ? static_cast<std::size_t>(layout.needed) : layout.FrameWithin(m_capacity);
  const auto wanted = std::min<std::size_t>(std::max<std::size_t>(layout.frame, size), filled);
  const std::size_t copied = data == nullptr ? 0 : pSrc->Readable(data, wanted);
  unsigned char* old = nullptr;
  if (data != nullptr) {
    const Error error = Reserve(shape, layout, &old);
    if (error != VORERROR_OK) {
      return error;
    }
    // The source may look into our own buffer, so the bytes move before anything is cleared.
    std::memmove(m_pBuffer, data, copied);
    std::memset(m_pBuffer + copied, 0, filled - copied);
  }
  m_shape = shape;
  m_colorProcessing = colorProcessing;
  m_pData = data == nullptr ? nullptr : m_pBuffer;
  Free(old);
  return Error();
}

Error Image::SetDimensions(unsigned int rows, unsigned int cols, unsigned int stride,
                           PixelFormat format, BayerTileFormat bayerFormat) {
  const Shape shape{rows, cols, stride, format, bayerFormat};
  const Layout layout(shape);
  unsigned char* old = nullptr;
  const Error error = Reserve(shape, layout, &old);
  if (error != VORERROR_OK) {
    return error;
  }
  if (m_ownsBuffer) {
    const bool sameShape = m_pData != nullptr && rows == m_shape.rows && cols == m_shape.cols &&
                           stride == m_shape.stride && format == m_shape.format;
    const std::uint64_t kept = sameShape ? layout.frame : 0;
    std::memset(m_pBuffer + kept, 0, static_cast<std::size_t>(layout.needed - kept));
  }
  m_shape = shape;
  m_pData = m_pBuffer;
  Free(old);
  return Error();
}

PixelFormat Image::GetPixelFormat() const {
  return m_shape.format;
}

ColorProcessingAlgorithm Image::GetColorProcessing() const {
  return m_colorProcessing;
}

Error Image::SetColorProcessing(ColorProcessingAlgorithm method) {
  m_colorProcessing = method;
  return Error();
}

unsigned int Image::GetRows() const {
  return m_shape.rows;
}

unsigned int Image::GetCols() const {
  return m_shape.cols;
}

unsigned int Image::GetStride() const {
  return m_shape.stride;
}

unsigned int Image::GetBitsPerPixel() const {
  return DetermineBitsPerPixel(m_shape.format);
}

BayerTileFormat Image::GetBayerTileFormat() const {
  return m_shape.tile;
}

unsigned int Image::GetDataSize() const {
  return m_shape.rows * m_shape.stride;  // within 4 GiB - 1, or the image had not been shaped
}

void Image::GetDimensions(unsigned int* rows, unsigned int* cols, unsigned int* stride,
                          PixelFormat* format, BayerTileFormat* bayerFormat) const {
  const auto put = [](auto* pOutput, auto value) {
    if (pOutput != nullptr) {
      *pOutput = value;
    }
  };
  put(rows, m_shape.rows);
  put(cols, m_shape.cols);
  put(stride, m_shape.stride);
  put(format, m_shape.format);
  put(bayerFormat, m_shape.tile);
}

unsigned char* Image::GetData() {
  return m_pData;
}

const unsigned char* Image::GetData() const {
  return m_pData;
}

// Of a buffer of our own all is ours to read. Past the frame in a caller's buffer the caller may
// have another frame, which some other thread may be writing.
std::size_t Image::Readable(const unsigned char* data, std::size_t wanted) const {
  if (data != m_pData) {
    return Told(wanted);
  }
  if (m_ownsBuffer) {
    return std::min(wanted, m_capacity);
  }
  return std::min(wanted, Layout(m_shape).FrameWithin(m_capacity));
}

// A subclass's image of fewer pixels than the run was not shaped for it, and is taken at its word.
std::size_t Image::Writable(const unsigned char* data, std::size_t wanted,
                            std::size_t pixels) const {
  if (data == m_pData) {
    return std::min(wanted, m_capacity);
  }
  const std::size_t told = Told(wanted);
  const bool shapedForLess = told < wanted && std::uint64_t{GetRows()} * GetCols() < pixels;
  return shapedForLess ? wanted : told;
}

// What a subclass says of memory that only it knows.
std::size_t Image::Told(std::size_t wanted) const {
  const std::size_t size = GetDataSize();
  if (size >= wanted) {
    return wanted;
  }
  unsigned int rows = 0;
  unsigned int stride = 0;
  GetDimensions(&rows, nullptr, &stride, nullptr, nullptr);
  return static_cast<std::size_t>(
      std::min<std::uint64_t>(wanted, std::max<std::uint64_t>(size, std::uint64_t{rows} * stride)));
}

Error Image::CheckDimensions(unsigned int rows, unsigned int cols, unsigned int stride,
                             PixelFormat format) noexcept {
  const Layout layout(Shape{rows, cols, stride, format, NONE});
  return layout.fits ? Error() : RaiseTooLarge(rows, cols, stride);
}

unsigned int Image::DetermineBitsPerPixel(PixelFormat format) noexcept {
  const PixelFormatInfo* info = FindPixelFormat(format);
  return info == nullptr ? 0 : info->bitsPerPixel;
}

ColorProcessingAlgorithm Image::GetDefaultColorProcessing() noexcept {
  return g_defaultColorProcessing.load(std::memory_order_relaxed);
}

Error Image::SetDefaultColorProcessing(ColorProcessingAlgorithm method) noexcept {
  g_defaultColorProcessing.store(method, std::memory_order_relaxed);
  return Error();
}

}  // namespace Korvex2
