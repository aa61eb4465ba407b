#include "io/Raw.h"

#include <libraw/libraw.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "Failure.h"

namespace Korvex2::Tool {
namespace {

struct Closer {
  void operator()(libraw_data_t* raw) const { libraw_close(raw); }
};

using Raw = std::unique_ptr<libraw_data_t, Closer>;

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
BayerTileFormat TileOf(libraw_data_t* raw) {
  constexpr unsigned kFirstBayer = 1000;  // smaller numbers stand for patterns larger than 2 x 8
  if (raw->idata.filters < kFirstBayer || raw->rawdata.ioparams.fuji_width != 0) {
    return NONE;
  }
  for (const TileColours& known : kTiles) {
    bool same = true;
    for (int row = 0; row < 8; ++row) {  // some patterns repeat later
      for (int column = 0; column < 2; ++column) {
        const int colour = libraw_COLOR(raw, row, column) & 3;
        same &= raw->idata.cdesc[colour] == known.colours[row % 2 * 2 + column];
      }
    }
    if (same) {
      return known.tile;
    }
  }
  return NONE;
}

Raster ActiveArea(const libraw_data_t& raw) {
  const libraw_image_sizes_t& sizes = raw.sizes;
  Raster raster(sizes.width, sizes.height, 1, 2);
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
SensorLevels LevelsOf(libraw_data_t* raw) {
  const libraw_colordata_t& color = raw->color;
  const bool hasPattern =
      color.cblack[4] != 0 && color.cblack[5] != 0 &&
      std::uint64_t{color.cblack[4]} * color.cblack[5] <= std::size(color.cblack) - 6;
  const std::size_t rows = hasPattern ? color.cblack[4] : 1;
  const std::size_t columns = hasPattern ? color.cblack[5] : 1;
  SensorLevels levels{2 * rows, 2 * columns, {}, color.maximum};
  for (std::size_t y = 0; y < levels.rows; ++y) {
    for (std::size_t x = 0; x < levels.columns; ++x) {
      const int colour = libraw_COLOR(raw, static_cast<int>(y), static_cast<int>(x)) & 3;
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

}  // namespace

Raster ReadRaw(const InputFile& file) {
  const Bytes& bytes = file.Read();
  const Raw raw(libraw_init(0));
  if (raw == nullptr) {
    throw std::bad_alloc();
  }
  bool damaged = false;
  libraw_set_dataerror_handler(raw.get(), OnDataError, &damaged);
  Require(libraw_open_buffer(raw.get(), bytes.data.get(), bytes.size), file);
  Require(libraw_unpack(raw.get()), file);
  if (damaged) {
    throw Failure("{} is a damaged raw file: samples are missing", file.path());
  }
  const BayerTileFormat tile = TileOf(raw.get());
  if (raw->rawdata.raw_image == nullptr || tile == NONE) {
    throw Failure("{} holds no Bayer mosaic; such raw files need a raw developer", file.path());
  }
  if (!LiesInside(raw->sizes)) {
    throw Failure("{} is a damaged raw file: the active area is larger than the sensor",
                  file.path());
  }
  Raster raster = ActiveArea(*raw);
  raster.tile = tile;
  raster.levels = LevelsOf(raw.get());
  return raster;
}

}  // namespace Korvex2::Tool
