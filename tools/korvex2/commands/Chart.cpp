// korvex2 chart: draws the test chart.

#include "drawing/TestChart.h"

#include <memory>
#include <string>

#include "commands/Commands.h"
#include "commands/CommonOptions.h"
#include "io/Containers.h"
#include "processing/Converted.h"
#include "processing/MosaicSampling.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"

namespace Korvex2::Tool {
namespace {

struct Options {
  std::string output;
  std::uint32_t width = 960;
  std::uint32_t height = 640;
  std::string to = "rgb8";
  std::string tile;
};

Image ChartIn(PixelFormat format, const Options& options) {
  const Image chart = DrawChart(options.width, options.height);
  if (IsRaw(format)) {
    return SampleMosaic(chart, ParseTile(options.tile.empty() ? "rggb" : options.tile), format);
  }
  return Converted(chart, format);
}

void Run(const Options& options, const Globals& globals) {
  const PixelFormat format = ParseFormat("--to", options.to).format;
  if (!options.tile.empty() && !IsRaw(format)) {
    throw UsageFailure("--tile is for mosaics; say --to raw8, raw12 or raw16");
  }
  RequireHolds(options.output, format);
  WriteImage(ChartIn(format, options), options.output);
  globals.Say("test chart -> {} ({} x {}, {})", options.output, options.width, options.height,
              NameOf(format));
}

constexpr const char* kIntroduction =
    R"(The chart is drawn in 16 bits a channel and converted like any other picture; for the raw
formats a mosaic is sampled from it.

)";

constexpr const char* kExamples = R"(
Examples:
  korvex2 chart chart.png
  korvex2 chart frame.raw --to raw8 --tile rggb --width 640 --height 480
)";

}  // namespace

Command ChartCommand(const Globals& globals) {
  const auto options = std::make_shared<Options>();
  Options& o = *options;
  // clang-format off
  return {
      .name = "chart",
      .help = "Draw a test chart",
      .positionals = {
          {"output", &o.output, kText, "The file to write"},
      },
      .options = {
          {"--width",  &o.width,  kSide,         "Pixels a row"},
          {"--height", &o.height, kSide,         "Rows"},
          {"--to",     &o.to,     FormatWords(), "Pixel format to write"},
          {"--tile",   &o.tile,   TileWords(),   "Bayer tile of a raw format: rggb (the default), grbg, gbrg or bggr"},
      },
      .notes = kIntroduction + ContainerHelp() + kExamples,
      .run = [options, &globals] { Run(*options, globals); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
