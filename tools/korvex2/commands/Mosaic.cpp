// korvex2 mosaic: what a sensor behind a colour filter array sees of a picture.

#include "processing/MosaicSampling.h"

#include <memory>
#include <string>

#include "commands/Commands.h"
#include "commands/CommonOptions.h"
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

constexpr const char* kExamples = R"(
Examples:
  korvex2 mosaic photo.png mosaic.png --tile rggb
  korvex2 mosaic photo.png mosaic.raw --tile bggr --to raw12
)";

}  // namespace

Command MosaicCommand(const Globals& globals) {
  const auto options = std::make_shared<Options>();
  Options& o = *options;
  // clang-format off
  return {
      .name = "mosaic",
      .help = "Make a Bayer mosaic of a picture",
      .positionals = {
          {"input",  &o.input,  kText, "The picture to read"},
          {"output", &o.output, kText, "The mosaic to write"},
      },
      .options = {
          {"--tile", &o.tile, TileWords(),   "The top-left 2x2: rggb, grbg, gbrg or bggr", Presence::Required},
          {"--to",   &o.to,   FormatWords(), "raw8, raw12 or raw16"},
      },
      .notes = ContainerHelp() + kExamples,
      .run = [options, &globals] { Run(*options, globals); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
