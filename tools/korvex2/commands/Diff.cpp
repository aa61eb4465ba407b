// korvex2 diff: how far two pictures are apart.

#include <cmath>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "BayerNames.h"
#include "analysis/Difference.h"
#include "analysis/Quality.h"
#include "commands/Commands.h"
#include "commands/CommonOptions.h"
#include "io/Containers.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"
#include "terminal/Table.h"

namespace Korvex2::Tool {
namespace {

constexpr int kDifferent = 1;
constexpr RealNumber kAmplify{1, 65535};

struct Options {
  std::string first;
  std::string second;
  std::string from;
  std::optional<std::uint32_t> width;
  std::optional<std::uint32_t> height;
  std::string picture;
  double amplify = 8;
  bool json = false;
};

// --- The pictures --------------------------------------------------------------------------------

InputShape ShapeOf(const Options& options) {
  InputShape shape;
  shape.format = options.from.empty() ? nullptr : &ParseFormat("--from", options.from);
  shape.width = options.width;
  shape.height = options.height;
  shape.tile = TileInFormatName(options.from);
  return shape;
}

std::string Describe(const Image& image) {
  const BayerTileFormat tile = image.GetBayerTileFormat();
  return fmt::format("{} x {} {}{}{}", image.GetCols(), image.GetRows(),
                     NameOf(image.GetPixelFormat()), tile == NONE ? "" : " ",
                     tile == NONE ? "" : NameOf(tile));
}

void RequireComparable(const Options& options, const Image& first, const Image& second) {
  const bool sameSize = first.GetCols() == second.GetCols() && first.GetRows() == second.GetRows();
  const bool sameKind = first.GetPixelFormat() == second.GetPixelFormat() &&
                        first.GetBayerTileFormat() == second.GetBayerTileFormat();
  if (!sameSize || !sameKind) {
    throw Failure("{} is {} and {} is {}; {}", options.first, Describe(first), options.second,
                  Describe(second),
                  sameSize ? "bring both into one format with 'korvex2 convert'"
                           : "only pictures of the same size can be compared");
  }
  if (!FindPixelFormat(first.GetPixelFormat())->convertible) {
    throw Failure("{} frames have no samples to compare", NameOf(first.GetPixelFormat()));
  }
}

// --- What is told --------------------------------------------------------------------------------

std::string Join(const std::vector<std::uint16_t>& samples) {
  std::string joined;
  for (const std::uint16_t sample : samples) {
    joined += joined.empty() ? "" : ", ";
    joined += std::to_string(sample);
  }
  return joined;
}

std::string SsimText(const std::optional<double>& ssim) {
  return ssim ? fmt::format("{:.6f}", *ssim) : "-";
}

void PrintText(const Difference& difference) {
  Table table = {{"channel", "PSNR dB", "SSIM", "largest", "pixels"}};
  std::uint32_t largest = 0;
  for (const ChannelDifference& channel : difference.channels) {
    largest = std::max(largest, channel.largest);
    table.push_back({std::string(1, channel.channel), Decibels(channel.psnr),
                     SsimText(channel.ssim), std::to_string(channel.largest),
                     std::to_string(channel.differing)});
  }
  if (difference.channels.size() > 1) {
    table.push_back({"all", Decibels(difference.psnr), SsimText(difference.ssim),
                     std::to_string(largest), std::to_string(difference.differing)});
  }
  Print(table);
  if (difference.at) {
    fmt::print("\nFirst difference at x {}, y {}: {} and {}\n", difference.at->x, difference.at->y,
               Join(difference.at->first), Join(difference.at->second));
  } else {
    fmt::print("\nThe same.\n");
  }
}

std::string JsonNumber(const std::optional<double>& value) {
  return value && std::isfinite(*value) ? fmt::format("{:.9g}", *value) : "null";
}

std::string JsonOf(const ChannelDifference& channel) {
  return fmt::format(
      R"({{"channel": "{}", "psnr": {}, "ssim": {}, "largest": {}, "differing": {}}})",
      channel.channel, JsonNumber(channel.psnr), JsonNumber(channel.ssim), channel.largest,
      channel.differing);
}

void PrintJson(const Options& options, const Image& image, const Difference& difference) {
  fmt::print(
      "{{\n  \"files\": [{}, {}], \"width\": {}, \"height\": {}, \"format\": {}, \"same\": {},\n"
      "  \"psnr\": {}, \"ssim\": {}, \"differing\": {},\n",
      Json(options.first), Json(options.second), image.GetCols(), image.GetRows(),
      Json(NameOf(image.GetPixelFormat())), difference.IsNone(), JsonNumber(difference.psnr),
      JsonNumber(difference.ssim), difference.differing);
  if (difference.at) {
    fmt::print("  \"first\": {{\"x\": {}, \"y\": {}, \"values\": [[{}], [{}]]}},\n",
               difference.at->x, difference.at->y, Join(difference.at->first),
               Join(difference.at->second));
  } else {
    fmt::print("  \"first\": null,\n");
  }
  fmt::print("  \"channels\": [");
  const char* separator = "\n";
  for (const ChannelDifference& channel : difference.channels) {
    fmt::print("{}    {}", separator, JsonOf(channel));
    separator = ",\n";
  }
  fmt::print("\n  ]\n}}\n");
}

Difference CompareFiles(const Options& options, const Globals& globals) {
  if (!options.picture.empty()) {
    RequireHolds(options.picture, PIXEL_FORMAT_RGB8);
  }
  const InputShape shape = ShapeOf(options);
  const Image first = ReadImage(options.first, shape);
  const Image second = ReadImage(options.second, shape);
  RequireComparable(options, first, second);
  const Difference difference = Compare(first, second);
  if (!options.picture.empty()) {
    WriteImage(DrawDifference(first, second, options.amplify), options.picture);
  }
  if (options.json) {
    PrintJson(options, first, difference);
  } else if (!globals.quiet) {
    PrintText(difference);
  }
  return difference;
}

// Trouble of any kind has the exit code of wrong use, so that 1 means that the pictures differ.
int Run(const Options& options, const Globals& globals) {
  try {
    const bool same = CompareFiles(options, globals).IsNone();
    FlushStandardOutput();
    return same ? kDone : kDifferent;
  } catch (const std::bad_alloc&) {
    throw UsageFailure("out of memory");
  } catch (const std::exception& failure) {
    throw UsageFailure("{}", failure.what());
  }
}

constexpr const char* kNotes = R"(
Both files have the same size and pixel format; --from, --width and --height go for both.

