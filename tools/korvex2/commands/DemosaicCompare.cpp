// korvex2 demosaic-compare: what each demosaic method makes of the mosaic of a picture.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "PixelFormats.h"
#include "analysis/Quality.h"
#include "analysis/Timing.h"
#include "commands/Commands.h"
#include "commands/CommonOptions.h"
#include "drawing/ContactSheet.h"
#include "io/Containers.h"
#include "io/Raster.h"
#include "processing/Converted.h"
#include "processing/Engine.h"
#include "processing/MosaicSampling.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"
#include "terminal/Report.h"
#include "terminal/Table.h"

namespace Korvex2::Tool {
namespace {

constexpr std::uint32_t kDetailSide = 64;

struct Options {
  std::string input;
  std::string tile = "rggb";
  std::string sheet;
  std::vector<std::uint32_t> detail;
  bool json = false;
};

struct Outcome {
  const EngineMethod* method;
  Image picture;
  double cpsnr;
  double ssim;
  double megapixelsPerSecond;
};

// --- The picture ---------------------------------------------------------------------------------

Image WithEvenSides(const Image& picture) {
  const std::uint32_t rows = picture.GetRows() & ~1U;
  const std::uint32_t columns = picture.GetCols() & ~1U;
  const PixelFormatInfo& format = *FindPixelFormat(picture.GetPixelFormat());
  Image result = NewImage(columns, rows, format, NONE);
  const std::size_t pixel = format.bitsPerPixel / 8U;
  for (std::size_t y = 0; y < rows; ++y) {
    std::memcpy(result.GetData() + y * columns * pixel,
                picture.GetData() + y * picture.GetCols() * pixel, columns * pixel);
  }
  return result;
}

// In rgb8 or, where the file has more than 8 bits, rgb16, with even sides.
Image ReadTruth(const Options& options) {
  const Image image = ReadImage(options.input, {});
  const PixelFormat format = image.GetPixelFormat();
  if (IsRaw(format)) {
    throw Failure("{} is a mosaic; comparing methods takes a picture with all colours",
                  options.input);
  }
  if (std::min(image.GetCols(), image.GetRows()) < kSmallestForQuality) {
    throw Failure("{} is {} x {} pixels; comparing methods takes at least {} x {}", options.input,
                  image.GetCols(), image.GetRows(), kSmallestForQuality, kSmallestForQuality);
  }
  Image truth = Converted(image, IsDeep(format) ? PIXEL_FORMAT_RGB16 : PIXEL_FORMAT_RGB8);
  if (truth.GetRows() % 2 == 0 && truth.GetCols() % 2 == 0) {
    return truth;
  }
  truth = WithEvenSides(truth);
  Warn(fmt::format("{} was cropped to {} x {} pixels, since mosaics have even sides", options.input,
                   truth.GetCols(), truth.GetRows()));
  return truth;
}

// --- The methods ---------------------------------------------------------------------------------

Outcome Measure(const Image& truth, const Image& mosaic, const EngineMethod& method) {
  Outcome outcome{&method, NewPictureOf(mosaic), 0, 0, 0};
  const double seconds =
      MedianSeconds({[&] { Demosaic(mosaic, method, outcome.picture); }}).front();
  const double pixels = static_cast<double>(truth.GetCols()) * truth.GetRows();
  outcome.megapixelsPerSecond = pixels / 1e6 / std::max(seconds, 1e-9);
  outcome.cpsnr = Cpsnr(truth, outcome.picture);
  outcome.ssim = Ssim(truth, outcome.picture);
  return outcome;
}

std::vector<Outcome> MeasureAll(const Image& truth, BayerTileFormat tile) {
  const Image mosaic = SampleMosaic(
      truth, tile, IsDeep(truth.GetPixelFormat()) ? PIXEL_FORMAT_RAW16 : PIXEL_FORMAT_RAW8);
  std::vector<Outcome> outcomes;
  for (const EngineMethod& method : EngineMethods()) {
    outcomes.push_back(Measure(truth, mosaic, method));
  }
  return outcomes;
}

// --- The sheet -----------------------------------------------------------------------------------

// --crop, or where HQ linear, the usual choice, is worst.
Area DetailOf(const Options& options, const Image& truth, const std::vector<Outcome>& outcomes) {
  if (options.detail.empty()) {
    const auto usual = std::find_if(outcomes.begin(), outcomes.end(), [](const Outcome& outcome) {
      return outcome.method->method == BAYER_METHOD_HQLINEAR;
    });
    return WorstArea(truth, usual->picture, kDetailSide);
  }
  const Area area{options.detail[0], options.detail[1], options.detail[2], options.detail[3]};
  const bool inside = std::uint64_t{area.x} + area.width <= truth.GetCols() &&
                      std::uint64_t{area.y} + area.height <= truth.GetRows();
  if (area.width == 0 || area.height == 0 || !inside) {
    throw UsageFailure("--crop {},{},{},{} does not lie in the picture of {} x {} pixels", area.x,
                       area.y, area.width, area.height, truth.GetCols(), truth.GetRows());
  }
  return area;
}

void WriteSheet(const Options& options, const Image& truth, const std::vector<Outcome>& outcomes,
                const Area& detail) {
  std::vector<Exhibit> exhibits = {{&truth, "original", ""}};
  for (const Outcome& outcome : outcomes) {
    exhibits.push_back(
        {&outcome.picture, std::string(outcome.method->name), Decibels(outcome.cpsnr) + " dB"});
  }
  const std::string title =
      fmt::format("{}  {}  {} x {} pixels of {} x {}; the CPSNR is that of all",
                  std::filesystem::path(options.input).filename().string(), options.tile,
                  detail.width, detail.height, truth.GetCols(), truth.GetRows());
  WriteImage(DrawSheet(title, exhibits, detail), options.sheet);
}

// --- The table -----------------------------------------------------------------------------------

void PrintText(const std::vector<Outcome>& outcomes) {
  Table table = {{"method", "CPSNR dB", "SSIM", "Mpx/s"}};
  for (const Outcome& outcome : outcomes) {
    table.push_back({std::string(outcome.method->name), Decibels(outcome.cpsnr),
                     fmt::format("{:.4f}", outcome.ssim),
                     fmt::format("{:.{}f}", outcome.megapixelsPerSecond,
                                 outcome.megapixelsPerSecond < 100 ? 1 : 0)});
  }
  Print(table);
}

void PrintJson(const Options& options, const Image& truth, const std::vector<Outcome>& outcomes,
               const Area& detail) {
  fmt::print(
      "{{\n  \"input\": {}, \"width\": {}, \"height\": {}, \"format\": {}, \"tile\": {}, "
      "\"border\": {},\n"
      "  \"detail\": {{\"x\": {}, \"y\": {}, \"width\": {}, \"height\": {}}},\n  \"methods\": [",
      Json(options.input), truth.GetCols(), truth.GetRows(), Json(NameOf(truth.GetPixelFormat())),
      Json(options.tile), kQualityBorder, detail.x, detail.y, detail.width, detail.height);
  const char* separator = "\n";
  for (const Outcome& outcome : outcomes) {
    fmt::print("{}    {{\"name\": {}, \"cpsnr\": {}, \"ssim\": {:.6f}, \"mpxPerSecond\": {:.3f}}}",
               separator, Json(outcome.method->name),
               std::isinf(outcome.cpsnr) ? "null" : fmt::format("{:.6f}", outcome.cpsnr),
               outcome.ssim, outcome.megapixelsPerSecond);
    separator = ",\n";
  }
  fmt::print("\n  ]\n}}\n");
}

void Run(Options options, const Globals& globals) {
  const BayerTileFormat tile = ParseTile(options.tile);
  options.tile = NameOf(tile);
  if (!options.sheet.empty()) {
    RequireHolds(options.sheet, PIXEL_FORMAT_RGB8);
  }
  const Image truth = ReadTruth(options);
  const std::vector<Outcome> outcomes = MeasureAll(truth, tile);
  const Area detail = DetailOf(options, truth, outcomes);
  if (!options.sheet.empty()) {
    WriteSheet(options, truth, outcomes, detail);
  }
  if (options.json) {
    PrintJson(options, truth, outcomes, detail);
    return;
  }
  PrintText(outcomes);
  if (!options.sheet.empty()) {
    globals.Say("");
    globals.Say("{} ({} x {}, {}), {} x {} pixels at {}, {} -> {}", options.input, truth.GetCols(),
                truth.GetRows(), options.tile, detail.width, detail.height, detail.x, detail.y,
                options.sheet);
  }
}

constexpr const char* kNotes = R"(
The picture is sampled through the tile and demosaiced again by every method of the engine, also by
"weighted", which no pixel-format conversion uses: 8-bit files as raw8, deeper ones as raw16.

