// Small files of every kind that the readers know, made by the libraries that read them, by the
// tool's own writers, and by hand where neither makes them.

#include <png.h>
#include <sys/mman.h>
#include <tiffio.h>
#include <unistd.h>

#include <fmt/format.h>
#include <csetjmp>

#include "Folder.h"
#include "Fuzz.h"
#include "PixelFormats.h"
#include "ReaderCase.h"
#include "io/Containers.h"

namespace Korvex2::Fuzz {
namespace {

using namespace Io;

struct Size {
  std::uint32_t width;
  std::uint32_t height;
};

constexpr std::uint32_t kWidth = 9;
constexpr std::uint32_t kHeight = 7;
constexpr Size kPicture = {kWidth, kHeight};
constexpr Size kMosaic = {32, 24};  // smaller ones are none to LibRaw

std::uint8_t Sample(std::size_t i) {
  return static_cast<std::uint8_t>(i * 37 + i / 5);
}

Bytes Samples(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = Sample(i);
  return bytes;
}

std::uint8_t NumberOf(std::string_view extension) {
  const auto* found = std::ranges::find(kExtensions, extension);
  return static_cast<std::uint8_t>(found - std::begin(kExtensions));
}

Seed Case(const std::string& name, std::string_view extension, const Bytes& file,
          ReaderHeader header = {}) {
  header.extension = NumberOf(extension);
  return {name + std::string(extension), Encode(header, file)};
}

// --- What the tool writes itself.

// An array's rows are whole groups of pixels.
Image Written(std::string_view extension, const PixelFormatInfo& format) {
  Image image = NewImage(extension == ".npy" ? 12 : kWidth, kHeight, format, NONE);
  for (std::size_t i = 0; i < image.GetDataSize(); ++i) image.GetData()[i] = Sample(i);
  return image;
}

void AddWritten(std::vector<Seed>& seeds, const Folder& folder) {
  constexpr std::string_view kWritten[] = {".png", ".pnm", ".pam", ".tif", ".raw", ".npy"};
  std::uint8_t number = 0;
  for (const PixelFormatInfo& format : PixelFormats()) {
    for (const std::string_view extension : kWritten) {
      const std::string name = "written" + std::string(extension);
      if (!Holds(ContainerOf(name), format.format)) continue;
      if (extension == ".npy" && !format.convertible) continue;
      WriteImage(Written(extension, format), folder.Path(name));
      ReaderHeader header = {kWidth, kHeight, 0, 0, number, 1, 0, 0, 0};
      if (extension == ".npy") header.said = kSaysFormat;
      if (extension == ".raw") header.said = kSaysFormat | kSaysWidth | kSaysHeight | kSaysTile;
      seeds.push_back(Case(std::string(format.name), extension, folder.Read(name), header));
    }
    ++number;
  }
}

// With nothing said of them they are guessed.
void AddUnknown(std::vector<Seed>& seeds) {
  seeds.push_back(Case("unknown", ".raw", Samples(32 * 24)));
  seeds.push_back(Case("nothing", ".raw", {}));
}

void AddText(std::vector<Seed>& seeds) {
  const auto add = [&seeds](const std::string& name, std::string_view text) {
    seeds.push_back(Case(name, ".pnm", Bytes(text.begin(), text.end())));
  };
  add("grey-text", "P2\n# a comment\n3 2\n100\n0 1 2\n99 100 50\n");
  add("colour-text", "P3 1 2 4095 0 1 4095 7 8 9");
  add("scaled", "P5 2 2 40\n\1\2\3\50");
  add("deep", "P6 1 1 4095\n\1\2\3\4\5\6");
  add("grey-alpha",
      "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nabcd");
  add("large-claim", "P5 4294967295 4294967295 255\n1234");
}

// --- NPY as NumPy writes it and the tool does not.

struct NpyVariant {
  const char* name;
  std::uint8_t version;
  const char* type;
  const char* fortran;
  const char* shape;
  std::size_t bytes;
};

constexpr NpyVariant kNpyVariants[] = {
    // clang-format off
    {"version2",    2, "<u2", "False", "7, 9",    126},
    {"version3",    3, "|u1", "False", "7, 9, 3", 189},
    {"big-endian",  1, ">u2", "False", "7, 9, 3", 378},
    {"fortran",     1, "|u1", "True",  "7, 9",    63},
    {"large-claim", 1, "<u2", "False", "1073741824, 1073741824, 3", 0},  // 3 times 2^64 bits
    // clang-format on
};

Bytes NpyOf(const NpyVariant& variant) {
  const std::size_t lengthBytes = variant.version == 1 ? 2 : 4;
  std::string header = fmt::format("{{'descr': '{}', 'fortran_order': {}, 'shape': ({}), }}",
                                   variant.type, variant.fortran, variant.shape);
  header.resize(127 - 8 - lengthBytes, ' ');
  header += '\n';
  Bytes bytes = {0x93, 'N', 'U', 'M', 'P', 'Y', variant.version, 0};
  bytes.push_back(static_cast<std::uint8_t>(header.size()));
  bytes.resize(8 + lengthBytes);
  bytes.insert(bytes.end(), header.begin(), header.end());
  const Bytes samples = Samples(variant.bytes);
  bytes.insert(bytes.end(), samples.begin(), samples.end());
  return bytes;
}

void AddNpy(std::vector<Seed>& seeds) {
  for (const NpyVariant& variant : kNpyVariants) {
    seeds.push_back(Case(variant.name, ".npy", NpyOf(variant)));
  }
}

// --- PNG in the variants that the tool reads and does not write.

extern "C" void AppendPng(png_structp png, png_bytep data, std::size_t size) {
  auto* bytes = static_cast<Bytes*>(png_get_io_ptr(png));
  bytes->insert(bytes->end(), data, data + size);
}

extern "C" void FlushPng(png_structp) {}

struct PngVariant {
  const char* name;
  int colourType;
  int bits;
  int interlace;
  bool transparent;
};

constexpr PngVariant kPngVariants[] = {
    // clang-format off
    {"palette8",    PNG_COLOR_TYPE_PALETTE,    8,  PNG_INTERLACE_NONE,  false},
    {"palette4",    PNG_COLOR_TYPE_PALETTE,    4,  PNG_INTERLACE_ADAM7, true},
    {"palette1",    PNG_COLOR_TYPE_PALETTE,    1,  PNG_INTERLACE_NONE,  true},
    {"grey1",       PNG_COLOR_TYPE_GRAY,       1,  PNG_INTERLACE_ADAM7, false},
    {"grey2",       PNG_COLOR_TYPE_GRAY,       2,  PNG_INTERLACE_NONE,  true},
    {"grey16",      PNG_COLOR_TYPE_GRAY,       16, PNG_INTERLACE_ADAM7, true},
    {"grey-alpha",  PNG_COLOR_TYPE_GRAY_ALPHA, 8,  PNG_INTERLACE_NONE,  false},
    {"rgb-keyed",   PNG_COLOR_TYPE_RGB,        8,  PNG_INTERLACE_ADAM7, true},
    {"rgba-laced",  PNG_COLOR_TYPE_RGBA,       16, PNG_INTERLACE_ADAM7, false},
    // clang-format on
};

Bytes PngOf(const PngVariant& variant) {
  Bytes bytes;
  Bytes row = Samples(std::size_t{kWidth} * 8);
  png_color palette[16] = {};
  png_byte alpha[16] = {};
  png_color_16 key = {1, 1, 1, 1, 1};
  for (std::size_t i = 0; i < std::size(palette); ++i) {
    palette[i] = {Sample(i), Sample(i + 1), Sample(i + 2)};
    alpha[i] = Sample(3 * i);
  }
  const int colours = variant.bits == 1 ? 2 : 16;
  if (variant.colourType == PNG_COLOR_TYPE_PALETTE) {
    for (std::uint8_t& index : row) index &= variant.bits == 8 ? 15 : 255;
  }
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png)) != 0) Fail(std::string("no PNG ") + variant.name);
  png_set_write_fn(png, &bytes, AppendPng, FlushPng);
  png_set_IHDR(png, info, kWidth, kHeight, variant.bits, variant.colourType, variant.interlace,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (variant.colourType == PNG_COLOR_TYPE_PALETTE) {
    png_set_PLTE(png, info, palette, colours);
    if (variant.transparent) png_set_tRNS(png, info, alpha, colours, nullptr);
  } else if (variant.transparent) {
    png_set_tRNS(png, info, nullptr, 0, &key);
  }
  png_write_info(png, info);
  const int passes = png_set_interlace_handling(png);
  for (std::uint32_t y = 0; y < static_cast<unsigned>(passes) * kHeight; ++y) {
    png_write_row(png, row.data());
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return bytes;
}

// Of which nothing is read.
constexpr std::uint8_t kText[] = {0, 0,   0,   6,   't', 'E', 'X', 't', 'a',
                                  0, 'b', 'c', 'd', 'e', 0,   0,   0,   0};

void AddPng(std::vector<Seed>& seeds) {
  for (const PngVariant& variant : kPngVariants) {
    seeds.push_back(Case(variant.name, ".png", PngOf(variant)));
  }
  // A few bytes that claim gigabytes: the upper bytes of width and height.
  Bytes claim = PngOf(kPngVariants[0]);
  claim[17] = claim[21] = 0x0f;
  seeds.push_back(Case("large-claim", ".png", claim));
  constexpr std::size_t kAfterHeader = 33;
  Bytes file = PngOf(kPngVariants[0]);
  file.insert(file.begin() + kAfterHeader, std::begin(kText), std::end(kText));
  seeds.push_back(Case("text", ".png", file));
}

// --- TIFF, and DNG, which is one.

struct TiffVariant {
  const char* name;
  const char* mode;  // with l or b for the byte order, 8 for large files
  std::uint16_t photometric;
  std::uint16_t channels;
  std::uint16_t bits;
  std::uint16_t compression;
  std::uint16_t planes;
  bool tiled;
};

constexpr TiffVariant kTiffVariants[] = {
    // clang-format off
    {"grey",      "wl",  PHOTOMETRIC_MINISBLACK, 1, 8,  COMPRESSION_NONE,          PLANARCONFIG_CONTIG,   false},
    {"white",     "wb",  PHOTOMETRIC_MINISWHITE, 1, 16, COMPRESSION_PACKBITS,      PLANARCONFIG_CONTIG,   false},
    {"rgb",       "wl",  PHOTOMETRIC_RGB,        3, 8,  COMPRESSION_LZW,           PLANARCONFIG_CONTIG,   false},
    {"planes",    "wb",  PHOTOMETRIC_RGB,        3, 16, COMPRESSION_ADOBE_DEFLATE, PLANARCONFIG_SEPARATE, false},
    {"rgba",      "wl8", PHOTOMETRIC_RGB,        4, 8,  COMPRESSION_DEFLATE,       PLANARCONFIG_CONTIG,   true},
    {"tiles",     "wb",  PHOTOMETRIC_RGB,        4, 16, COMPRESSION_NONE,          PLANARCONFIG_SEPARATE, true},
    {"jpeg",      "wl",  PHOTOMETRIC_MINISBLACK, 1, 8,  COMPRESSION_JPEG,          PLANARCONFIG_CONTIG,   false},
    {"bilevel",   "wl",  PHOTOMETRIC_MINISWHITE, 1, 1,  COMPRESSION_CCITTFAX4,     PLANARCONFIG_CONTIG,   false},
    {"lzma",      "wl",  PHOTOMETRIC_MINISBLACK, 1, 16, COMPRESSION_LZMA,          PLANARCONFIG_CONTIG,   false},
    {"zstd",      "wl",  PHOTOMETRIC_MINISBLACK, 1, 8,  COMPRESSION_ZSTD,          PLANARCONFIG_CONTIG,   true},
    // clang-format on
};

void SetLayout(TIFF* tiff, const TiffVariant& variant, Size size) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, variant.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, variant.channels);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, variant.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, variant.compression);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, variant.planes);
  if (variant.channels == 4) {
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
  }
  if (variant.tiled) {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
  } else {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, (size.height + 7) / 8 * 8);
  }
}

