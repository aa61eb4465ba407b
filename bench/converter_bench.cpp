/// Speed of every conversion, one thread, beside memcpy, the plain loops and other libraries.
///
/// A row is named pair/size/cache/contestant: rgb8_to_yuv422/1920x1080/hot/ours. Its time is the
/// median of the contest's rounds; rows of one contest are measured in turns (see Contest.h).

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <string_view>

#include "Contest.h"
#include "InstructionSets.h"
#include "Korvex2Version.h"
#include "PixelFormats.h"
#include "Routes.h"
#include "TableReporter.h"
#include "Utilities.h"

namespace Korvex2::Bench {
namespace {

constexpr const char* kUsage =
    R"(converter_bench [--quick] [--cpu NAME] [--content scene|noise|grey]
                [--size WxH]... [--cache hot|cold] [--budget SECONDS] [--benchmark_...]

--quick    hot at 1920x1080 and cold at 3840x2160, without literal and fresh
--size     these sizes instead of the usual ones
--cpu      an instruction set of `korvex2 info`
--budget   seconds for each contestant of a contest, roughly (0.02; quick: 0.01)

Rows are named pair/size/cache/contestant, rgb8_to_yuv422/1920x1080/hot/ours; --benchmark_filter
selects them. --benchmark_out=FILE writes JSON.
)";

struct Options {
  bool quick = false;
  std::string cpu;
  Content content = Content::Scene;
  std::vector<FrameSize> sizes;
  std::optional<Cache> cache;
  std::optional<std::chrono::duration<double>> budget;

  std::chrono::duration<double> Budget() const {
    return budget.value_or(std::chrono::duration<double>(quick ? 0.01 : 0.02));
  }
};

bool failed = false;

// --- Which rows there are

/// A size with its cache state, and who is timed there.
struct Round {
  FrameSize size;
  Cache cache;
  bool slowOnes;  ///< literal and fresh, too
  bool peers;
  bool everyPair;
};

constexpr Round kRounds[] = {
    // For what a call costs beside its pixels.
    {{32, 32}, Cache::Hot, false, false, true},
    {{64, 64}, Cache::Hot, false, false, true},
    {{640, 480}, Cache::Hot, true, true, true},
    {{1920, 1080}, Cache::Hot, true, true, true},
    {{1920, 1080}, Cache::Cold, false, true, true},
    {{3840, 2160}, Cache::Hot, true, true, true},
    {{3840, 2160}, Cache::Cold, false, true, true},
    {{12000, 12500}, Cache::Hot, false, false, false},
};

constexpr Round kQuickRounds[] = {
    {{1920, 1080}, Cache::Hot, false, true, true},
    {{3840, 2160}, Cache::Cold, false, true, true},
};

struct Pair {
  PixelFormat source;
  PixelFormat target;
};

// Timed at 150 megapixels as well, where most pairs would take long and show the same.
constexpr Pair kLargePairs[] = {
    {PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_RGB8},   {PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_BGRU},
    {PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_MONO8},  {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_422YUV8},
    {PIXEL_FORMAT_411YUV8, PIXEL_FORMAT_RGB8},   {PIXEL_FORMAT_444YUV8, PIXEL_FORMAT_RGB8},
    {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_BGR},       {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_BGRU},
    {PIXEL_FORMAT_BGRU, PIXEL_FORMAT_BGR},       {PIXEL_FORMAT_RGB8, PIXEL_FORMAT_MONO8},
    {PIXEL_FORMAT_BGRU, PIXEL_FORMAT_MONO8},     {PIXEL_FORMAT_MONO8, PIXEL_FORMAT_RGB8},
    {PIXEL_FORMAT_RGB16, PIXEL_FORMAT_RGB8},     {PIXEL_FORMAT_RGB16, PIXEL_FORMAT_MONO16},
    {PIXEL_FORMAT_MONO16, PIXEL_FORMAT_MONO8},   {PIXEL_FORMAT_MONO12, PIXEL_FORMAT_MONO16},
    {PIXEL_FORMAT_MONO12, PIXEL_FORMAT_BGRU},    {PIXEL_FORMAT_MONO12, PIXEL_FORMAT_422YUV8},
    {PIXEL_FORMAT_BGRU16, PIXEL_FORMAT_411YUV8}, {PIXEL_FORMAT_422YUV8, PIXEL_FORMAT_BGRU16},
};

bool IsLarge(const Pair& pair) {
  return std::ranges::any_of(kLargePairs, [&](const Pair& large) {
    return large.source == pair.source && large.target == pair.target;
  });
}

std::vector<Pair> Pairs() {
  std::vector<Pair> pairs;
  for (const PixelFormatInfo& source : PixelFormats()) {
    for (const PixelFormatInfo& target : PixelFormats()) {
      if (FindRoute(source.format, target.format) != nullptr) {
        pairs.push_back({source.format, target.format});
      }
    }
  }
  return pairs;
}

std::vector<Round> RoundsOf(const Options& options) {
  std::vector<Round> rounds;
  for (const FrameSize& size : options.sizes) {
    for (const Cache cache : {Cache::Hot, Cache::Cold}) {
      rounds.push_back({size, cache, cache == Cache::Hot && !options.quick, true, true});
    }
  }
  if (options.sizes.empty() && options.quick) {
    rounds.assign(std::begin(kQuickRounds), std::end(kQuickRounds));
  } else if (options.sizes.empty()) {
    rounds.assign(std::begin(kRounds), std::end(kRounds));
  }
  if (options.cache) {
    std::erase_if(rounds, [&](const Round& round) { return round.cache != *options.cache; });
  }
  return rounds;
}

bool TakesPart(const std::string& contestant, const Round& round) {
  if (contestant == "ours" || contestant == "memcpy") return true;
  return contestant == "literal" || contestant == "fresh" ? round.slowOnes : round.peers;
}

// As Google Benchmark filters, but beforehand: only those who are asked for are raced.
class Filter {
 public:
  explicit Filter(std::string_view text)
      : m_negative(text.starts_with('-')), m_regex(RegexOf(m_negative ? text.substr(1) : text)) {}

