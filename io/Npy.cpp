#include "io/Npy.h"

#include <regex.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "io/Failure.h"
#include "io/Names.h"
#include "io/Raster.h"

namespace Korvex2::Io {
namespace {

// Bytes of an element of an array: a sample, or a byte where pixels share bytes.
std::uint32_t ElementSize(const PixelFormatInfo& format) {
  return format.Channels() == 0 ? 1 : format.bitsPerSample / 8;
}

// Whether an array that says no more than its shape is read so.
bool SuggestsItself(const PixelFormatInfo& format) {
  const bool isPicture = format.family == PixelFamily::Grey || format.family == PixelFamily::Rgb;
  return format.convertible && isPicture && format.Channels() != 0 && !format.IsBlueFirst();
}

const PixelFormatInfo& Require(PixelFormat format) {
  const PixelFormatInfo* info = FindPixelFormat(format);
  if (info == nullptr || !info->convertible) {
    throw Failure("{} is no format of arrays", NameOf(format));
  }
  return *info;
}

// --- Reading -------------------------------------------------------------------------------------

struct Header {
  unsigned size = 0;  // of an element
  bool lowByteFirst = true;
  std::vector<std::uint64_t> shape;
  std::size_t dataBegin = 0;
};

std::string HeaderText(const InputFile& file, std::size_t& dataBegin) {
  constexpr std::size_t kLongest = 1024;
  const Bytes& bytes = file.Read();
  const unsigned char* data = bytes.data.get();
  if (bytes.size < 12 || std::memcmp(data, "\x93NUMPY", 6) != 0 || data[6] < 1 || data[6] > 3) {
    throw Failure("{} is not an NPY file", file.path());
  }
  const std::size_t begin = data[6] == 1 ? 10 : 12;
  std::size_t size = data[8] + (std::size_t{data[9]} << 8);
  if (data[6] > 1) {
    size += (std::size_t{data[10]} << 16) + (std::size_t{data[11]} << 24);
  }
  if (size > bytes.size - begin) {
    throw Failure("{} is a damaged NPY file: it ends within its header", file.path());
  }
  dataBegin = begin + size;
  return {reinterpret_cast<const char*>(data + begin), std::min(size, kLongest)};
}

std::vector<std::uint64_t> Numbers(const std::string& text) {
  std::vector<std::uint64_t> numbers;
  const char* next = text.data();
  const char* const end = next + text.size();
  while ((next = std::find_if(next, end, [](char c) { return c >= '0' && c <= '9'; })) != end) {
    std::uint64_t number = 0;
    const auto parsed = std::from_chars(next, end, number);
    numbers.push_back(parsed.ec == std::errc() ? number : 0);
    next = parsed.ptr;
  }
  return numbers;
}

// The first match of an extended regular expression, and then those of its groups, of which each
// takes part in every match; empty where nothing matches. <regex> takes ten times as long to
// compile.
std::vector<std::string> Match(const std::string& text, const char* pattern) {
  regex_t compiled;
  if (regcomp(&compiled, pattern, REG_EXTENDED) != 0) {
    throw std::bad_alloc();
  }
  std::vector<regmatch_t> places(compiled.re_nsub + 1);
  places[0] = {0, static_cast<regoff_t>(text.size())};  // the text may hold zeros
  const bool found =
      regexec(&compiled, text.data(), places.size(), places.data(), REG_STARTEND) == 0;
  regfree(&compiled);
  std::vector<std::string> matches;
  for (const regmatch_t& place : places) {
    if (found) {
      matches.emplace_back(text, static_cast<std::size_t>(place.rm_so),
                           static_cast<std::size_t>(place.rm_eo - place.rm_so));
    }
  }
  return matches;
}

Header ReadHeader(const InputFile& file) {
  Header header;
  const std::string text = HeaderText(file, header.dataBegin);
  const auto type = Match(text, "'descr': *'([<>|=]?)([a-zA-Z])([0-9]{1,3})'");
  const auto shape = Match(text, "'shape': *\\(([0-9, ]*)\\)");
  if (type.empty() || shape.empty()) {
    throw Failure("{} holds no plain array; uint8 and uint16 are supported", file.path());
  }
  if (type[2] != "u" || (type[3] != "1" && type[3] != "2")) {
    throw Failure("{} holds elements of type {}{}; uint8 and uint16 are supported", file.path(),
                  type[2], type[3]);
  }
  if (Match(text, "'fortran_order': *False").empty()) {
    throw Failure("{} is in Fortran order; save numpy.ascontiguousarray(a)", file.path());
  }
  header.size = type[3] == "1" ? 1 : 2;
  header.lowByteFirst =
      type[1] == "<" || (type[1] != ">" && std::endian::native == std::endian::little);
  header.shape = Numbers(shape[1]);
  return header;
}

std::string ShapeText(const Header& header) {
  return fmt::format("{} of uint{}", fmt::join(header.shape, " x "), 8 * header.size);
}

bool Fits(const PixelFormatInfo& format, const Header& header) {
  const std::size_t dimensions = format.Channels() > 1 ? 3 : 2;
  return ElementSize(format) == header.size && header.shape.size() == dimensions &&
         (dimensions == 2 || header.shape[2] == format.Channels());
}

const PixelFormatInfo& Choose(const InputFile& file, const Header& header,
                              const PixelFormatInfo* wanted) {
  if (wanted != nullptr) {
    const PixelFormatInfo& format = Require(wanted->format);
    if (!Fits(format, header)) {
      throw Failure("{} does not hold {}: its shape is {}", file.path(), format.name,
                    ShapeText(header));
    }
    return format;
  }
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (SuggestsItself(format) && Fits(format, header)) {
      return format;
    }
  }
  throw Failure("{} is an array of {}, and no format suggests itself; say which with --from",
                file.path(), ShapeText(header));
}

// The width in pixels of rows of `bytes` bytes of groups.
std::uint64_t GroupedWidth(const InputFile& file, const PixelFormatInfo& format,
                           std::uint64_t bytes) {
  if (bytes % format.bytesPerGroup != 0) {
    throw Failure("{} has rows of {} bytes, and {} needs multiples of {}", file.path(), bytes,
                  format.name, format.bytesPerGroup);
  }
  return bytes / format.bytesPerGroup * format.pixelsPerGroup;
}

std::uint32_t Side(const InputFile& file, std::uint64_t length) {
  constexpr std::uint64_t kMost = 0xffffffff;
  if (length == 0 || length > kMost) {
    throw Failure("{} is {} pixels long at one side; 1 to {} make a frame", file.path(), length,
                  kMost);
  }
  return static_cast<std::uint32_t>(length);
}

void SwapWords(unsigned char* words, std::size_t bytes) {
  for (std::size_t i = 0; i + 1 < bytes; i += 2) {
    std::swap(words[i], words[i + 1]);
  }
}

}  // namespace