void WriteSamples(TIFF* tiff, const TiffVariant& variant, Size size) {
  const std::uint16_t planes = variant.planes == PLANARCONFIG_CONTIG ? 1 : variant.channels;
  for (std::uint16_t plane = 0; plane < planes; ++plane) {
    if (variant.tiled) {
      Bytes tile = Samples(static_cast<std::size_t>(TIFFTileSize(tiff)));
      TIFFWriteTile(tiff, tile.data(), 0, 0, 0, plane);
      continue;
    }
    Bytes strip = Samples(static_cast<std::size_t>(TIFFVStripSize(tiff, size.height)));
    TIFFWriteEncodedStrip(tiff, plane, strip.data(), static_cast<tmsize_t>(strip.size()));
  }
}

// `describe` adds fields. `strip` is stored as it is, in place of samples.
template <typename Describe>
Bytes TiffOf(const TiffVariant& variant, Size size, const Folder& folder, Describe describe,
             Bytes strip = {}) {
  const std::string path = folder.Path("made.tif");
  TIFF* tiff = TIFFOpen(path.c_str(), variant.mode);
  SetLayout(tiff, variant, size);
  describe(tiff);
  if (strip.empty()) {
    WriteSamples(tiff, variant, size);
  } else {
    TIFFWriteRawStrip(tiff, 0, strip.data(), static_cast<tmsize_t>(strip.size()));
  }
  TIFFClose(tiff);
  return folder.Read("made.tif");
}