  bool Takes(const std::string& name) const {
    return std::regex_search(name, m_regex) != m_negative;
  }

 private:
  static std::regex RegexOf(std::string_view text) {
    const std::string_view pattern = text.empty() || text == "all" ? "." : text;
    return std::regex(pattern.begin(), pattern.end(), std::regex::extended);
  }

  bool m_negative;
  std::regex m_regex;
};

// --- Rows of one contest

/// Held when its first row is run.
struct Contest {
  Setting setting;
  std::vector<std::string> contestants = {};
  std::map<std::string, Measure> measures = {};
};

void ReportRow(benchmark::State& state, Contest& contest, const std::string& contestant) {
  if (contest.measures.empty()) contest.measures = Hold(contest.setting, contest.contestants);
  const Measure& measure = contest.measures[contestant];
  if (!measure.failure.empty()) {
    failed = failed || !measure.absent;
    state.SkipWithError(measure.failure.c_str());
    return;
  }
  while (state.KeepRunning()) state.SetIterationTime(measure.median);

  const Setting& setting = contest.setting;
  const auto pixels = static_cast<double>(setting.size.Pixels());
  const auto in = static_cast<double>(BytesOf(setting.source, setting.size.Pixels()));
  const auto out = static_cast<double>(BytesOf(setting.target, setting.size.Pixels()));
  state.SetLabel(measure.how);
  state.counters["ns_per_px"] = measure.median * 1e9 / pixels;
  state.counters["least_ns_per_px"] = measure.least * 1e9 / pixels;
  state.counters["gb_per_s"] = (in + out) / measure.median / 1e9;
  state.counters["bytes_in"] = in;
  state.counters["bytes_out"] = out;
  state.counters["samples"] = static_cast<double>(measure.samples);
  if (measure.deviation) state.counters["deviation"] = *measure.deviation;
}

std::string NameOf(const Setting& setting) {
  std::string name(FindPixelFormat(setting.source)->name);
  name.append("_to_").append(FindPixelFormat(setting.target)->name).append("/");
  name.append(std::to_string(setting.size.cols)).append("x");
  name.append(std::to_string(setting.size.rows)).append("/");
  return name.append(setting.cache == Cache::Hot ? "hot" : "cold");
}

void Register(const Pair& pair, const Round& round, const Options& options, const Filter& filter) {
  const auto contest = std::make_shared<Contest>(Contest{
      {pair.source, pair.target, round.size, round.cache, options.content, options.Budget()}});
  for (const std::string& contestant : Contestants(pair.source, pair.target)) {
    const std::string name = NameOf(contest->setting).append("/").append(contestant);
    if (!TakesPart(contestant, round) || !filter.Takes(name)) continue;
    contest->contestants.push_back(contestant);
    benchmark::RegisterBenchmark(
        name.c_str(),
        [contest, contestant](benchmark::State& state) { ReportRow(state, *contest, contestant); })
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
  }
}

// --- The command line

[[noreturn]] void Misused(const std::string& why) {
  std::fprintf(stderr, "converter_bench: %s\n\n%s", why.c_str(), kUsage);
  std::exit(2);
}

FrameSize ParseSize(const std::string& text) {
  FrameSize size{};
  char rest = 0;
  if (std::sscanf(text.c_str(), "%ux%u%c", &size.cols, &size.rows, &rest) != 2 || size.cols == 0 ||
      size.rows == 0) {
    Misused("--size takes WIDTHxHEIGHT, not " + text);
  }
  return size;
}

Content ParseContent(const std::string& text) {
  if (text == "scene") return Content::Scene;
  if (text == "noise") return Content::Noise;
  if (text == "grey") return Content::Grey;
  Misused("--content is scene, noise or grey, not " + text);
}

Cache ParseCache(const std::string& text) {
  if (text == "hot") return Cache::Hot;
  if (text == "cold") return Cache::Cold;
  Misused("--cache is hot or cold, not " + text);
}

// Takes our options; what is left is Google Benchmark's.
Options TakeOptions(std::vector<std::string>& arguments) {
  Options options;
  std::vector<std::string> left;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string name = arguments[i];
    std::optional<std::string> value;
    if (const std::size_t equals = name.find('='); equals != std::string::npos) {
      value = name.substr(equals + 1);
      name.resize(equals);
    }
    const auto take = [&]() -> std::string {
      if (value) return *value;
      if (i + 1 == arguments.size()) Misused(name + " needs a value");
      return arguments[++i];
    };
    if (name == "--quick") {
      options.quick = true;
    } else if (name == "--cpu") {
      options.cpu = take();
    } else if (name == "--content") {
      options.content = ParseContent(take());
    } else if (name == "--size") {
      options.sizes.push_back(ParseSize(take()));
    } else if (name == "--cache") {
      options.cache = ParseCache(take());
    } else if (name == "--budget") {
      options.budget.emplace(std::strtod(take().c_str(), nullptr));
    } else if (name == "--help" || name == "-h") {
      std::printf("%s", kUsage);
      std::exit(0);
    } else {
      left.push_back(arguments[i]);
    }
  }
  arguments = left;
  return options;
}

