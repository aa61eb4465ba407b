// The very first conversion of a process, when there is no memory at all: what is looked up once
// must not need any. A program of its own for each case, since a second conversion is no first one.
//
//   first_conversion SOURCE TARGET converts|black|fails

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "Image.h"
#include "ImageConverterARMStub.h"
#include "PixelFormats.h"
#include "support/Allocation.h"

namespace Korvex2::Test {
namespace {

constexpr unsigned kRows = 48;
constexpr unsigned kCols = 64;
constexpr std::size_t kBytes = std::size_t{kRows} * kCols * 8;

unsigned char sourceBytes[kBytes];
unsigned char destinationBytes[2][kBytes];  // without memory, and with

Error ConvertInto(unsigned char* bytes, const Image& source, PixelFormat target) {
  Image destination(bytes, kBytes);
  return ImageConverter().Convert(&source, target, &destination);
}

bool IsBlack(const unsigned char* bytes) {
  return std::all_of(bytes, bytes + kBytes, [](unsigned char byte) { return byte == 0; });
}

bool Holds(std::string_view expected, const Error& error) {
  const bool same =
      std::equal(destinationBytes[0], destinationBytes[0] + kBytes, destinationBytes[1]);
  if (expected == "converts") {
    return error == VORERROR_OK && same;
  }
  const ErrorType code = expected == "fails" ? VORERROR_FAILED : VORERROR_OK;
  return error == code && IsBlack(destinationBytes[0]) && !same;
}

int Run(std::string_view sourceName, std::string_view targetName, std::string_view expected) {
  const PixelFormatInfo* const from = FindPixelFormat(sourceName);
  const PixelFormatInfo* const to = FindPixelFormat(targetName);
  if (from == nullptr || to == nullptr) return 2;
  Image source(sourceBytes, kBytes);
  const unsigned stride = PackedStride(kCols, from->bitsPerPixel);
  if (source.SetDimensions(kRows, kCols, stride, from->format, RGGB) != VORERROR_OK) return 2;
  for (std::size_t i = 0; i < kBytes; ++i) sourceBytes[i] = static_cast<unsigned char>(i * 7 + 1);

  Error first;
  {
    using enum AllocationFault::Of;
    const AllocationFault pixels(PixelBuffers, 1, AllocationFault::Extent::AllFollowing);
    const AllocationFault others(AnythingElse, 1, AllocationFault::Extent::AllFollowing);
    first = ConvertInto(destinationBytes[0], source, to->format);
  }
  if (ConvertInto(destinationBytes[1], source, to->format) != VORERROR_OK) return 2;
  if (Holds(expected, first)) return 0;
  std::fprintf(stderr, "%.*s was expected; the answer is %s\n", static_cast<int>(expected.size()),
               expected.data(), GetErrorTypeName(first.GetType()));
  return 1;
}

}  // namespace
}  // namespace Korvex2::Test

int main(int argc, char** argv) {
  return argc == 4 ? Korvex2::Test::Run(argv[1], argv[2], argv[3]) : 2;
}