// Gives a field of a word of a little-endian file another value.
void SetWord(Bytes& tiff, std::uint16_t tag, const std::uint8_t (&value)[2]) {
  const std::uint8_t field[] = {
      static_cast<std::uint8_t>(tag), static_cast<std::uint8_t>(tag >> 8), 3, 0, 1, 0, 0, 0};
  const auto found = std::ranges::search(tiff, field).begin();
  if (found == tiff.end()) Fail("a TIFF without a field");
  std::ranges::copy(value, found + std::size(field));
}

void AddTiff(std::vector<Seed>& seeds, const Folder& folder) {
  for (const TiffVariant& variant : kTiffVariants) {
    if (TIFFIsCODECConfigured(variant.compression) == 0) continue;
    Bytes file = TiffOf(variant, kPicture, folder, [](TIFF*) {});
    seeds.push_back(Case(variant.name, ".tif", file));
    if (variant.compression != COMPRESSION_JPEG) continue;
    SetWord(file, TIFFTAG_IMAGEWIDTH, {kWidth + 1, 0});
    seeds.push_back(Case("jpeg-too-small", ".tif", file));
  }
}

struct Camera {
  const char* make;
  const char* model;
  const char* extension;
};

constexpr Camera kCameras[] = {{"Nobody", "Nothing", ".dng"},
                               {"NIKON CORPORATION", "NIKON D70", ".nef"},
                               {"Canon", "Canon EOS 5D", ".nef"},
                               {"SONY", "DSLR-A100", ".nef"}};

