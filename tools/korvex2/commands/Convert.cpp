// korvex2 convert: files into others, in another pixel format.

#include <tbb/info.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string>

#include "BayerNames.h"
#include "batch/Batch.h"
#include "batch/FrameList.h"
#include "batch/OutputPattern.h"
#include "commands/Commands.h"
#include "commands/CommonOptions.h"
#include "io/Containers.h"
#include "io/Headerless.h"
#include "processing/Converted.h"
#include "processing/Grading.h"
#include "processing/InstructionSetChoice.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"
#include "terminal/Values.h"

namespace Korvex2::Tool {
namespace {

struct Options {
  std::string input;
  std::vector<std::string> more;  // inputs, and last the output
  std::string to;
  std::string from;
  std::optional<std::uint32_t> width;
  std::optional<std::uint32_t> height;
  std::string tile;
  std::string method;
  std::string cpu;
  std::optional<std::string> frames;
  std::optional<std::uint64_t> headerBytes;
  std::optional<std::uint64_t> frameBytes;
  std::optional<std::uint64_t> skip;
  std::optional<std::uint64_t> every;
  std::optional<unsigned> jobs;
  bool resume = false;
  bool failFast = false;
  bool jsonProgress = false;
  std::string blackLevel;
  std::string scale;
  std::string crop;
  std::string whiteBalance;
  std::string stretch;
  std::optional<double> gamma;
  std::string fps;

