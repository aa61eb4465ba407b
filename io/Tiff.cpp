#include "io/Tiff.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "io/Failure.h"

namespace Korvex2::Io {
namespace {

// --- The file, which libtiff sees through these functions ----------------------------------------

using Message = std::array<char, 200>;  // libtiff's functions let no exception through

struct Source {
  const Bytes& bytes;
  std::uint64_t position = 0;
  Message message{};
  bool damaged = false;  // though libtiff goes on

  // Keeps the first message, which names the cause.
  void Note(const char* text) {
    if (message[0] == '\0') {
      std::snprintf(message.data(), message.size(), "%s", text);
    }
  }
};

Message Formatted(const char* format, va_list arguments) {
  Message text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  return text;
}

extern "C" {

static tmsize_t OnRead(thandle_t handle, void* destination, tmsize_t size) {
  auto* source = static_cast<Source*>(handle);
  const std::uint64_t left =
      source->bytes.size - std::min<std::uint64_t>(source->position, source->bytes.size);
  const std::uint64_t count =
      std::min(left, static_cast<std::uint64_t>(std::max<tmsize_t>(size, 0)));
  if (count != 0) {
    std::memcpy(destination, source->bytes.data.get() + source->position, count);
  }
  source->position += count;
  return static_cast<tmsize_t>(count);
}

static tmsize_t OnWrite(thandle_t, void*, tmsize_t) {
  return -1;
}

static toff_t OnSeek(thandle_t handle, toff_t offset, int whence) {
  auto* source = static_cast<Source*>(handle);
  const std::uint64_t base = whence == SEEK_CUR   ? source->position
                             : whence == SEEK_END ? source->bytes.size
                                                  : 0;
  return source->position = base + offset;
}

static int OnClose(thandle_t) {
  return 0;
}

static toff_t OnSize(thandle_t handle) {
  return static_cast<Source*>(handle)->bytes.size;
}

static int OnError(TIFF*, void* handle, const char*, const char* format, va_list arguments) {
  static_cast<Source*>(handle)->Note(Formatted(format, arguments).data());
  return 1;
}

// What libtiff only warns of and goes on: samples are missing, and it makes some up or leaves them
// unwritten.
constexpr std::string_view kDamage[] = {"Improper JPEG strip/tile size", "Premature end of JPEG",
                                        "Corrupt JPEG data"};

// Part of what begins like the last one, though nothing is missing then.
constexpr std::string_view kSurplus = "extraneous bytes before marker";

bool IsDamage(std::string_view warning) {
  return std::ranges::any_of(kDamage, [&](std::string_view damage) {
    return warning.starts_with(damage) && warning.find(kSurplus) == warning.npos;
  });
}

static int OnWarning(TIFF*, void* handle, const char*, const char* format, va_list arguments) {
  auto* source = static_cast<Source*>(handle);
  const Message text = Formatted(format, arguments);
  if (IsDamage(text.data())) {
    source->Note(text.data());
    source->damaged = true;
  }
  return 1;
}

}  // extern "C"

struct Closer {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

using Tiff = std::unique_ptr<TIFF, Closer>;

Tiff Open(Source& source) {
  const std::unique_ptr<TIFFOpenOptions, Closer> options(TIFFOpenOptionsAlloc());
  if (options == nullptr) {
    throw std::bad_alloc();
  }
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, &source);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), OnWarning, &source);
  return Tiff(TIFFClientOpenExt("", "rm", &source, OnRead, OnWrite, OnSeek, OnClose, OnSize,
                                nullptr, nullptr, options.get()));
}

// --- What the picture is -------------------------------------------------------------------------

struct Layout {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t bits = 1;
  std::uint16_t channels = 1;
  std::uint16_t sampleFormat = SAMPLEFORMAT_UINT;
  std::uint16_t photometric = 0xffff;
  std::uint16_t planes = PLANARCONFIG_CONTIG;

  bool IsGrey() const {
    return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
  }
  unsigned BytesPerSample() const { return bits / 8U; }
};

Layout LayoutOf(TIFF* tiff) {
  Layout layout;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.channels);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &layout.sampleFormat);
  TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planes);
  return layout;
}

struct KindOfPicture {
  std::uint16_t photometric;
  const char* name;
};