void ChooseInstructionSet(const std::string& name) {
  if (!name.empty() && SetInstructionSet(name) != VORERROR_OK) {
    std::string names;
    for (const std::string_view available : InstructionSets()) names.append(" ").append(available);
    Misused("--cpu is one of" + names);
  }
}

void AddContext(const Options& options) {
  SystemInfo machine{};
  (void)Utilities::GetSystemInfo(&machine);
  benchmark::AddCustomContext("cpu", machine.cpuDescription);
  benchmark::AddCustomContext("system", machine.osDescription);
  benchmark::AddCustomContext("compiler", KORVEX2_BENCH_COMPILER);
  benchmark::AddCustomContext("korvex2", GetVersion());
  benchmark::AddCustomContext("instruction_set", std::string(GetInstructionSet()));
  benchmark::AddCustomContext("content", options.content == Content::Scene   ? "scene"
                                         : options.content == Content::Noise ? "noise"
                                                                             : "grey");
  for (const PeerLibrary& library : PeerLibraries()) {
    benchmark::AddCustomContext(std::string(library.name), library.version);
  }
}

int Main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  const Options options = TakeOptions(arguments);
  ChooseInstructionSet(options.cpu);
  const bool table = std::ranges::none_of(arguments, [](const std::string& argument) {
    return argument.starts_with("--benchmark_format");
  });
  const bool writes = std::ranges::any_of(arguments, [](const std::string& argument) {
    return argument.starts_with("--benchmark_out=");
  });

  // A row is one iteration: its contest has timed it already.
  arguments.insert(arguments.begin(), {argv[0], "--benchmark_min_time=0"});
  std::vector<char*> left;
  left.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) left.push_back(argument.data());
  int count = static_cast<int>(left.size());
  left.push_back(nullptr);
  benchmark::Initialize(&count, left.data());
  if (benchmark::ReportUnrecognizedArguments(count, left.data())) return 2;

  AddContext(options);
  const Filter filter(benchmark::GetBenchmarkFilter());
  for (const Round& round : RoundsOf(options)) {
    for (const Pair& pair : Pairs()) {
      if (round.everyPair || IsLarge(pair)) Register(pair, round, options, filter);
    }
  }
  TableReporter tableReporter;
  JsonReporter jsonReporter;
  benchmark::RunSpecifiedBenchmarks(table ? &tableReporter : nullptr,
                                    writes ? &jsonReporter : nullptr);
  benchmark::Shutdown();
  return failed ? 1 : 0;
}

}  // namespace
}  // namespace Korvex2::Bench

int main(int argc, char** argv) {
  try {
    return Korvex2::Bench::Main(argc, argv);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "converter_bench: %s\n", failure.what());
    return 1;
  }
}
