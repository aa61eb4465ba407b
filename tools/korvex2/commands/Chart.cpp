// korvex2 chart: draws the test chart.

#include "drawing/TestChart.h"

#include <memory>
#include <string>

#include "commands/Commands.h"
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

}  // namespace

void AddChartCommand(CLI::App& app, const Globals& globals) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("chart", "Draw a test chart");
  command->add_option("output", options->output, "The file to write")->required();
  command->add_option("--width", options->width, "Pixels a row")
      ->check(CLI::Range(1U, 0xffffffffU))
      ->capture_default_str();
  command->add_option("--height", options->height, "Rows")
      ->check(CLI::Range(1U, 0xffffffffU))
      ->capture_default_str();
  command->add_option("--to", options->to, "Pixel format to write")->capture_default_str();
  command
      ->add_option("--tile", options->tile,
                   "Bayer tile of a raw format: rggb (the default), grbg, gbrg or bggr")
      ->check(NotEmpty);
  command->footer(
      "The chart is drawn in 16 bits a channel and converted like any other picture; for the "
      "raw\n"
      "formats a mosaic is sampled from it.\n\n" +
      ContainerHelp() +
      "\nExamples:\n"
      "  korvex2 chart chart.png\n"
      "  korvex2 chart frame.raw --to raw8 --tile rggb --width 640 --height 480\n");
  command->callback([options, &globals] { Run(*options, globals); });
}

}  // namespace Korvex2::Tool