// What is told of pictures that are refused.
constexpr KindOfPicture kOtherKinds[] = {
    {PHOTOMETRIC_PALETTE, "colours of a palette"},
    {PHOTOMETRIC_SEPARATED, "inks"},
    {PHOTOMETRIC_YCBCR, "luma and chroma"},
    {PHOTOMETRIC_CIELAB, "CIE L*a*b*"},
    {PHOTOMETRIC_CFA, "the mosaic of a camera, which is read under the name .dng"},
};

const char* OtherKind(std::uint16_t photometric) {
  for (const KindOfPicture& kind : kOtherKinds) {
    if (kind.photometric == photometric) {
      return kind.name;
    }
  }
  return "an unknown kind of picture";
}

void RequireSupported(const Layout& layout, const std::string& path) {
  constexpr const char* kSupported = "grey, RGB and RGBA of 8 and 16 bits are supported";
  if (!layout.IsGrey() && layout.photometric != PHOTOMETRIC_RGB) {
    throw Failure("{} holds {}; {}", path, OtherKind(layout.photometric), kSupported);
  }
  if ((layout.bits != 8 && layout.bits != 16) || layout.sampleFormat != SAMPLEFORMAT_UINT) {
    throw Failure("{} has {} samples of {} bits; {}", path,
                  layout.sampleFormat == SAMPLEFORMAT_UINT     ? "unsigned"
                  : layout.sampleFormat == SAMPLEFORMAT_INT    ? "signed"
                  : layout.sampleFormat == SAMPLEFORMAT_IEEEFP ? "floating-point"
                                                               : "unknown",
                  layout.bits, kSupported);
  }
  const unsigned colours = layout.IsGrey() ? 1 : 3;
  if (layout.channels != colours && layout.channels != colours + 1) {
    throw Failure("{} has {} channels; {}", path, layout.channels, kSupported);
  }
}

// --- The samples ---------------------------------------------------------------------------------

// A rectangle of pixels as libtiff hands it out: of all channels, or of one.
struct Part {
  const unsigned char* data;
  std::uint32_t x, y, width, height;
  std::size_t stride;
};

// `channel` counts where each channel is a plane of its own.
void Place(const Part& part, const Layout& layout, unsigned channel, Raster& raster) {
  const std::size_t sample = raster.bytesPerSample;
  const std::size_t pixel = sample * raster.channels;
  const bool whole = layout.planes == PLANARCONFIG_CONTIG;
  for (std::uint32_t row = 0; row < std::min(part.height, raster.height - part.y); ++row) {
    const std::uint32_t columns = std::min(part.width, raster.width - part.x);
    const unsigned char* source = part.data + row * part.stride;
    unsigned char* destination = raster.Row(part.y + row) + part.x * pixel;
    if (whole) {
      std::memcpy(destination, source, columns * pixel);
      continue;
    }
    destination += channel * sample;
    for (std::uint32_t i = 0; i < columns; ++i, source += sample, destination += pixel) {
      std::memcpy(destination, source, sample);
    }
  }
}

// Where libtiff decodes to: zero wherever it leaves a sample out. Pages that no sample reached were
// never taken.
class Block {
 public:
  explicit Block(std::size_t size)
      : m_bytes(static_cast<unsigned char*>(std::calloc(size, 1))), m_size(size) {
    if (m_bytes == nullptr) {
      throw std::bad_alloc();
    }
  }

  unsigned char* data() const { return m_bytes.get(); }
  void Clear() { std::memset(m_bytes.get(), 0, m_size); }

 private:
  struct Free {
    void operator()(unsigned char* bytes) const { std::free(bytes); }
  };

  std::unique_ptr<unsigned char[], Free> m_bytes;
  std::size_t m_size;
};

// libtiff's sizes are signed and 0 on failure.
bool IsSize(tmsize_t size, std::size_t atLeast) {
  return size > 0 && static_cast<std::size_t>(size) >= atLeast;
}

bool ReadLines(TIFF* tiff, const Layout& layout, unsigned channel, Raster& raster) {
  const std::size_t channels = layout.planes == PLANARCONFIG_CONTIG ? layout.channels : 1;
  const tmsize_t size = TIFFScanlineSize(tiff);
  if (!IsSize(size, layout.width * channels * layout.BytesPerSample())) {
    return false;
  }
  Block line(static_cast<std::size_t>(size));
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    if (TIFFReadScanline(tiff, line.data(), y, static_cast<std::uint16_t>(channel)) < 0) {
      return false;
    }
    Place({line.data(), 0, y, layout.width, 1, static_cast<std::size_t>(size)}, layout, channel,
          raster);
    line.Clear();
  }
  return true;
}