  PSNR      10 log10(peak^2 / mean squared error), infinite for equal samples (null in JSON)
  SSIM      Gaussian window of 11 x 11 pixels with sigma 1.5, wherever it lies inside; none where a
            side is shorter
  largest   the largest absolute difference of two samples
  pixels    how many pixels differ

Chroma that pixels share counts for each of them. The picture shows the differences times --amplify:
black where the files are equal and nowhere else, YUV as the colours that it stands for.

Exit codes: 0 the same, 1 different, 2 trouble.

Examples:
  korvex2 diff expected.png found.png
  korvex2 diff expected.png found.png --picture difference.png --amplify 32
  korvex2 diff a.raw b.raw --from yuv422 --width 640 --height 480 --quiet && echo same)";

}  // namespace

Command DiffCommand(const Globals& globals) {
  const auto options = std::make_shared<Options>();
  Options& o = *options;
  // clang-format off
  return {
      .name = "diff",
      .help = "Measure how far two pictures are apart",
      .positionals = {
          {"first",  &o.first,  kText, "The file to compare with"},
          {"second", &o.second, kText, "The file to compare"},
      },
      .options = {
          {"--from",    &o.from,    FormatWords(), "Pixel format of the files, where they do not say"},
          {"--width",   &o.width,   kSide,         "Pixels a row, of headerless files"},
          {"--height",  &o.height,  kSide,         "Rows, of headerless files"},
          {"--picture", &o.picture, kText,         "A picture of the differences to write"},
          {"--amplify", &o.amplify, kAmplify,      "What the differences are multiplied by there"},
          {"--json",    &o.json,    kFlag,         "Print JSON"},
      },
      .notes = ContainerHelp() + kNotes,
      .run = [options, &globals] { return Run(*options, globals); },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