  const std::string& output() const { return more.back(); }
  std::vector<std::string> inputs() const {
    std::vector<std::string> all = {input};
    all.insert(all.end(), more.begin(), more.end() - 1);
    return all;
  }
  bool TakesManyOfAFile() const { return frames || headerBytes || frameBytes || skip || every; }
  bool IsBatch() const {
    return more.size() > 1 || NamesMany(input) || OutputPattern::IsPattern(output()) ||
           TakesManyOfAFile() || jobs || resume || failFast || jsonProgress;
  }
};

constexpr const char* kNotes = R"(
A raw source needs --tile, its top-left 2x2 in reading order, a --from that says it (BayerRG8), or
a camera's raw file:
  rggb: R G   grbg: G R   gbrg: G B   bggr: B G   none: no mosaic, the samples
        G B         B G         R G         G R         are taken as grey
An output that exists is replaced once the new one is complete, and symbolic links are followed.
"-" is standard input or output without a header, "png:-" one with the file format of that extension.

Y4M for players and encoders: --to yuv444, yuv422, yuv411 or mono8; --fps if not 25.

To look at dark or linear frames: --black-level and --scale come before the conversion; --crop,
--white-balance, --stretch and --gamma after it, in this order whatever theirs is. They change what
the converter made. For a source of more than 8 bits they work on 16 bits, and an 8-bit result is
rounded once, at the end.

Many frames: give many inputs (folders and quoted globs among them), and an output with {name} (of
the input), {index:06} (counts what is converted) or {frame} (counts in the file), each from 0. A
headerless file holds many frames when --frames, --skip, --every, --header-bytes or --frame-bytes
is given. A .raw or .y4m output without {} takes all frames one after the other, and is written
only when none of them is missing. Folders of outputs are made, each once: one that goes away
meanwhile ends the run. At most 2 frames for each job are in memory. A frame that fails is named and
counted, and the others go on; the exit code is then 1. Ctrl-C ends the frames that are begun, a
second one ends at once. --resume takes a file that is there and whole as done, whatever it was made
from: one that can be read, and of .raw and .y4m one of the right size.

Examples:
  korvex2 convert photo.png photo.pgm --to mono8
  korvex2 convert photo.png frame.raw --to yuv422
  korvex2 convert frame.raw photo.png --from yuv422 --width 640 --height 480 --to rgb8
  korvex2 convert mosaic.png photo.png --from raw8 --tile rggb --method hq_linear --to bgru
  korvex2 convert capture.dng photo.png --method rigorous --to rgb16
  korvex2 convert capture.dng frame.raw --to raw16
  korvex2 convert frame.raw photo.png --from Mono12Packed --width 640 --height 480 --to mono16
  korvex2 convert capture.dng look.png --to rgb8 --black-level file --scale file
      --white-balance grey --gamma 2.2
  korvex2 convert captures 'out/{name}.png' --to rgb8 --resume
  korvex2 convert dump.raw 'out/{index:06}.png' --from raw12 --tile rggb --width 1920
      --height 1080 --header-bytes 512 --every 10 --to rgb8
  camera | korvex2 convert - - --from raw8 --tile rggb --width 640 --height 480 --frames all
      --to rgb8 | ffmpeg -f rawvideo -pixel_format rgb24 -video_size 640x480 -i - out.mkv
  korvex2 convert dump.raw y4m:- --from raw8 --tile rggb --width 640 --height 480 --frames all
      --to yuv444 | mpv -)";

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
void CheckRawOptions(const Options& options, const Image& image, PixelFormat target,
                     const std::string& input) {
  const PixelFormat source = image.GetPixelFormat();
  const bool demosaics = IsRaw(source) && !IsRaw(target);
  if (demosaics && !TileOf(options) && image.GetBayerTileFormat() == NONE) {
    throw UsageFailure("a {} source needs --tile, the colours of its top-left 2x2: {}",
                       NameOf(source), TileNames());
  }
  if (!IsRaw(source) && !options.tile.empty()) {
    throw UsageFailure("--tile is for mosaics and {} is {}; say --from raw8, raw12 or raw16", input,
                       NameOf(source));
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
  if (!options.blackLevel.empty()) {
    shape.levels.black = ParseLevel("--black-level", options.blackLevel);
  }
  if (!options.scale.empty()) {
    shape.levels.white = ParseLevel("--scale", options.scale);
  }
  return shape;
}

Grade GradeOf(const Options& options) {
  return {ParseCrop(options.crop), ParseWhiteBalance(options.whiteBalance),
          ParseStretch(options.stretch), options.gamma};
}

WriteOptions WriteOptionsOf(const Options& options) {
  if (options.fps.empty()) {
    return {};
  }
  if (!IsVideo(ContainerOf(options.output()))) {
    throw UsageFailure("--fps is for video, .y4m, and {} is none", options.output());
  }
  return {ParseFrameRate(options.fps)};
}

// How a frame becomes another one.
class Conversion {
 public:
  explicit Conversion(const Options& options)
      : m_options(options),
        target(ParseFormat("--to", options.to).format),
        shape(ShapeOf(options)),
        method(options.method.empty() ? DEFAULT : ParseMethod(options.method)),
        grade(GradeOf(options)),
        write(WriteOptionsOf(options)) {
    RequireAdjustable(grade, target);
  }

  Image Read(const InputFile& file, const Container& container) const {
    Image source = ReadImage(file, container, shape);
    CheckRawOptions(m_options, source, target, file.path());
    return source;
  }
  Image Convert(Image source) const {
    const PixelFormat format = FormatBeforeGrading(grade, source.GetPixelFormat(), target);
    return Graded(Converted(std::move(source), format, method), grade, target);
  }
  FrameSize SizeOfResult(const std::function<const InputFile&()>& file,
                         const Container& container) const {
    if (grade.crop) {
      return {grade.crop->width, grade.crop->height};
    }
    if (IsHeaderless(container) && shape.width && shape.height) {
      return {*shape.width, *shape.height};
    }
    const Image source = Read(file(), container);
    return {source.GetCols(), source.GetRows()};
  }

 private:
  const Options& m_options;

 public:
  const PixelFormat target;
  const InputShape shape;
  const ColorProcessingAlgorithm method;
  const Grade grade;
  const WriteOptions write;
};

void RunOne(const Options& options, const Globals& globals) {
  const Conversion conversion(options);
  const std::string& input = options.input;
  RequireHolds(options.output(), conversion.target);

  const Container& container = ContainerOf(input);
  Image source = conversion.Read(InputFile(input, MostBytes(input, conversion.shape)), container);
  const std::string described = Describe(source);
  WriteImage(conversion.Convert(std::move(source)), options.output(), conversion.write);
  if (!IsStandardStream(options.output())) {
    globals.Say("{} ({}) -> {} ({})", input, described, options.output(),
                NameOf(conversion.target));
  }
}

std::optional<std::uint64_t> MostFrames(const Options& options) {
  if (!options.frames || *options.frames == "all") {
    return std::nullopt;
  }
  const std::string& text = *options.frames;
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number == 0) {
    throw UsageFailure("--frames '{}' is neither a number from 1 nor all", text);
  }
  return number;
}

FrameLayout LayoutOf(const Options& options, const InputShape& shape, bool hasHeaderless) {
  FrameLayout layout;
  layout.skip = options.skip.value_or(0);
  layout.every = options.every.value_or(1);
  layout.most = MostFrames(options);
  layout.headerBytes = options.headerBytes.value_or(0);
  layout.backToBack = options.TakesManyOfAFile() && hasHeaderless;
  if (!layout.backToBack) {
    if (options.headerBytes || options.frameBytes) {
      throw UsageFailure(
          "--header-bytes and --frame-bytes are for headerless inputs, .raw or .bin");
    }
    return layout;
  }
  if (shape.format == nullptr || !shape.width || !shape.height) {
    throw UsageFailure("a headerless file of many frames needs --from, --width and --height");
  }
  RequireFrame(*shape.format, *shape.width, *shape.height);
  const std::uint64_t pixels = std::uint64_t{*shape.width} * *shape.height;
  layout.pixelBytes = GroupedSize(*shape.format, pixels);
  layout.frameBytes = options.frameBytes.value_or(layout.pixelBytes);
  if (layout.frameBytes < layout.pixelBytes) {
    throw UsageFailure("--frame-bytes {} is too short: {} x {} pixels of {} have {}",
                       layout.frameBytes, *shape.width, *shape.height, shape.format->name,
                       layout.pixelBytes);
  }
  return layout;
}

// A mosaic without its tile would fail for each frame anew.
void RequireTile(const Conversion& conversion) {
  const PixelFormatInfo* source = conversion.shape.format;
  if (source != nullptr && IsRaw(source->format) && !IsRaw(conversion.target) &&
      !conversion.shape.tile) {
    throw UsageFailure("a {} source needs --tile, the colours of its top-left 2x2: {}",
                       source->name, TileNames());
  }
}

ProgressForm FormOf(const Options& options, const Globals& globals) {
  if (options.jsonProgress) {
    return ProgressForm::Json;
  }
  return globals.quiet || isatty(STDERR_FILENO) == 0 ? ProgressForm::None : ProgressForm::Line;
}

unsigned DefaultJobs() {
  return std::clamp(static_cast<unsigned>(tbb::info::default_concurrency()), 1U, kMostJobs);
}

void RunMany(const Options& options, const Globals& globals) {
  const Conversion conversion(options);
  RequireHolds(options.output(), conversion.target);
  const std::vector<std::string> files = ExpandInputs(options.inputs());
  const bool hasHeaderless = std::ranges::any_of(files, [](const std::string& file) {
    return HasContainer(file) && IsHeaderless(ContainerOf(file));
  });
  if (hasHeaderless) {
    RequireTile(conversion);
  }
  const FrameLayout layout = LayoutOf(options, conversion.shape, hasHeaderless);

  BatchOptions batch;
  batch.output = options.output();
  batch.shape = conversion.shape;
  batch.target = conversion.target;
  batch.jobs = options.jobs.value_or(DefaultJobs());
  batch.resume = options.resume;
  batch.failFast = options.failFast;
  batch.progress = FormOf(options, globals);
  batch.write = conversion.write;
  const FrameWork work = {
      [&](const InputFile& file, const Container& container) {
        return conversion.Convert(conversion.Read(file, container));
      },
      [&](const std::function<const InputFile&()>& file, const Container& container) {
        return conversion.SizeOfResult(file, container);
      }};
  const Tally tally = RunBatch(files, layout, batch, work);
  if (!IsStandardStream(options.output())) {
    globals.Say("{} frame{} -> {} ({}){}", tally.converted, tally.converted == 1 ? "" : "s",
                options.output(), NameOf(conversion.target),
                tally.skipped == 0 ? "" : fmt::format("; {} were there already", tally.skipped));
  }
}

void Run(const Options& options, const Globals& globals) {
  ChooseInstructionSet(options.cpu);
  options.IsBatch() ? RunMany(options, globals) : RunOne(options, globals);
}

constexpr Text kInput{.mayBeEmpty = false};
constexpr Text kOutput{.placeholder = "[MORE INPUTS...] OUTPUT"};
constexpr std::uint64_t kMost = 1'000'000'000'000;
constexpr WholeNumber kFrom0{0, kMost};
constexpr WholeNumber kFrom1{1, kMost};
constexpr WholeNumber kJobs{1, kMostJobs};
constexpr RealNumber kGamma{0.01, 100};

}  // namespace

