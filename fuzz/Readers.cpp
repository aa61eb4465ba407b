// Every file reader of the tool on any bytes, under any name and with anything said on the command
// line: it gives a picture or says in one sentence what is wrong. What it gives can be written, and
// comes back the same.

#include <sys/mman.h>
#include <unistd.h>
#include <zlib.h>

#include <new>
#include <optional>

#include "Folder.h"
#include "Fuzz.h"
#include "LimitedMemory.h"
#include "ReaderCase.h"
#include "analysis/Candidates.h"
#include "io/Containers.h"
#include "io/Headerless.h"
#include "terminal/Failure.h"

namespace Korvex2::Fuzz {
namespace {

using namespace Tool;

constexpr std::size_t kLargestBlock = std::size_t{16} << 20;

/// A file in memory that stands in the folder under every extension there is.
class FileInMemory {
 public:
  explicit FileInMemory(const Folder& folder) : m_fd(memfd_create("case", MFD_CLOEXEC)) {
    const std::string target = "/proc/self/fd/" + std::to_string(m_fd);
    for (const std::string_view extension : kExtensions) {
      if (symlink(target.c_str(), folder.Path("in" + std::string(extension)).c_str()) != 0) {
        Fail("cannot make a link");
      }
    }
  }

  void Set(std::span<const std::uint8_t> bytes) const {
    if (ftruncate(m_fd, 0) != 0 ||
        pwrite(m_fd, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
      Fail("cannot write the file in memory");
    }
  }

 private:
  int m_fd;
};

std::uint32_t BigEndian(const std::uint8_t* p) {
  return std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 | p[3];
}

// A changed byte would otherwise end at the checksum of its chunk.
void RepairPngChecksums(Bytes& png) {
  for (std::size_t at = 8; at + 12 <= png.size();) {
    const std::uint64_t length = BigEndian(&png[at]);
    if (length > png.size() - at - 12) return;
    const auto crc =
        static_cast<std::uint32_t>(crc32(0, &png[at + 4], static_cast<uInt>(length + 4)));
    for (int i = 0; i < 4; ++i) {
      png[at + 8 + length + static_cast<unsigned>(i)] =
          static_cast<std::uint8_t>(crc >> (24 - 8 * i));
    }
    at += 12 + length;
  }
}

InputShape ShapeOf(const ReaderHeader& h) {
  constexpr BayerTileFormat kTiles[] = {NONE, RGGB, GRBG, GBRG, BGGR};
  const auto formats = PixelFormats();
  InputShape shape;
  if ((h.said & kSaysFormat) != 0) shape.format = &Pick(formats, h.format);
  // The command line takes no 0.
  if ((h.said & kSaysWidth) != 0) shape.width = std::max(h.width, 1U);
  if ((h.said & kSaysHeight) != 0) shape.height = std::max(h.height, 1U);
  if ((h.said & kSaysTile) != 0) shape.tile = Pick(kTiles, h.tile);
  const Level level = {h.level == 0 ? std::nullopt : std::optional<std::uint32_t>(h.level)};
  if ((h.said & kSaysBlack) != 0) shape.levels.black = level;
  if ((h.said & kSaysScale) != 0) shape.levels.white = level;
  return shape;
}

// The reader's own failures are fine; anything else ends the process.
std::optional<Image> Read(const std::string& path, const InputShape& shape) {
  const LimitedMemory limit(kLargestBlock);
  try {
    return ReadImage(path, shape);
  } catch (const Failure& failure) {
    if (std::string_view(failure.what()).empty()) Fail("a failure without a word");
  } catch (const std::bad_alloc&) {
  }
  return std::nullopt;
}

bool Same(const Image& a, const Image& b) {
  return a.GetRows() == b.GetRows() && a.GetCols() == b.GetCols() &&
         a.GetPixelFormat() == b.GetPixelFormat() && a.GetDataSize() == b.GetDataSize() &&
         std::equal(a.GetData(), a.GetData() + a.GetDataSize(), b.GetData());
}

void RequireComesBack(const Image& image, const std::string& path) {
  WriteImage(image, path);
  InputShape shape;
  shape.format = FindPixelFormat(image.GetPixelFormat());
  shape.width = image.GetCols();
  shape.height = image.GetRows();
  shape.tile = image.GetBayerTileFormat();
  if (!Same(image, ReadImage(path, shape))) Fail(path + " does not hold the picture written");
}

// An array holds rows of whole groups of pixels.
bool IsArray(const Image& image, const PixelFormatInfo& format) {
  return format.convertible && image.GetCols() % format.pixelsPerGroup == 0;
}

void Check(const Image& image, const Folder& folder) {
  if (image.GetData() == nullptr || image.GetRows() == 0 || image.GetCols() == 0) {
    Fail("an image without pixels");
  }
  constexpr std::uint64_t kSmall = 4096;
  if (std::uint64_t{image.GetRows()} * image.GetCols() > kSmall) return;
  const PixelFormatInfo& format = *FindPixelFormat(image.GetPixelFormat());
  for (const std::string_view name : {"out.png", "out.pam", "out.tif", "out.raw", "out.npy"}) {
    const std::string path = folder.Path(name);
    if (name == "out.npy" && !IsArray(image, format)) continue;
    if (Holds(ContainerOf(path), format.format)) RequireComesBack(image, path);
  }
}

// What a file without a header may be has the size of the file, its last group completed or not.
void RequireCandidatesFit(const Bytes& bytes, const InputShape& shape) {
  Tool::Bytes file(bytes.size());
  std::copy(bytes.begin(), bytes.end(), file.data.get());
  for (const Candidate& candidate :
       FindCandidates(file, {shape.format, shape.width, shape.height})) {
    const std::uint64_t pixels = std::uint64_t{candidate.width} * candidate.height;
    if (PackedSize(*candidate.format, pixels) != file.size &&
        GroupedSize(*candidate.format, pixels) != file.size) {
      Fail("a candidate of another size");
    }
  }
}

void Run(const Case<ReaderHeader>& c) {
  static const Folder folder;
  static const FileInMemory file(folder);
  const std::string_view extension = Pick(kExtensions, c.header.extension);
  Bytes bytes(c.rest.begin(), c.rest.end());
  if (extension == ".png" && c.header.damagedChecksums % 2 == 0) RepairPngChecksums(bytes);
  file.Set(bytes);
  const InputShape shape = ShapeOf(c.header);
  if (const auto image = Read(folder.Path("in" + std::string(extension)), shape)) {
    Check(*image, folder);
  } else if (extension == ".raw") {
    RequireCandidatesFit(bytes, shape);
  }
}

}  // namespace
}  // namespace Korvex2::Fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Korvex2::Fuzz::Run({data, size});
  return 0;
}
