#include "io/CameraRaw.h"

#include <libraw/libraw.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "io/Failure.h"
#include "io/LosslessJpeg.h"

namespace Korvex2::Io {
namespace {

// LibRaw does not clear the memory that it decodes into, and decoders that meet less than a frame
// leave the rest as it was.
class Decoder : public LibRaw {
 public:
  // The name of the function that decodes the samples; empty before a file is open.
  std::string Loader() {
    libraw_decoder_info_t info = {};
    get_decoder_info(&info);
    return info.decoder_name == nullptr ? "" : info.decoder_name;
  }

  const unpacker_data_t& layout() const { return libraw_internal_data.unpacker_data; }

  int UnpackIntoClearedMemory() {
    const std::string loader = Loader();
    // unpacked_load_raw() tells of every missing sample, and unpack() asks whether it is the one.
    if (!loader.empty() && loader != "unpacked_load_raw()") {
      m_loader = std::exchange(load_raw, static_cast<Function>(&Decoder::LoadIntoClearedMemory));
    }
    return unpack();
  }

  int get_decoder_info(libraw_decoder_info_t* info) override {
    const Function current = std::exchange(load_raw, m_loader == nullptr ? load_raw : m_loader);
    const int result = LibRaw::get_decoder_info(info);
    load_raw = current;
    return result;
  }

 private:
  using Function = void (LibRaw::*)();

  // In the place of LibRaw's own function, which is called when the memory has been allocated.
  void LoadIntoClearedMemory() {
    load_raw = std::exchange(m_loader, nullptr);
    const libraw_rawdata_t& raw = imgdata.rawdata;
    if (raw.raw_image != nullptr && raw.raw_image == raw.raw_alloc) {
      const libraw_image_sizes_t& sizes = imgdata.sizes;
      std::fill_n(raw.raw_image, std::size_t{sizes.raw_width} * sizes.raw_height, 0);
    }
    (this->*load_raw)();
  }

  Function m_loader = nullptr;
};

// LibRaw goes on with zeros where data is missing, and tells of it in passing only.
extern "C" {
static void OnDataError(void* damaged, const char*, const int) {
  *static_cast<bool*>(damaged) = true;
}
}

void Require(int result, const InputFile& file) {
  if (result == LIBRAW_FILE_UNSUPPORTED) {
    throw Failure("{} is no raw file that LibRaw knows", file.path());
  }
  if (result == LIBRAW_UNSUFFICIENT_MEMORY) {
    throw std::bad_alloc();
  }
  if (result != LIBRAW_SUCCESS) {
    throw Failure("{} is a damaged raw file: {}", file.path(), libraw_strerror(result));
  }
}

struct TileColours {
  const char* colours;
  BayerTileFormat tile;
};

constexpr TileColours kTiles[] = {{"RGGB", RGGB}, {"GRBG", GRBG}, {"GBRG", GBRG}, {"BGGR", BGGR}};

// The tile at the top-left of the active area; NONE for sensors with other filters.
BayerTileFormat TileOf(Decoder& decoder) {
  constexpr unsigned kFirstBayer = 1000;  // smaller numbers stand for patterns larger than 2 x 8
  const libraw_iparams_t& parameters = decoder.imgdata.idata;
  if (parameters.filters < kFirstBayer || decoder.is_fuji_rotated() != 0) {
    return NONE;
  }
  for (const TileColours& known : kTiles) {
    bool same = true;
    for (int row = 0; row < 8; ++row) {  // some patterns repeat later
      for (int column = 0; column < 2; ++column) {
        const int colour = decoder.COLOR(row, column) & 3;
        same &= parameters.cdesc[colour] == known.colours[row % 2 * 2 + column];
      }
    }
    if (same) {
      return known.tile;
    }
  }
  return NONE;
}

Raster ActiveArea(const libraw_data_t& raw, const std::string& path) {
  const libraw_image_sizes_t& sizes = raw.sizes;
  Raster raster = NewRaster(path, sizes.width, sizes.height, 1, 2);
  for (std::size_t y = 0; y < raster.height; ++y) {
    const unsigned short* source = raw.rawdata.raw_image +
                                   (sizes.top_margin + y) * (sizes.raw_pitch / sizeof *source) +
                                   sizes.left_margin;
    unsigned char* destination = raster.Row(y);
    for (std::size_t x = 0; x < raster.width; ++x) {
      destination[2 * x] = static_cast<unsigned char>(source[x] >> 8);
      destination[2 * x + 1] = static_cast<unsigned char>(source[x]);
    }
  }
  return raster;
}

// LibRaw keeps a part for all samples, one for each colour and one for each place of a pattern.
SensorLevels LevelsOf(Decoder& decoder) {
  const libraw_colordata_t& color = decoder.imgdata.color;
  const bool hasPattern =
      color.cblack[4] != 0 && color.cblack[5] != 0 &&
      std::uint64_t{color.cblack[4]} * color.cblack[5] <= std::size(color.cblack) - 6;
  const std::size_t rows = hasPattern ? color.cblack[4] : 1;
  const std::size_t columns = hasPattern ? color.cblack[5] : 1;
  SensorLevels levels{2 * rows, 2 * columns, {}, color.maximum};
  for (std::size_t y = 0; y < levels.rows; ++y) {
    for (std::size_t x = 0; x < levels.columns; ++x) {
      const int colour = decoder.COLOR(static_cast<int>(y), static_cast<int>(x)) & 3;
      const std::uint32_t ofPlace =
          hasPattern ? color.cblack[6 + y % rows * columns + x % columns] : 0;
      levels.black.push_back(color.black + color.cblack[colour] + ofPlace);
    }
  }
  return levels;
}

bool LiesInside(const libraw_image_sizes_t& sizes) {
  return sizes.left_margin + sizes.width <= sizes.raw_width &&
         sizes.top_margin + sizes.height <= sizes.raw_height &&
         sizes.raw_pitch >= sizes.raw_width * sizeof(unsigned short);
}

// --- Whether the file holds what it announces, before memory is taken and time spent -------------

std::uint64_t Pixels(const Decoder& decoder) {
  return std::uint64_t{decoder.imgdata.sizes.raw_width} * decoder.imgdata.sizes.raw_height;
}

// No compression that is read stores less for a frame.
std::uint64_t LeastSize(Decoder& decoder) {
  constexpr std::uint64_t kBestRatio = 1032;
  const std::uint64_t pixels = Pixels(decoder);
  const std::string loader = decoder.Loader();
  return loader == "packed_dng_load_raw()"      ? pixels * decoder.layout().tiff_bps / 8
         : loader == "lossless_jpeg_load_raw()" ? pixels / 8
                                                : pixels * sizeof(unsigned short) / kBestRatio;
}

std::span<const unsigned char> From(const Bytes& bytes, std::uint64_t begin) {
  const std::uint64_t from = std::min<std::uint64_t>(begin, bytes.size);
  return {bytes.data.get() + from, static_cast<std::size_t>(bytes.size - from)};
}

// The streams of lossless JPEG where LibRaw will look for them.
class Tiles {
 public:
  Tiles(const Decoder& decoder, const Bytes& bytes)
      : m_bytes(bytes),
        m_layout(decoder.layout()),
        m_columns(decoder.imgdata.sizes.raw_width),
        m_rows(decoder.imgdata.sizes.raw_height) {}

