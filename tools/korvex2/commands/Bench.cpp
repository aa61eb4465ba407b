// korvex2 bench: how fast conversions are on this machine.

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "ImageConverterARMStub.h"
#include "InstructionSets.h"
#include "PixelFormats.h"
#include "Routes.h"
#include "analysis/Timing.h"
#include "commands/Commands.h"
#include "commands/CommonOptions.h"
#include "io/Raster.h"
#include "processing/Converted.h"
#include "processing/InstructionSetChoice.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"
#include "terminal/Table.h"

namespace Korvex2::Tool {
namespace {

struct Options {
  std::string from;
  std::string to;
  std::string size = "1920x1080";
  std::string cpu;
  bool json = false;
};

struct Pair {
  PixelFormat source;
  PixelFormat target;
};

// What is measured where neither side is given: what cameras send, into what programs take.
constexpr Pair kUsualPairs[] = {
    {PIXEL_FORMAT_MONO8, PIXEL_FORMAT_BGRU},   {PIXEL_FORMAT_MONO12, PIXEL_FORMAT_MONO16},
    {PIXEL_FORMAT_MONO16, PIXEL_FORMAT_MONO8}, {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_BGR},
    {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_BGRU},    {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_MONO8},
    {PIXEL_FORMAT_RGB16, PIXEL_FORMAT_RGB8},   {PIXEL_FORMAT_411YUV8, PIXEL_FORMAT_RGB8},
    {PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_BGRU}, {PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_RGB8},
    {PIXEL_FORMAT_444YUV8, PIXEL_FORMAT_RGB8}, {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_422YUV8},
    {PIXEL_FORMAT_RAW8, PIXEL_FORMAT_BGRU},    {PIXEL_FORMAT_RAW16, PIXEL_FORMAT_RGB16},
};

struct Outcome {
  Pair pair;
  double pixels;
  double bytes;  ///< in and out
  double seconds;
  double memcpySeconds;