// A tile may be larger than its picture, but not by much unless the file can fill it.
bool IsPlausibleTile(std::uint64_t size, const Raster& raster, std::uint64_t fileSize) {
  constexpr std::uint64_t kBestRatio = 1032;  // of deflate
  return size / 4 <= raster.bytes.size || size / kBestRatio <= fileSize;
}

bool ReadTiles(TIFF* tiff, const Layout& layout, unsigned channel, Raster& raster) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &width);
  TIFFGetField(tiff, TIFFTAG_TILELENGTH, &height);
  const std::size_t channels = layout.planes == PLANARCONFIG_CONTIG ? layout.channels : 1;
  const std::size_t stride = width * channels * layout.BytesPerSample();
  const tmsize_t size = TIFFTileSize(tiff);
  if (width == 0 || height == 0 || !IsSize(size, stride * height)) {
    return false;
  }
  Source& source = *static_cast<Source*>(TIFFClientdata(tiff));
  if (!IsPlausibleTile(static_cast<std::uint64_t>(size), raster, source.bytes.size)) {
    source.Note(fmt::format("{} bytes cannot hold tiles of {} x {} pixels", source.bytes.size,
                            width, height)
                    .c_str());
    return false;
  }
  Block tile(static_cast<std::size_t>(size));
  for (std::uint64_t y = 0; y < layout.height; y += height) {
    for (std::uint64_t x = 0; x < layout.width; x += width) {
      const auto left = static_cast<std::uint32_t>(x);
      const auto top = static_cast<std::uint32_t>(y);
      if (TIFFReadTile(tiff, tile.data(), left, top, 0, static_cast<std::uint16_t>(channel)) < 0) {
        return false;
      }
      Place({tile.data(), left, top, width, height, stride}, layout, channel, raster);
      tile.Clear();
    }
  }
  return true;
}

bool ReadSamples(TIFF* tiff, const Layout& layout, Raster& raster) {
  const unsigned planes = layout.planes == PLANARCONFIG_CONTIG ? 1 : layout.channels;
  for (unsigned channel = 0; channel < planes; ++channel) {
    const bool read = TIFFIsTiled(tiff) != 0 ? ReadTiles(tiff, layout, channel, raster)
                                             : ReadLines(tiff, layout, channel, raster);
    if (!read) {
      return false;
    }
  }
  return true;
}

// A file's byte order is libtiff's affair; words come in the host's.
void ToHighByteFirst(Raster& raster) {
  if (raster.bytesPerSample == 2 && std::endian::native == std::endian::little) {
    unsigned char* bytes = raster.bytes.data.get();
    for (std::size_t i = 0; i < raster.bytes.size; i += 2) {
      std::swap(bytes[i], bytes[i + 1]);
    }
  }
}

// Alpha, if there is any, stays.
void InvertGrey(Raster& raster) {
  const std::size_t pixel = std::size_t{raster.channels} * raster.bytesPerSample;
  unsigned char* bytes = raster.bytes.data.get();
  for (std::size_t i = 0; i < raster.bytes.size; i += pixel) {
    for (std::size_t byte = 0; byte < raster.bytesPerSample; ++byte) {
      bytes[i + byte] = static_cast<unsigned char>(~bytes[i + byte]);
    }
  }
}

// --- Writing -------------------------------------------------------------------------------------

// Where libtiff writes: it goes back to fill in what it learns later, which a pipe does not allow.
struct Sink {
  std::vector<unsigned char> bytes;
  std::uint64_t position = 0;
  char message[200] = "";
};

