// korvex2 guess: what a headerless file may be.

#include "analysis/Candidates.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>

#include "commands/Commands.h"
#include "commands/CommonOptions.h"
#include "drawing/ContactSheet.h"
#include "io/Containers.h"
#include "io/Raster.h"
#include "processing/Converted.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"
#include "terminal/Table.h"

namespace Korvex2::Tool {
namespace {

constexpr std::size_t kOnSheet = 6;
constexpr WholeNumber kBest{1, 1000};

struct Options {
  std::string input;
  std::string format;
  std::optional<std::uint32_t> width;
  std::optional<std::uint32_t> height;
  std::uint32_t best = 10;
  std::string sheet;
  bool json = false;
};

// --- The sheet -----------------------------------------------------------------------------------

Image FrameOf(const Candidate& reading, const Bytes& file) {
  Image frame = NewImage(reading.width, reading.height, *reading.format, reading.tile);
  const std::size_t size = std::min<std::size_t>(file.size, frame.GetDataSize());
  std::copy_n(file.data.get(), size, frame.GetData());
  return frame;
}

// In colour where that can be made: mosaics with an odd side are shown as grey.
Image PictureOf(const Candidate& reading, const Bytes& file) {
  const bool isOdd = reading.width % 2 != 0 || reading.height % 2 != 0;
  return Converted(FrameOf(reading, file),
                   reading.format->IsDeep() ? PIXEL_FORMAT_RGB16 : PIXEL_FORMAT_RGB8,
                   isOdd ? NO_COLOR_PROCESSING : HQ_LINEAR);
}

std::string LabelOf(const Candidate& reading) {
  return reading.tile == NONE ? std::string(reading.format->name)
                              : fmt::format("{} {}", reading.format->name, NameOf(reading.tile));
}

void WriteSheet(const Options& options, const Bytes& file, std::span<const Candidate> readings) {
  std::vector<Image> pictures;
  std::vector<Exhibit> exhibits;
  pictures.reserve(readings.size());
  for (const Candidate& reading : readings) {
    pictures.push_back(PictureOf(reading, file));
    exhibits.push_back(
        {&pictures.back(),
         fmt::format("{}  {} x {}", exhibits.size() + 1, reading.width, reading.height),
         LabelOf(reading)});
  }
  const std::string title =
      fmt::format("{}  {} bytes; brightened to the full range",
                  std::filesystem::path(options.input).filename().string(), file.size);
  WriteImage(DrawOverviews(title, exhibits), options.sheet);
}

// --- The table -----------------------------------------------------------------------------------

void PrintText(std::span<const Candidate> readings) {
  Table table = {{"", "width", "height", "format", "tile", "bits/byte", ""}};
  for (const Candidate& reading : readings) {
    table.push_back({std::to_string(table.size()), std::to_string(reading.width),
                     std::to_string(reading.height), std::string(reading.format->name),
                     reading.tile == NONE ? "" : std::string(NameOf(reading.tile)),
                     fmt::format("{:.3f}", reading.bitsPerByte),
                     reading.isCommonSize ? "a common size" : ""});
  }
  Print(table);
}

void PrintJson(const Options& options, const Bytes& file, std::span<const Candidate> readings) {
  fmt::print("{{\n  \"input\": {}, \"bytes\": {},\n  \"readings\": [", Json(options.input),
             file.size);
  const char* separator = "\n";
  for (const Candidate& reading : readings) {
    fmt::print(
        "{}    {{\"width\": {}, \"height\": {}, \"format\": {}, \"tile\": {}, \"bitsPerByte\": "
        "{:.6f}, \"commonSize\": {}}}",
        separator, reading.width, reading.height, Json(reading.format->name),
        reading.tile == NONE ? "null" : Json(NameOf(reading.tile)), reading.bitsPerByte,
        reading.isCommonSize);
    separator = ",\n";
  }
  fmt::print("\n  ]\n}}\n");
}

[[noreturn]] void FailForNothing(const Options& options, std::uint64_t size) {
  throw Failure("{} has {} bytes, and no {} has that size{}; look for a header", options.input,
                size, options.format.empty() ? "frame" : options.format + " frame",
                options.width || options.height ? " with that width and height" : "");
}

void Run(const Options& options, const Globals& globals) {
  Known known{nullptr, options.width, options.height};
  if (!options.format.empty()) {
    known.format = &ParseFormat("--format", options.format);
  }
  if (!options.sheet.empty()) {
    RequireHolds(options.sheet, PIXEL_FORMAT_RGB8);
  }
  const InputFile input(options.input);
  const Bytes& file = input.Read();
  const std::vector<Candidate> all = FindCandidates(file, known);
  if (all.empty()) {
    FailForNothing(options, file.size);
  }
  const std::span<const Candidate> readings(all);
  if (!options.sheet.empty()) {
    WriteSheet(options, file, readings.first(std::min(kOnSheet, all.size())));
  }
  const auto best = readings.first(std::min<std::size_t>(options.best, all.size()));
  if (options.json) {
    PrintJson(options, file, best);
    return;
  }
  PrintText(best);
  if (!options.sheet.empty()) {
    globals.Say("");
    globals.Say("{} ({} bytes) -> {}", options.input, file.size, options.sheet);
  }
}

constexpr const char* kNotes =
    R"(Every width, height and format whose frame has exactly the size of the file is tried, sizes of
common sensors and video modes first. The bits of a byte say how well a reading foresees each sample
from its neighbours: the fewer, the likelier. Where the first is far below the rest it is right;
where they lie close together, look at the sheet.

Samples do not tell red from blue: rgb8 and bgr, or the tiles rggb and bggr, differ in nothing else,
and the one with more red comes first. A file of many frames looks like one tall frame.

Examples:
  korvex2 guess mystery.bin
  korvex2 guess mystery.bin --sheet sheet.png
  korvex2 guess mystery.bin --width 1936 --format raw12 --sheet sheet.png)";

}  // namespace

Command GuessCommand(const Globals& globals) {
  const auto options = std::make_shared<Options>();
  Options& o = *options;
  // clang-format off
  return {
      .name = "guess",
      .help = "Find out size, format and tile of a headerless file",
      .positionals = {
          {"input", &o.input, kText, "The file to read, whatever its name"},
      },
      .options = {
          {"--format", &o.format, FormatWords(), "The pixel format, if known"},
          {"--width",  &o.width,  kSide,         "Pixels a row, if known"},
          {"--height", &o.height, kSide,         "Rows, if known"},
          {"--best",   &o.best,   kBest,         "How many readings to print"},
          {"--sheet",  &o.sheet,  kText,         "A contact sheet of the best six to write"},
          {"--json",   &o.json,   kFlag,         "Print JSON"},
      },
      .notes = kNotes,
      .run = [options, &globals] { Run(*options, globals); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
