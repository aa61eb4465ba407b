// korvex2 mosaic: what a sensor behind a colour filter array sees of a picture.

#include "processing/MosaicSampling.h"

#include <memory>
#include <string>

#include "commands/Commands.h"
#include "io/Containers.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"

namespace Korvex2::Tool {
namespace {

struct Options {
  std::string input;
  std::string output;
  std::string tile;
  std::string to = "raw8";
};

void Run(const Options& options, const Globals& globals) {
  const BayerTileFormat tile = ParseTile(options.tile);
  const PixelFormat target = ParseFormat("--to", options.to).format;
  if (!IsRaw(target)) {
    throw UsageFailure("a mosaic is raw8, raw12 or raw16, not {}", NameOf(target));
  }
  RequireHolds(options.output, target);
  const Image mosaic = SampleMosaic(ReadImage(options.input, {}), tile, target);
  WriteImage(mosaic, options.output);
  globals.Say("{} ({} x {}) -> {} ({}, {})", options.input, mosaic.GetCols(), mosaic.GetRows(),
              options.output, NameOf(target), options.tile);
}

}  // namespace

void AddMosaicCommand(CLI::App& app, const Globals& globals) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("mosaic", "Make a Bayer mosaic of a picture");
  command->add_option("input", options->input, "The picture to read")->required();
  command->add_option("output", options->output, "The mosaic to write")->required();
  command->add_option("--tile", options->tile, "The top-left 2x2: rggb, grbg, gbrg or bggr")
      ->required();
  command->add_option("--to", options->to, "raw8, raw12 or raw16")->capture_default_str();
  command->footer(ContainerHelp() +
                  "\nExamples:\n"
                  "  korvex2 mosaic photo.png mosaic.png --tile rggb\n"
                  "  korvex2 mosaic photo.png mosaic.raw --tile bggr --to raw12\n");
  command->callback([options, &globals] { Run(*options, globals); });
}

}  // namespace Korvex2::Tool