void DescribeMosaic(TIFF* tiff, const Camera& camera) {
  constexpr std::uint8_t kVersion[] = {1, 4, 0, 0};
  constexpr std::uint16_t kRepeat[] = {2, 2};
  constexpr std::uint8_t kFilters[] = {0, 1, 1, 2};
  TIFFSetField(tiff, TIFFTAG_MAKE, camera.make);
  TIFFSetField(tiff, TIFFTAG_MODEL, camera.model);
  TIFFSetField(tiff, TIFFTAG_CFAREPEATPATTERNDIM, kRepeat);
  TIFFSetField(tiff, TIFFTAG_CFAPATTERN, 4, kFilters);
  if (std::string_view(camera.extension) == ".dng") {
    TIFFSetField(tiff, TIFFTAG_DNGVERSION, kVersion);
    TIFFSetField(tiff, TIFFTAG_UNIQUECAMERAMODEL, camera.model);
  }
}

// Compressions of cameras, which libtiff does not write: the samples are then so much noise.
constexpr std::uint8_t kCompressions[][2] = {
    {1, 0},  // none
    {6, 0},  // JPEG of old
    {7, 0},  // JPEG
    {8, 0},  // deflate
    {0xff, 0x7f}, {0x02, 0x80}, {0x99, 0x87}, {0x4c, 0x88}, {0xff, 0xff},
};