Command ConvertCommand(const Globals& globals) {
  const auto options = std::make_shared<Options>();
  Options& o = *options;
  // clang-format off
  return {
      .name = "convert",
      .help = "Convert files into another pixel format",
      .positionals = {
          {"input",  &o.input, kInput,  "What to read: a file, a folder, a quoted glob"},
          {"output", &o.more,  kOutput, "More inputs, and last the file to write"},
      },
      .options = {
          {"--to",            &o.to,           FormatWords(), "Pixel format to write", Presence::Required},
          {"--from",          &o.from,         FormatWords(), "Pixel format of the input, where the file does not say"},
          {"--width",         &o.width,        kSide,         "Pixels a row, of a headerless input"},
          {"--height",        &o.height,       kSide,         "Rows, of a headerless input"},
          {"--tile",          &o.tile,         TileWords(),   "Bayer tile of a raw input: " + TileNames()},
          {"--method",        &o.method,       MethodWords(), "How to make colour of a raw input: " + MethodNames() +
                                                              "; none shows the mosaic as grey"},
          CpuOption(o.cpu),

          {"--black-level",   &o.blackLevel,   kText,         "Subtract it from a raw16 source: a number, or file for "
                                                              "what a camera's file says"},
          {"--scale",         &o.scale,        kText,         "The white level of a raw16 source that becomes 65535: "
                                                              "a number, or file"},
          {"--crop",          &o.crop,         kText,         "x,y,width,height: the part of the result to keep"},
          {"--white-balance", &o.whiteBalance, kText,         "grey, or r,g,b: what colours are multiplied by"},
          {"--stretch",       &o.stretch,      kText,         "low,high: the percentiles that become black and white"},
          {"--gamma",         &o.gamma,        kGamma,        "Brightens by the exponent 1/gamma, such as 2.2"},

          {"--frames",        &o.frames,       kText,         "At most so many frames, or all"},
          {"--skip",          &o.skip,         kFrom0,        "Frames passed over at the begin"},
          {"--every",         &o.every,        kFrom1,        "Of the rest, take each n-th"},
          {"--header-bytes",  &o.headerBytes,  kFrom0,        "Bytes before the first frame of a headerless file of many"},
          {"--frame-bytes",   &o.frameBytes,   kFrom1,        "Bytes from one frame to the next, where more than pixels "
                                                              "lie between"},
          {"--fps",           &o.fps,          kText,         "Frames a second of a .y4m output: 25, 29.97, 30000/1001"},
          {"--jobs",          &o.jobs,         kJobs,         "Frames converted at once; all cores if not given"},
          {"--resume",        &o.resume,       kFlag,         "Leave out frames whose output is there and whole"},
          {"--fail-fast",     &o.failFast,     kFlag,         "Stop at the first frame that fails"},
          {"--json-progress", &o.jsonProgress, kFlag,         "Tell the progress on stderr as JSON, an object a line"},
      },
      .notes = ContainerHelp() + kNotes,
      .run = [options, &globals] { Run(*options, globals); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