  double NanosecondsPerPixel() const { return seconds * 1e9 / pixels; }
  double MegapixelsPerSecond() const { return pixels / 1e6 / std::max(seconds, 1e-9); }
  double GigabytesPerSecond() const { return bytes / 1e9 / std::max(seconds, 1e-9); }
  double TimesMemcpy() const { return seconds / std::max(memcpySeconds, 1e-9); }
};

// --- What is asked for ---------------------------------------------------------------------------

struct Size {
  std::uint32_t width;
  std::uint32_t height;
};

// The whole text as a number from 1 on; 0 for anything else.
std::uint32_t ParseNumber(std::string_view text) {
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc{} && stop == end ? number : 0;
}

Size ParseSize(std::string_view text) {
  const std::size_t x = std::min(text.find('x'), text.size());
  const Size size{ParseNumber(text.substr(0, x)),
                  ParseNumber(text.substr(std::min(x + 1, text.size())))};
  if (size.width == 0 || size.height == 0) {
    throw UsageFailure("--size '{}' is no size; it is WIDTHxHEIGHT, such as 1920x1080", text);
  }
  return size;
}

std::vector<Pair> PairsOf(const Options& options) {
  if (options.from.empty() && options.to.empty()) {
    return {std::begin(kUsualPairs), std::end(kUsualPairs)};
  }
  const PixelFormatInfo* from =
      options.from.empty() ? nullptr : &ParseFormat("--from", options.from);
  const PixelFormatInfo* to = options.to.empty() ? nullptr : &ParseFormat("--to", options.to);
  std::vector<Pair> pairs;
  for (const PixelFormatInfo& source : PixelFormats()) {
    for (const PixelFormatInfo& target : PixelFormats()) {
      const bool wanted = (from == nullptr || from->format == source.format) &&
                          (to == nullptr || to->format == target.format);
      if (wanted && FindRoute(source.format, target.format) != nullptr) {
        pairs.push_back({source.format, target.format});
      }
    }
  }
  if (pairs.empty()) {
    throw UsageFailure("no conversion from {} to {} to measure; 'korvex2 routes' lists them all",
                       from == nullptr ? "any format" : from->name,
                       to == nullptr ? "any format" : to->name);
  }
  return pairs;
}

// --- The measurement -----------------------------------------------------------------------------

// Random pixels: every byte is a sample in every format.
Image RandomFrame(const PixelFormatInfo& format, Size size) {
  Image frame = NewImage(size.width, size.height, format, IsRaw(format.format) ? RGGB : NONE);
  std::mt19937 random(1);
  const std::uint64_t pixels = std::uint64_t{size.width} * size.height;
  const auto bytes = static_cast<std::size_t>(GroupedSize(format, pixels));
  for (std::size_t i = 0; i < bytes; i += sizeof(std::uint32_t)) {
    const auto word = static_cast<std::uint32_t>(random());
    std::memcpy(frame.GetData() + i, &word, std::min(sizeof word, bytes - i));
  }
  return frame;
}

Outcome Measure(const Pair& pair, Size size) {
  const PixelFormatInfo& source = *FindPixelFormat(pair.source);
  const PixelFormatInfo& target = *FindPixelFormat(pair.target);
  const std::uint64_t pixels = std::uint64_t{size.width} * size.height;
  const auto bytes =
      static_cast<std::size_t>(GroupedSize(source, pixels) + GroupedSize(target, pixels));
  const Image frame = RandomFrame(source, size);
  Image result = Converted(frame, pair.target);
  const std::vector<unsigned char> copied(bytes / 2, 1);
  std::vector<unsigned char> copy(bytes / 2);
  ImageConverter converter;
  const std::vector<double> seconds = MedianSeconds({
      [&] { (void)converter.Convert(&frame, pair.target, &result); },
      [&] { std::memcpy(copy.data(), copied.data(), copied.size()); },
  });
  return {pair, static_cast<double>(pixels), static_cast<double>(bytes), seconds[0], seconds[1]};
}

// --- What is printed -----------------------------------------------------------------------------

void PrintText(const std::vector<Outcome>& outcomes) {
  Table table = {{"from", "to", "ns/px", "Mpx/s", "GB/s", "memcpy"}};
  for (const Outcome& outcome : outcomes) {
    table.push_back({std::string(NameOf(outcome.pair.source)),
                     std::string(NameOf(outcome.pair.target)),
                     fmt::format("{:.3f}", outcome.NanosecondsPerPixel()),
                     fmt::format("{:.0f}", outcome.MegapixelsPerSecond()),
                     fmt::format("{:.1f}", outcome.GigabytesPerSecond()),
                     fmt::format("{:.2f} x", outcome.TimesMemcpy())});
  }
  Print(table);
}

void PrintJson(const std::vector<Outcome>& outcomes, Size size) {
  fmt::print("{{\n  \"instructionSet\": {}, \"width\": {}, \"height\": {},\n  \"conversions\": [",
             Json(GetInstructionSet()), size.width, size.height);
  const char* separator = "\n";
  for (const Outcome& outcome : outcomes) {
    fmt::print(
        "{}    {{\"from\": {}, \"to\": {}, \"nsPerPx\": {:.6f}, \"mpxPerSecond\": {:.3f}, "
        "\"gbPerSecond\": {:.3f}, \"timesMemcpy\": {:.4f}}}",
        separator, Json(NameOf(outcome.pair.source)), Json(NameOf(outcome.pair.target)),
        outcome.NanosecondsPerPixel(), outcome.MegapixelsPerSecond(), outcome.GigabytesPerSecond(),
        outcome.TimesMemcpy());
    separator = ",\n";
  }
  fmt::print("\n  ]\n}}\n");
}

void Run(const Options& options, const Globals& globals) {
  const Size size = ParseSize(options.size);
  const std::vector<Pair> pairs = PairsOf(options);
  ChooseInstructionSet(options.cpu);
  std::vector<Outcome> outcomes;
  outcomes.reserve(pairs.size());
  for (const Pair& pair : pairs) {
    outcomes.push_back(Measure(pair, size));
  }
  if (options.json) {
    PrintJson(outcomes, size);
    return;
  }
  PrintText(outcomes);
  globals.Say("");
  globals.Say("{} x {} pixels, {}, one thread, into a reused image", size.width, size.height,
              GetInstructionSet());
}

constexpr const char* kNotes = R"(
Without --from and --to, a selection is measured; with one of them, all its conversions.

  ns/px    nanoseconds of processor time a pixel, the median of several runs on one thread
  Mpx/s    million pixels a second
  GB/s     billion bytes a second, in and out
  memcpy   the time as a multiple of that of a memcpy that reads and writes as many bytes in all

Frames are random pixels; mosaics are rggb and take the default method, nearest.

Examples:
  korvex2 bench
  korvex2 bench --from yuv422 --to bgr --size 3840x2160
  korvex2 bench --to mono8 --cpu plain)";

}  // namespace

Command BenchCommand(const Globals& globals) {
  const auto options = std::make_shared<Options>();
  Options& o = *options;
  // clang-format off
  return {
      .name = "bench",
      .help = "Measure how fast conversions are on this machine",
      .options = {
          {"--from", &o.from, FormatWords(), "Only from this format"},
          {"--to",   &o.to,   FormatWords(), "Only to this format"},
          {"--size", &o.size, kText,         "Frames of WIDTHxHEIGHT"},
          CpuOption(o.cpu),
          {"--json", &o.json, kFlag,         "Print JSON"},
      },
      .notes = kNotes,
      .run = [options, &globals] { Run(*options, globals); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
