// korvex2 convert: one file into another, in another pixel format.

#include <memory>
#include <optional>
#include <string>

#include "BayerNames.h"
#include "Conversion.h"
#include "Failure.h"
#include "Names.h"
#include "commands/Commands.h"
#include "io/Containers.h"

namespace Korvex2::Tool {
namespace {

struct Options {
  std::string input;
  std::string output;
  std::string to;
  std::string from;
  std::optional<std::uint32_t> width;
  std::optional<std::uint32_t> height;
  std::string tile;
  std::string method;
  std::string cpu;
};

constexpr const char* kNotes = R"(
A raw source needs --tile, its top-left 2x2 in reading order, a --from that says it (BayerRG8), or
a camera's raw file:
  rggb: R G   grbg: G R   gbrg: G B   bggr: B G   none: no mosaic, the samples
        G B         B G         R G         G R         are taken as grey
An output that exists is replaced once the new one is complete.

Examples:
  korvex2 convert photo.png photo.pgm --to mono8
  korvex2 convert photo.png frame.raw --to yuv422
  korvex2 convert frame.raw photo.png --from yuv422 --width 640 --height 480 --to rgb8
  korvex2 convert mosaic.png photo.png --from raw8 --tile rggb --method hq_linear --to bgru
  korvex2 convert capture.dng photo.png --method rigorous --to rgb16
  korvex2 convert capture.dng frame.raw --to raw16
  korvex2 convert frame.raw photo.png --from Mono12Packed --width 640 --height 480 --to mono16)";

// --tile, or the tile that --from names.
std::optional<BayerTileFormat> TileOf(const Options& options) {
  const std::optional<BayerTileFormat> named = TileInFormatName(options.from);
  if (options.tile.empty()) {
    return named;
  }
  const BayerTileFormat tile = ParseTile(options.tile);
  if (named && tile != NONE && tile != *named) {
    throw UsageFailure("--from {} is tile {}, and --tile says {}; leave one of them out",
                       options.from, NameOf(*named), NameOf(tile));
  }
  return tile;
}

// What the options ask of a raw source must be there, and must not be asked of any other.
void CheckRawOptions(const Options& options, const Image& image, PixelFormat target) {
  const PixelFormat source = image.GetPixelFormat();
  const bool demosaics = IsRaw(source) && !IsRaw(target);
  if (demosaics && !TileOf(options) && image.GetBayerTileFormat() == NONE) {
    throw UsageFailure("a {} source needs --tile, the colours of its top-left 2x2: {}",
                       NameOf(source), TileNames());
  }
  if (!IsRaw(source) && !options.tile.empty()) {
    throw UsageFailure("--tile is for mosaics and {} is {}; say --from raw8, raw12 or raw16",
                       options.input, NameOf(source));
  }
  if (!demosaics && !options.method.empty()) {
    throw UsageFailure("--method is for turning mosaics into pictures; {} to {} does not",
                       NameOf(source), NameOf(target));
  }
}

std::string Describe(const Image& image) {
  std::string text =
      fmt::format("{} x {}, {}", image.GetCols(), image.GetRows(), NameOf(image.GetPixelFormat()));
  if (image.GetBayerTileFormat() != NONE) {
    text += fmt::format(" {}", NameOf(image.GetBayerTileFormat()));
  }
  return text;
}

InputShape ShapeOf(const Options& options) {
  InputShape shape;
  shape.format = options.from.empty() ? nullptr : &ParseFormat("--from", options.from);
  shape.width = options.width;
  shape.height = options.height;
  shape.tile = TileOf(options);
  return shape;
}

void Run(const Options& options, const Globals& globals) {
  const PixelFormat target = ParseFormat("--to", options.to).format;
  const InputShape shape = ShapeOf(options);
  const ColorProcessingAlgorithm method =
      options.method.empty() ? DEFAULT : ParseMethod(options.method);
  RequireHolds(options.output, target);
  ChooseInstructionSet(options.cpu);

  Image source = ReadImage(options.input, shape);
  CheckRawOptions(options, source, target);
  const std::string described = Describe(source);
  const Image result = Converted(std::move(source), target, method);
  WriteImage(result, options.output);
  globals.Say("{} ({}) -> {} ({})", options.input, described, options.output, NameOf(target));
}

}  // namespace

void AddConvertCommand(CLI::App& app, const Globals& globals) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("convert", "Convert a file into another pixel format");
  command->add_option("input", options->input, "The file to read")->required();
  command->add_option("output", options->output, "The file to write")->required();
  command->add_option("--to", options->to, "Pixel format to write")->required();
  command
      ->add_option("--from", options->from,
                   "Pixel format of the input, where the file does not say")
      ->check(NotEmpty);
  command->add_option("--width", options->width, "Pixels a row, of a headerless input")
      ->check(CLI::Range(1U, 0xffffffffU));
  command->add_option("--height", options->height, "Rows, of a headerless input")
      ->check(CLI::Range(1U, 0xffffffffU));
  command->add_option("--tile", options->tile, "Bayer tile of a raw input: " + TileNames())
      ->check(NotEmpty);
  command
      ->add_option(
          "--method", options->method,
          "How to make colour of a raw input: " + MethodNames() + "; none shows the mosaic as grey")
      ->check(NotEmpty);
  AddCpuOption(*command, options->cpu);
  command->footer(ContainerHelp() + kNotes);
  command->callback([options, &globals] { Run(*options, globals); });
}

}  // namespace Korvex2::Tool