Image ReadNpy(const InputFile& file, const PixelFormatInfo* wanted, BayerTileFormat tile) {
  const Header header = ReadHeader(file);
  const PixelFormatInfo& format = Choose(file, header, wanted);
  const std::uint32_t height = Side(file, header.shape[0]);
  const std::uint32_t width = Side(
      file, format.Channels() == 0 ? GroupedWidth(file, format, header.shape[1]) : header.shape[1]);
  const Bytes& bytes = file.Read();
  const std::uint64_t size = PackedSize(format, std::uint64_t{width} * height);
  if (bytes.size - header.dataBegin != size) {
    throw Failure("{} is a damaged NPY file: {} bytes follow the header of {}", file.path(),
                  bytes.size - header.dataBegin, ShapeText(header));
  }
  Image image = NewImage(width, height, format, tile);
  std::memcpy(image.GetData(), bytes.data.get() + header.dataBegin, size);
  if (header.size == 2 && header.lowByteFirst != IsLowByteFirst(format)) {
    SwapWords(image.GetData(), size);
  }
  return image;
}

void WriteNpy(const Image& image, OutputFile& file, const WriteOptions& /*options*/) {
  const PixelFormatInfo& format = Require(image.GetPixelFormat());
  if (format.Channels() == 0 && image.GetCols() % format.pixelsPerGroup != 0) {
    throw Failure("rows of {} pixels of {} share bytes; such an array needs a multiple of {}",
                  image.GetCols(), format.name, format.pixelsPerGroup);
  }
  const std::uint64_t size = PackedSize(format, std::uint64_t{image.GetCols()} * image.GetRows());
  const std::uint64_t columns = format.Channels() == 0 ? size / image.GetRows() : image.GetCols();
  std::string header =
      fmt::format("{{'descr': '{}u{}', 'fortran_order': False, 'shape': ({}, {}{}), }}",
                  ElementSize(format) == 1 ? "|"
                  : IsLowByteFirst(format) ? "<"
                                           : ">",
                  ElementSize(format), image.GetRows(), columns,
                  format.Channels() > 1 ? fmt::format(", {}", format.Channels()) : std::string());
  constexpr std::size_t kBefore = 10;
  constexpr std::size_t kAlignment = 64;
  header.append(kAlignment - 1 - (kBefore + header.size()) % kAlignment, ' ');
  header += '\n';
  const unsigned char magic[kBefore] = {0x93,
                                        'N',
                                        'U',
                                        'M',
                                        'P',
                                        'Y',
                                        1,
                                        0,
                                        static_cast<unsigned char>(header.size()),
                                        static_cast<unsigned char>(header.size() >> 8)};
  file.Write(magic, sizeof magic);
  file.Write(header.data(), header.size());
  file.Write(image.GetData(), static_cast<std::size_t>(size));
}

}  // namespace Korvex2::Io