// A frame of zero differences: one code, of one bit.
Bytes LosslessJpegOf(std::uint8_t width, std::uint8_t height) {
  Bytes stream = {0xff, 0xd8,                                                    // image
                  0xff, 0xc4, 0, 20, 0,  1, 0,      0, 0,     0, 0, 0,    0, 0,  // table
                  0,    0,    0, 0,  0,  0, 0,      0,                           //
                  0xff, 0xc3, 0, 11, 16, 0, height, 0, width, 1, 1, 0x11, 0,     // frame
                  0xff, 0xda, 0, 8,  1,  1, 0,      1, 0,     0};                // scan
  stream.resize(stream.size() + std::size_t{width} * height / 8 + 1);
  stream.insert(stream.end(), {0xff, 0xd9});
  return stream;
}

// Streams of the frame's size, of a smaller and of a larger one, and one without an end.
void AddLosslessJpeg(std::vector<Seed>& seeds, const Folder& folder) {
  const auto add = [&](const char* name, const Bytes& stream) {
    const TiffVariant mosaic = {
        "mosaic", "wl", PHOTOMETRIC_CFA, 1, 16, COMPRESSION_NONE, PLANARCONFIG_CONTIG, false};
    Bytes file = TiffOf(
        mosaic, kMosaic, folder, [](TIFF* tiff) { DescribeMosaic(tiff, kCameras[0]); }, stream);
    SetWord(file, TIFFTAG_COMPRESSION, {COMPRESSION_JPEG, 0});
    seeds.push_back(Case(name, ".dng", file));
  };
  constexpr auto kRows = static_cast<std::uint8_t>(kMosaic.height);
  constexpr auto kColumns = static_cast<std::uint8_t>(kMosaic.width);
  const Bytes whole = LosslessJpegOf(kColumns, kRows);
  add("lossless", whole);
  add("lossless-small", LosslessJpegOf(kColumns, kRows / 2));
  add("lossless-large", LosslessJpegOf(255, 255));
  add("lossless-cut", Bytes(whole.begin(), whole.end() - 40));
}

void AddRaw(std::vector<Seed>& seeds, const Folder& folder) {
  const auto add = [&](const char* mode, const Camera& camera,
                       const std::uint8_t(&compression)[2]) {
    const TiffVariant mosaic = {
        "mosaic", mode, PHOTOMETRIC_CFA, 1, 16, COMPRESSION_NONE, PLANARCONFIG_CONTIG, false};
    Bytes file =
        TiffOf(mosaic, kMosaic, folder, [&camera](TIFF* tiff) { DescribeMosaic(tiff, camera); });
    if (compression[0] != 1) SetWord(file, TIFFTAG_COMPRESSION, compression);
    for (const int said : {0, kSaysBlack | kSaysScale}) {
      ReaderHeader header = {};
      header.said = static_cast<std::uint8_t>(said);
      seeds.push_back(Case(fmt::format("mosaic-{}-{}", seeds.size(), camera.model),
                           camera.extension, file, header));
    }
  };
  for (const Camera& camera : kCameras) {
    add("wb", camera, kCompressions[0]);
    for (const auto& compression : kCompressions) add("wl", camera, compression);
  }
}

}  // namespace

std::vector<Seed> Seeds() {
  const Folder folder;
  TIFFSetWarningHandler(nullptr);
  std::vector<Seed> seeds;
  AddWritten(seeds, folder);
  AddUnknown(seeds);
  AddText(seeds);
  AddNpy(seeds);
  AddPng(seeds);
  AddTiff(seeds, folder);
  AddRaw(seeds, folder);
  AddLosslessJpeg(seeds, folder);
  return seeds;
}

}  // namespace Korvex2::Fuzz