  // A stream ends where its samples do, has those of its tile and not many more, and lies apart
  // from the others.
  bool AreWhole() const {
    std::uint64_t left = m_bytes.size;
    return Every([&](const std::optional<LosslessJpeg>& stream, std::uint64_t top) {
      if (!stream || stream->size == 0 || stream->size > left ||
          stream->Samples() > 8 * stream->size || !Fills(stream->Samples(), top)) {
        return false;
      }
      left -= stream->size;
      return true;
    });
  }

  // Whether LibRaw puts the samples of streams that are whole where they belong: it lets them flow
  // from row to row, of the tile or of a narrower picture.
  bool ArePlaced() const {
    if (IsTiled() && m_layout.tile_width > m_columns) {
      return false;
    }
    return Every([&](const std::optional<LosslessJpeg>& stream, std::uint64_t) {
      return FlowsIntoRows(*stream) && !IsTakenForWhole(*stream);
    });
  }

 private:
  // Whether `holds(stream, top row of its tile)` is true of every tile.
  template <typename Condition>
  bool Every(Condition holds) const {
    std::uint64_t entry = static_cast<std::uint64_t>(m_layout.data_offset);
    for (std::uint64_t top = 0; top < m_rows; top += m_layout.tile_length) {
      for (std::uint64_t x = 0; x < m_columns; x += m_layout.tile_width, entry += 4) {
        if (!holds(FindLosslessJpeg(From(m_bytes, IsTiled() ? Offset(entry) : entry)), top)) {
          return false;
        }
      }
    }
    return true;
  }

  bool IsTiled() const { return m_layout.tile_length < INT_MAX; }

  std::uint64_t Offset(std::uint64_t entry) const {
    const auto field = From(m_bytes, entry);
    if (field.size() < 4) {
      return m_bytes.size;
    }
    const bool lowByteFirst = m_layout.order == 0x4949;
    std::uint64_t offset = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      offset = offset << 8 | field[lowByteFirst ? 3 - i : i];
    }
    return offset;
  }

  std::uint64_t SamplesOf(std::uint64_t columns) const {
    return columns * (m_layout.tiff_samples == 2 ? 2 : 1);
  }

  std::uint64_t Row() const {
    return SamplesOf(std::min<std::uint64_t>(m_layout.tile_width, m_columns));
  }

