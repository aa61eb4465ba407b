#include "io/Png.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <new>

#include "io/Failure.h"

namespace Korvex2::Io {
namespace {

// libpng reports errors by a long jump, which must not skip destructors. So each function that
// calls it sets its own place to return to, and has no locals that need destruction.

struct Message {
  char text[200] = "";
};

extern "C" void OnError(png_structp png, png_const_charp text) {
  auto* message = static_cast<Message*>(png_get_error_ptr(png));
  std::strncpy(message->text, text, sizeof message->text - 1);
  png_longjmp(png, 1);
}

extern "C" void OnWarning(png_structp, png_const_charp) {}

struct Source {
  const unsigned char* next;
  std::size_t left;
};

extern "C" void OnRead(png_structp png, png_bytep destination, std::size_t count) {
  auto* source = static_cast<Source*>(png_get_io_ptr(png));
  if (count > source->left) {
    png_error(png, "the file ends too early");
  }
  std::memcpy(destination, source->next, count);
  source->next += count;
  source->left -= count;
}

class Reader {
 public:
  explicit Reader(const Bytes& bytes) : m_source{bytes.data.get(), bytes.size} {
    m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &m_message, OnError, OnWarning);
    m_info = m_png == nullptr ? nullptr : png_create_info_struct(m_png);
    if (m_info == nullptr) {
      png_destroy_read_struct(&m_png, nullptr, nullptr);
      throw std::bad_alloc();
    }
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { png_destroy_read_struct(&m_png, &m_info, nullptr); }

  const char* message() const { return m_message.text; }

  // False: message() says why.
  bool ReadHeader() {
    if (setjmp(png_jmpbuf(m_png)) != 0) {
      return false;
    }
    png_set_user_limits(m_png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    // Of text, profiles and the like nothing is read: they may unpack to gigabytes.
    png_set_keep_unknown_chunks(m_png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_read_fn(m_png, &m_source, OnRead);
    png_read_info(m_png, m_info);
    return true;
  }

  // What the file stores, for what it announces.
  std::uint64_t StoredSize() const {
    return std::uint64_t{png_get_rowbytes(m_png, m_info)} * png_get_image_height(m_png, m_info);
  }

  // libpng takes memory for whole rows here.
  bool Begin() {
    if (setjmp(png_jmpbuf(m_png)) != 0) {
      return false;
    }
    png_set_expand(m_png);  // palettes, 1-, 2- and 4-bit grey, transparent colours
    m_passes = png_set_interlace_handling(m_png);
    png_read_update_info(m_png, m_info);
    return true;
  }

  bool ReadRows(Raster& raster) {
    if (setjmp(png_jmpbuf(m_png)) != 0) {
      return false;
    }
    for (int pass = 0; pass < m_passes; ++pass) {
      for (std::uint32_t y = 0; y < raster.height; ++y) {
        png_read_row(m_png, raster.Row(y), nullptr);
      }
    }
    png_read_end(m_png, nullptr);
    return true;
  }

  Raster MakeRaster(const std::string& path) const {
    return NewRaster(path, png_get_image_width(m_png, m_info), png_get_image_height(m_png, m_info),
                     png_get_channels(m_png, m_info), png_get_bit_depth(m_png, m_info) / 8U);
  }

 private:
  Message m_message;
  Source m_source;
  int m_passes = 1;
  png_structp m_png;
  png_infop m_info;
};

extern "C" void OnWrite(png_structp png, png_bytep data, std::size_t size) {
  if (std::fwrite(data, 1, size, static_cast<std::FILE*>(png_get_io_ptr(png))) != size) {
    png_error(png, std::strerror(errno));
  }
}

extern "C" void OnFlush(png_structp) {}  // whoever closes the file flushes it

class Writer {
 public:
  Writer() {
    m_png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &m_message, OnError, OnWarning);
    m_info = m_png == nullptr ? nullptr : png_create_info_struct(m_png);
    if (m_info == nullptr) {
      png_destroy_write_struct(&m_png, nullptr);
      throw std::bad_alloc();
    }
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { png_destroy_write_struct(&m_png, &m_info); }

  const char* message() const { return m_message.text; }

  bool Write(const Raster& raster, std::FILE* stream) {
    if (setjmp(png_jmpbuf(m_png)) != 0) {
      return false;
    }
    png_set_user_limits(m_png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_write_fn(m_png, stream, OnWrite, OnFlush);
    png_set_IHDR(m_png, m_info, raster.width, raster.height,
                 static_cast<int>(8 * raster.bytesPerSample), ColorType(raster.channels),
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(m_png, m_info);
    for (std::uint32_t y = 0; y < raster.height; ++y) {
      png_write_row(m_png, raster.Row(y));
    }
    png_write_end(m_png, nullptr);
    return true;
  }

 private:
  static int ColorType(unsigned channels) {
    return channels == 1   ? PNG_COLOR_TYPE_GRAY
           : channels == 3 ? PNG_COLOR_TYPE_RGB
                           : PNG_COLOR_TYPE_RGB_ALPHA;
  }

  Message m_message;
  png_structp m_png;
  png_infop m_info;
};

// A header can claim any size; compressed data shrinks to no less than 1/1032 of what it was.
void RequirePlausibleSize(const InputFile& file, std::uint64_t storedSize) {
  constexpr std::uint64_t kBestRatio = 1032;
  if (storedSize / kBestRatio > file.size()) {
    throw Failure("{} is truncated: {} bytes cannot hold the picture that it announces",
                  file.path(), file.size());
  }
}

[[noreturn]] void FailAsDamaged(const InputFile& file, const Reader& reader) {
  throw Failure("{} is a damaged PNG file: {}", file.path(), reader.message());
}

}  // namespace

Raster ReadPng(const InputFile& file) {
  const Bytes& bytes = file.Read();
  if (bytes.size < 8 || png_sig_cmp(bytes.data.get(), 0, 8) != 0) {
    throw Failure("{} is not a PNG file", file.path());
  }
  Reader reader(bytes);
  if (!reader.ReadHeader()) {
    FailAsDamaged(file, reader);
  }
  RequirePlausibleSize(file, reader.StoredSize());
  if (!reader.Begin()) {
    FailAsDamaged(file, reader);
  }
  Raster raster = reader.MakeRaster(file.path());
  if (!reader.ReadRows(raster)) {
    FailAsDamaged(file, reader);
  }
  return raster;
}

void WritePng(const Raster& raster, OutputFile& file) {
  Writer writer;
  if (!writer.Write(raster, file.stream())) {
    throw Failure("cannot write {}: {}", file.path(), writer.message());
  }
}

}  // namespace Korvex2::Io