extern "C" {

static tmsize_t OnReadBack(thandle_t handle, void* destination, tmsize_t size) {
  auto* sink = static_cast<Sink*>(handle);
  const std::uint64_t left =
      sink->bytes.size() - std::min<std::uint64_t>(sink->position, sink->bytes.size());
  const std::uint64_t count =
      std::min(left, static_cast<std::uint64_t>(std::max<tmsize_t>(size, 0)));
  if (count != 0) {
    std::memcpy(destination, sink->bytes.data() + sink->position, count);
  }
  sink->position += count;
  return static_cast<tmsize_t>(count);
}

static tmsize_t OnStore(thandle_t handle, void* source, tmsize_t size) {
  auto* sink = static_cast<Sink*>(handle);
  const std::uint64_t end = sink->position + static_cast<std::uint64_t>(size);
  try {
    sink->bytes.resize(std::max<std::uint64_t>(sink->bytes.size(), end));
  } catch (const std::bad_alloc&) {
    return -1;
  }
  std::memcpy(sink->bytes.data() + sink->position, source, static_cast<std::size_t>(size));
  sink->position = end;
  return size;
}

static toff_t OnSeekSink(thandle_t handle, toff_t offset, int whence) {
  auto* sink = static_cast<Sink*>(handle);
  const std::uint64_t base = whence == SEEK_CUR   ? sink->position
                             : whence == SEEK_END ? sink->bytes.size()
                                                  : 0;
  return sink->position = base + offset;
}

static toff_t OnSizeOfSink(thandle_t handle) {
  return static_cast<Sink*>(handle)->bytes.size();
}

static int OnSinkError(TIFF*, void* handle, const char*, const char* format, va_list arguments) {
  auto* sink = static_cast<Sink*>(handle);
  std::vsnprintf(sink->message, sizeof sink->message, format, arguments);
  return 1;
}
}

Tiff Open(Sink& sink, const char* mode) {
  const std::unique_ptr<TIFFOpenOptions, Closer> options(TIFFOpenOptionsAlloc());
  if (options == nullptr) {
    throw std::bad_alloc();
  }
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnSinkError, &sink);
  return Tiff(TIFFClientOpenExt("", mode, &sink, OnReadBack, OnStore, OnSeekSink, OnClose,
                                OnSizeOfSink, nullptr, nullptr, options.get()));
}

void Describe(TIFF* tiff, const Raster& raster) {
  constexpr std::uint32_t kStripBytes = 1U << 16;
  const auto rowSize = static_cast<std::uint32_t>(raster.RowSize());
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, raster.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, raster.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8 * raster.bytesPerSample);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, raster.channels);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
               raster.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, std::max(1U, kStripBytes / rowSize));
  if (raster.channels == 4) {
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
  }
}

bool WriteSamples(TIFF* tiff, const Raster& raster) {
  Bytes line(raster.RowSize());
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    std::memcpy(line.data.get(), raster.Row(y), line.size);
    if (raster.bytesPerSample == 2 && std::endian::native == std::endian::little) {
      TIFFSwabArrayOfShort(reinterpret_cast<std::uint16_t*>(line.data.get()),
                           static_cast<tmsize_t>(line.size / 2));
    }
    if (TIFFWriteScanline(tiff, line.data.get(), y, 0) < 0) {
      return false;
    }
  }
  return TIFFWriteDirectory(tiff) != 0;
}

}  // namespace

Raster ReadTiff(const InputFile& file) {
  const Bytes& bytes = file.Read();
  Source source{bytes};
  const bool marked = bytes.size >= 4 && (std::memcmp(bytes.data.get(), "II", 2) == 0 ||
                                          std::memcmp(bytes.data.get(), "MM", 2) == 0);
  const Tiff tiff = marked ? Open(source) : nullptr;
  if (tiff == nullptr) {
    throw Failure("{} is not a TIFF file{}{}", file.path(), marked ? ", or damaged: " : "",
                  source.message.data());
  }
  const Layout layout = LayoutOf(tiff.get());
  RequireSupported(layout, file.path());
  Raster raster =
      NewRaster(file.path(), layout.width, layout.height, layout.channels, layout.BytesPerSample());
  if (!ReadSamples(tiff.get(), layout, raster) || source.damaged) {
    throw Failure("{} is a damaged TIFF file: {}", file.path(),
                  source.message[0] == '\0' ? "its layout is impossible" : source.message.data());
  }
  ToHighByteFirst(raster);
  if (layout.photometric == PHOTOMETRIC_MINISWHITE) {
    InvertGrey(raster);
  }
  return raster;
}

void WriteTiff(const Raster& raster, OutputFile& file) {
  constexpr std::size_t kMostOfClassic = 0xf0000000;  // leaves room for the directory
  Sink sink;
  Tiff tiff = Open(sink, raster.bytes.size > kMostOfClassic ? "w8" : "w");
  if (tiff == nullptr) {
    throw std::bad_alloc();
  }
  Describe(tiff.get(), raster);
  if (!WriteSamples(tiff.get(), raster)) {
    throw Failure("cannot write {}: {}", file.path(), sink.message);
  }
  tiff.reset();
  file.Write(sink.bytes.data(), sink.bytes.size());
}

}  // namespace Korvex2::Io
