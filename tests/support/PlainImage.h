#pragma once

/// Images of the library's own class on memory of the test's.

#include <cstddef>

#include "Image.h"

namespace Korvex2::Test {

/// A row of `pixels` pixels on exactly `size` bytes, without a format. Being a plain Image, it is
/// what the vector kernels and the walk in pieces take; a LentImage is not.
inline Image PlainImage(unsigned pixels, unsigned char* bytes, std::size_t size) {
  static unsigned char nothing;  // a shaped image has a buffer, even of no bytes
  Image image(size == 0 ? &nothing : bytes, size == 0 ? 1 : size);
  (void)image.SetDimensions(1, pixels, static_cast<unsigned>(size), UNSPECIFIED_PIXEL_FORMAT, NONE);
  return image;
}

}  // namespace Korvex2::Test
