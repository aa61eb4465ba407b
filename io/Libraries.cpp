#include "io/Libraries.h"

#include <fmt/format.h>
#include <libraw/libraw.h>
#include <png.h>
#include <tiffio.h>

namespace Korvex2::Io {
namespace {

// From "LIBTIFF, Version 4.5.0\nCopyright ...".
std::string TiffVersion() {
  const std::string text = TIFFGetVersion();
  const std::size_t begin = text.find("Version ");
  return begin == std::string::npos ? "" : text.substr(begin + 8, text.find('\n') - begin - 8);
}

}  // namespace

std::string Libraries() {
  return fmt::format("libpng {}, libtiff {}, LibRaw {}", png_get_libpng_ver(nullptr), TiffVersion(),
                     libraw_version());
}

}  // namespace Korvex2::Io