  // Tiles may go on beside and below the picture. LibRaw forgets the size of a single one.
  bool Fills(std::uint64_t samples, std::uint64_t top) const {
    const std::uint64_t length = m_layout.tile_length;
    return samples >= Row() * std::min(length, m_rows - top) &&
           (!IsTiled() || samples <= 2 * SamplesOf(m_layout.tile_width) * length);
  }

  // Parts of a row, or several in a line; lines that are padded are as many as rows.
  bool FlowsIntoRows(const LosslessJpeg& stream) const {
    const std::uint64_t line = stream.SamplesOfLine();
    const std::uint64_t rows = std::min<std::uint64_t>(m_layout.tile_length, m_rows);
    return line <= Row() ? Row() % line == 0 : line % Row() == 0 && stream.lines < rows;
  }

  // LibRaw takes a line for components times as long where that were a row of the picture.
  bool IsTakenForWhole(const LosslessJpeg& stream) const {
    return stream.components > 1 && m_layout.tiff_samples == 1 &&
           stream.components * stream.SamplesOfLine() == m_columns;
  }

  const Bytes& m_bytes;
  const unpacker_data_t& m_layout;
  std::uint64_t m_columns;
  std::uint64_t m_rows;
};

// What other files than DNG have; LibRaw decodes no single component without the gap there.
std::optional<LosslessJpeg> OneStream(const Decoder& decoder, const Bytes& bytes) {
  constexpr std::size_t kGap = 1;
  const auto offset = static_cast<std::uint64_t>(decoder.layout().data_offset);
  return FindLosslessJpeg(From(bytes, offset), kGap);
}

// Though a camera may cut it into slices, the stream has the samples of the sensor.
bool IsOfSensor(const std::optional<LosslessJpeg>& stream, const Decoder& decoder) {
  return stream && stream->Samples() >= Pixels(decoder) && stream->Samples() <= 4 * Pixels(decoder);
}

bool IsWhole(Decoder& decoder, const Bytes& bytes) {
  const std::string loader = decoder.Loader();
  return loader == "lossless_dng_load_raw()"    ? Tiles(decoder, bytes).AreWhole()
         : loader == "lossless_jpeg_load_raw()" ? IsOfSensor(OneStream(decoder, bytes), decoder)
         : loader == "hasselblad_load_raw()"    ? OneStream(decoder, bytes).has_value()
                                                : true;
}

void RequireWhole(Decoder& decoder, const InputFile& file) {
  if (LeastSize(decoder) > file.size()) {
    throw Failure("{} is a damaged raw file: {} bytes cannot hold {} x {} samples", file.path(),
                  file.size(), decoder.imgdata.sizes.raw_width, decoder.imgdata.sizes.raw_height);
  }
  // The table lies among the maker's notes.
  if (decoder.Loader() == "pentax_load_raw()" && decoder.layout().meta_offset == 0) {
    throw Failure("{} is a damaged raw file: the table of its codes is missing", file.path());
  }
  if (!IsWhole(decoder, file.Read())) {
    throw Failure("{} is a damaged raw file: its lossless JPEG is not that of {} x {} samples",
                  file.path(), decoder.imgdata.sizes.raw_width, decoder.imgdata.sizes.raw_height);
  }
}

void RequirePlaced(Decoder& decoder, const InputFile& file) {
  if (decoder.Loader() == "lossless_dng_load_raw()" && !Tiles(decoder, file.Read()).ArePlaced()) {
    throw Failure("{} cannot be read: LibRaw puts samples of such lossless JPEG in wrong places",
                  file.path());
  }
}

[[noreturn]] void FailForKind(const InputFile& file, const char* kind) {
  throw Failure("{} {}; such raw files need a raw developer", file.path(), kind);
}

}  // namespace

Raster ReadCameraRaw(const InputFile& file) {
  const Bytes& bytes = file.Read();
  const auto decoder = std::make_unique<Decoder>();
  bool damaged = false;
  decoder->set_dataerror_handler(OnDataError, &damaged);
  Require(decoder->open_buffer(bytes.data.get(), bytes.size), file);
  const BayerTileFormat tile = TileOf(*decoder);
  if (tile == NONE) {
    FailForKind(file, "holds no Bayer mosaic");
  }
  if (decoder->is_floating_point() != 0) {
    FailForKind(file, "holds floating-point samples");
  }
  RequireWhole(*decoder, file);
  RequirePlaced(*decoder, file);
  Require(decoder->UnpackIntoClearedMemory(), file);
  if (damaged) {
    throw Failure("{} is a damaged raw file: samples are missing", file.path());
  }
  if (decoder->imgdata.rawdata.raw_image == nullptr) {
    FailForKind(file, "holds no Bayer mosaic");
  }
  if (!LiesInside(decoder->imgdata.sizes)) {
    throw Failure("{} is a damaged raw file: the active area is larger than the sensor",
                  file.path());
  }
  Raster raster = ActiveArea(decoder->imgdata, file.path());
  raster.tile = tile;
  raster.levels = LevelsOf(*decoder);
  return raster;
}

}  // namespace Korvex2::Io
