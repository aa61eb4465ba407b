#include "Contest.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <tuple>

#include "ImageConverterARMStub.h"
#include "Literal.h"
#include "PixelFormats.h"

namespace Korvex2::Bench {
namespace {

using Seconds = std::chrono::duration<double>;

// Time of this thread on its processor: what other processes take of it in between does not count.
Seconds Now() {
  timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// More than twice what the largest cache of a processor for laptops or desktops holds. Caches of
// servers can be larger, but are shared.
constexpr std::size_t kColdBytes = std::size_t{768} << 20;
constexpr Seconds kShortestSample(100e-6);
constexpr Seconds kSlowCall(
    10e-3);  // to which a round more or less is expensive, and warmth nothing
constexpr std::size_t kFewestSamples = 5;
constexpr std::size_t kFewestSlowSamples = 3;
constexpr std::size_t kMostRounds = 101;
// After a contestant that streamed past the caches (some do) a single run leaves its buffers slow
// for whoever comes next.
constexpr int kWarmUps = 3;

ImageConverter& Converter() {
  static ImageConverter converter;
  return converter;
}

void Expect(const Error& error) {
  if (error != VORERROR_OK) throw std::runtime_error(error.GetMessage());
}

struct Contestant {
  std::string name;
  std::function<void(Slice&)> run;
  std::string how;
  std::vector<double> samples = {};
  Seconds spent{0};
  bool slow = false;
  std::size_t calls = 1;  ///< in a sample

  void Take(Seconds sample) {
    samples.push_back(sample.count() / static_cast<double>(calls));
    spent += sample;
  }
};

Contestant Ours(PixelFormat target) {
  return {"ours",
          [target](Slice& slice) {
            Expect(Converter().Convert(&slice.source, target, &slice.destination));
          },
          ""};
}

Contestant Fresh(PixelFormat target) {
  return {"fresh",
          [target](Slice& slice) {
            Image fresh;
            Expect(Converter().Convert(&slice.source, target, &fresh));
          },
          ""};
}

Contestant Memcpy(const Setting& setting) {
  const std::size_t bytes = CopiedBytes(setting.source, setting.target, setting.size.Pixels());
  return {"memcpy",
          [bytes](Slice& slice) {
            std::memcpy(slice.destination.GetData(), slice.source.GetData(), bytes);
          },
          ""};
}

void RunLiterally(const Image& source, Image& destination) {
  static const LiteralConverter converter;
  converter.Run(&source, &destination);
}

Contestant Literal() {
  return {"literal", [](Slice& slice) { RunLiterally(slice.source, slice.destination); }, ""};
}

std::optional<Peer> FindPeer(std::string_view library, PixelFormat source, PixelFormat target) {
  for (const PeerLibrary& candidate : PeerLibraries()) {
    if (candidate.name == library) return candidate.find(source, target);
  }
  return std::nullopt;
}

std::optional<Contestant> Make(const std::string& name, const Setting& setting) {
  if (name == "ours") return Ours(setting.target);
  if (name == "fresh") return Fresh(setting.target);
  if (name == "memcpy") return Memcpy(setting);
  if (name == "literal") return Literal();
  // Peers go by rows, we by one run: only rows of whole groups are the same to both.
  const std::optional<Peer> peer = FindPeer(name, setting.source, setting.target);
  if (!peer || setting.size.cols % 4 != 0) return std::nullopt;
  const Call call = peer->make(setting.size);
  if (!call) return std::nullopt;
  return Contestant{
      name, [call](Slice& slice) { call(slice.source.GetData(), slice.destination.GetData()); },
      peer->how};
}

// --- The bytes

std::size_t FrameBytes(const Image& image) {
  return BytesOf(image.GetPixelFormat(), std::size_t{image.GetRows()} * image.GetCols());
}

void Smear(Image& image) {
  std::memset(image.GetData(), 0xA5, FrameBytes(image));
}

// By 16-bit samples where the format has them, by bytes elsewhere.
unsigned LargestDifference(const Image& a, const Image& b) {
  const bool hasWords = FindPixelFormat(a.GetPixelFormat())->bitsPerSample == 16;
  int largest = 0;
  const auto compare = [&]<typename Sample>(Sample) {
    for (std::size_t i = 0; i + sizeof(Sample) <= FrameBytes(a); i += sizeof(Sample)) {
      Sample x;
      Sample y;
      std::memcpy(&x, a.GetData() + i, sizeof x);
      std::memcpy(&y, b.GetData() + i, sizeof y);
      largest = std::max(largest, std::abs(x - y));
    }
  };
  hasWords ? compare(std::uint16_t{}) : compare(std::uint8_t{});
  return static_cast<unsigned>(largest);
}

// What was found out about the bytes of a pair at a size; the same for hot and cold buffers.
struct Verdict {
  Seconds literalTime{0};
  std::map<std::string, unsigned> deviations;  ///< of the peers
};

// Ours must be the literal result, byte for byte. Answers that result.
Image Checked(const Setting& setting, Slice& slice, Verdict& verdict) {
  Image expected;
  const unsigned bits = Image::DetermineBitsPerPixel(setting.target);
  Expect(expected.SetDimensions(setting.size.rows, setting.size.cols,
                                PackedStride(setting.size.cols, bits), setting.target,
                                slice.source.GetBayerTileFormat()));
  const Seconds start = Now();
  RunLiterally(slice.source, expected);
  verdict.literalTime = Now() - start;

  Smear(slice.destination);
  Ours(setting.target).run(slice);
  if (std::memcmp(slice.destination.GetData(), expected.GetData(), FrameBytes(expected)) != 0) {
    throw std::runtime_error("our bytes differ from those of the plain loops");
  }
  return expected;
}

Verdict Judge(const Setting& setting, const std::vector<Contestant>& contestants, Slice& slice) {
  Verdict verdict;
  const Image expected = Checked(setting, slice, verdict);
  for (const Contestant& contestant : contestants) {
    if (contestant.how.empty()) continue;
    Smear(slice.destination);
    contestant.run(slice);
    verdict.deviations[contestant.name] = LargestDifference(expected, slice.destination);
  }
  return verdict;
}

const Verdict& VerdictOn(const Setting& setting, const std::vector<Contestant>& contestants,
                         Slice& slice) {
  using Key = std::tuple<PixelFormat, PixelFormat, unsigned, unsigned>;
  static std::map<Key, Verdict> verdicts;
  const Key key{setting.source, setting.target, setting.size.cols, setting.size.rows};
  const auto known = verdicts.find(key);
  if (known != verdicts.end()) return known->second;
  return verdicts[key] = Judge(setting, contestants, slice);
}

// --- The times

class Race {
 public:
  Race(const Setting& setting, std::vector<Slice>& slices) : m_setting(setting), m_slices(slices) {}

  void Run(std::vector<Contestant>& contestants) {
    for (Contestant& contestant : contestants) Calibrate(contestant);
    for (std::size_t round = 0; round < kMostRounds; ++round) {
      for (Contestant& contestant : contestants) {
        if (MayRun(contestant)) Sample(contestant);
      }
    }
  }

 private:
  // How many calls make a sample that the clock can resolve. Cold calls cannot be repeated.
  void Calibrate(Contestant& contestant) {
    if (!contestant.samples.empty()) return;
    Slice& slice = Next();
    contestant.run(slice);
    const Seconds start = Now();
    contestant.run(slice);
    const Seconds once = Now() - start;
    contestant.slow = once > kSlowCall;
    if (m_setting.cache == Cache::Cold) return;
    contestant.calls = static_cast<std::size_t>(std::max(1.0, std::ceil(kShortestSample / once)));
    if (contestant.slow) contestant.Take(once);
  }

  void Sample(Contestant& contestant) {
    Slice& slice = Next();
    if (m_setting.cache == Cache::Hot && !contestant.slow) Warm(contestant, slice);
    const Seconds start = Now();
    for (std::size_t i = 0; i < contestant.calls; ++i) contestant.run(slice);
    const Seconds taken = Now() - start;
    contestant.Take(taken);
  }

  static void Warm(const Contestant& contestant, Slice& slice) {
    for (int i = 0; i < kWarmUps; ++i) contestant.run(slice);
  }

  bool MayRun(const Contestant& contestant) const {
    const std::size_t fewest = contestant.slow ? kFewestSlowSamples : kFewestSamples;
    const bool literal = contestant.name == "literal";
    return contestant.spent < m_setting.budget || (!literal && contestant.samples.size() < fewest);
  }

  Slice& Next() { return m_slices[m_next++ % m_slices.size()]; }

  const Setting& m_setting;
  std::vector<Slice>& m_slices;
  std::size_t m_next = 0;
};

Measure MeasureOf(Contestant& contestant) {
  std::vector<double>& samples = contestant.samples;
  std::ranges::sort(samples);
  Measure measure;
  measure.samples = samples.size();
  measure.least = samples.front();
  measure.median = samples[samples.size() / 2];
  measure.how = contestant.how;
  return measure;
}

}  // namespace

std::vector<std::string> Contestants(PixelFormat source, PixelFormat target) {
  std::vector<std::string> names = {"ours", "fresh", "memcpy", "literal"};
  for (const PeerLibrary& library : PeerLibraries()) {
    if (library.find(source, target)) names.emplace_back(library.name);
  }
  return names;
}

std::map<std::string, Measure> Hold(const Setting& setting, const std::vector<std::string>& names) {
  std::map<std::string, Measure> measures;
  std::vector<Slice> slices =
      MakeSlices(setting.source, setting.target, setting.size,
                 setting.cache == Cache::Cold ? kColdBytes : 1, setting.content);
  std::vector<Contestant> contestants;
  for (const std::string& name : names) {
    if (std::optional<Contestant> contestant = Make(name, setting)) {
      contestants.push_back(std::move(*contestant));
    } else {
      measures[name] = {.failure = "has no way for frames of this size", .absent = true};
    }
  }
  try {
    const Verdict& verdict = VerdictOn(setting, contestants, slices.front());
    for (Contestant& contestant : contestants) {
      if (contestant.name == "literal") contestant.Take(verdict.literalTime);
    }
    Race(setting, slices).Run(contestants);
    for (Contestant& contestant : contestants) {
      Measure& measure = measures[contestant.name] = MeasureOf(contestant);
      const auto deviation = verdict.deviations.find(contestant.name);
      if (deviation != verdict.deviations.end()) measure.deviation = deviation->second;
    }
  } catch (const std::exception& failure) {
    for (const std::string& name : names) measures[name] = {.failure = failure.what()};
  }
  return measures;
}

}  // namespace Korvex2::Bench