  CPSNR   10 log10(peak^2 / mean squared error of all channels), 10 pixels at each side left out
  SSIM    Gaussian window of 11 x 11 pixels, the mean over red, green and blue, same pixels
  Mpx/s   million pixels a second, the median of several runs on one thread

The sheet shows a detail of the original and of every result, magnified, and where it lies. Unless
--crop says which, it is the 64 x 64 pixels where hq_linear is worst. In JSON, a CPSNR of null means
that the result equals the picture. An odd row or column at the end is left out.

Examples:
  korvex2 demosaic-compare photo.png
  korvex2 demosaic-compare photo.png --out sheet.png
  korvex2 demosaic-compare photo.png --tile bggr --crop 200,120,64,48 --out sheet.png)";

}  // namespace

Command DemosaicCompareCommand(const Globals& globals) {
  const auto options = std::make_shared<Options>();
  Options& o = *options;
  // clang-format off
  return {
      .name = "demosaic-compare",
      .help = "Measure all demosaic methods on the mosaic of a picture",
      .positionals = {
          {"input", &o.input, kText, "The picture to read"},
      },
      .options = {
          {"--tile", &o.tile,   TileWords(),   "The top-left 2x2: rggb, grbg, gbrg or bggr"},
          {"--out",  &o.sheet,  kText,         "The contact sheet to write"},
          {"--crop", &o.detail, NumberList{4}, "The detail on the sheet: X,Y,WIDTH,HEIGHT"},
          {"--json", &o.json,   kFlag,         "Print JSON"},
      },
      .notes = ContainerHelp() + kNotes,
      .run = [options, &globals] { Run(*options, globals); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
