#include "io/LosslessJpeg.h"

#include <algorithm>
#include <cstddef>

namespace Korvex2::Io {
namespace {

// The second byte of markers; the first is 0xff.
enum Marker : unsigned char {
  kStartOfFrame = 0xc0,
  kStartOfLosslessFrame = 0xc3,
  kTables = 0xc4,
  kLastStartOfFrame = 0xcf,
  kFirstRestart = 0xd0,
  kLastRestart = 0xd7,
  kStartOfImage = 0xd8,
  kEndOfImage = 0xd9,
  kStartOfScan = 0xda,
  kFill = 0xff,
};

std::size_t Word(std::span<const unsigned char> bytes, std::size_t at) {
  return std::size_t{bytes[at]} << 8 | bytes[at + 1];
}

bool IsFrame(unsigned char marker) {
  return marker >= kStartOfFrame && marker <= kLastStartOfFrame && marker != kTables;
}

// Words of up to 16 bits and components of one size, as sensors have them. The segment begins with
// its length.
bool IsPlainFrame(std::span<const unsigned char> segment) {
  constexpr unsigned char kOneByOne = 0x11;
  return segment.size() >= 11 && segment[2] >= 1 && segment[2] <= 16 && segment[7] >= 1 &&
         segment[7] <= 4 && segment[9] == kOneByOne;
}

// Where the marker lies that ends the samples from `at` on: a 0xff among them is followed by 0, and
// any number of them may stand before a marker.
std::size_t EndOfSamples(std::span<const unsigned char> bytes, std::size_t at) {
  while (true) {
    const auto mark = std::find(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end(), 0xff);
    at = static_cast<std::size_t>(mark - bytes.begin());
    if (bytes.size() - at < 2) {
      return bytes.size();
    }
    const unsigned char marker = bytes[at + 1];
    if (marker == kFill) {
      ++at;
    } else if (marker == 0 || (marker >= kFirstRestart && marker <= kLastRestart)) {
      at += 2;
    } else {
      return at;
    }
  }
}

}  // namespace

std::optional<LosslessJpeg> FindLosslessJpeg(std::span<const unsigned char> bytes,
                                             std::size_t gap) {
  if (bytes.size() < 2 || bytes[0] != 0xff || bytes[1] != kStartOfImage) {
    return std::nullopt;
  }
  std::optional<LosslessJpeg> found;
  for (std::size_t at = 2; at + 4 <= bytes.size() && bytes[at] == 0xff;) {
    const unsigned char marker = bytes[at + 1];
    const std::size_t length = Word(bytes, at + 2);
    if (length < 2 || length > bytes.size() - at - 2) {
      return std::nullopt;
    }
    const std::span<const unsigned char> segment = bytes.subspan(at + 2, length);
    at += 2 + length;
    if (IsFrame(marker)) {
      if (marker != kStartOfLosslessFrame || found || !IsPlainFrame(segment)) {
        return std::nullopt;
      }
      found = {Word(segment, 3), Word(segment, 5), segment[7], 0};
      at += found->components == 1 ? gap : 0;
    }
    if (marker == kStartOfScan) {
      at = EndOfSamples(bytes, at);
      if (found && bytes.size() - at >= 2 && bytes[at + 1] == kEndOfImage) {
        found->size = at + 2;
      }
      return found;
    }
  }
  return std::nullopt;
}

}  // namespace Korvex2::Io
