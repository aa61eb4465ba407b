/// Two stages that compile as they are, and do not once a macro makes one of the mistakes that the
/// declaration of stages is there to find. CMakeLists.txt compiles it with each.

#include "Stages-inl.h"

#ifndef REACH
#define REACH 1, 1, 1, 1  // rows above and below, columns left and right
#endif
#ifndef SAMPLES_REACH
#define SAMPLES_REACH 0, 0, 0, 0
#endif
#ifndef FIRST_WRITES
#define FIRST_WRITES kCopy
#endif
#ifndef FIRST_READS
#define FIRST_READS kSamples
#endif
#ifndef SECOND_WRITES
#define SECOND_WRITES
#endif
#ifndef SECOND_READS
#define SECOND_READS kCopy
#endif
#ifndef PLANES
#define PLANES kSamples, kCopy
#endif
#if defined(HALF)
#define ELEMENTS Elements::kHalf
#elif defined(BOTH_HALVES)
#define ELEMENTS Elements::kHalves
#else
#define ELEMENTS Elements::kFloats
#endif

namespace Korvex2::Bayer::Plain {

struct TwoStages {
  enum PlaneNumber { PLANES };
  static constexpr Plane kPlanes[] = {{kSamples, Elements::kSamples}, {kCopy, ELEMENTS}};

  enum StageNumber { kFirst, kSecond };
  static constexpr Stage kStages[] = {
      {kFirst, {FIRST_WRITES}, {{FIRST_READS, {SAMPLES_REACH}}}},
      {kSecond, {SECOND_WRITES}, {{SECOND_READS, {REACH}}}},
  };
  static constexpr Plan kPlan{kPlanes, kStages};
};

template <typename Sample>
class TwoStagesAtWork : TwoStages {
 public:
  template <int kStage>
  using At = StageAt<TwoStages, kStage, Sample>;

  static void Compute(const At<kFirst>& at) {
    const auto samples = Reads<kSamples>(at);
    const auto copy = [row = samples[0]](int x, auto out) { out[x] = row[x]; };
#ifdef BOTH_HALVES
    ForColumns(at.GetPlaces(), copy, Writes<kCopy>(at).even);
#else
    ForColumns(at.GetColumns(), copy, Writes<kCopy>(at));
#endif
#ifdef FIRST_ALSO_READS
    Reads<FIRST_ALSO_READS>(at);
#endif
  }

  static void Compute(const At<kSecond>& at) {
    const auto copy = Reads<kCopy>(at);
#if defined(HALF) || defined(BOTH_HALVES)
    copy[0].Beside(at.y & 1);
#else
    const auto sum = [copy](int x, OutRow<-1, Sample> out) {
      out[x] = Rounded<Sample>(copy[-1][x] + copy[1][x] + copy[0](x, -1) + copy[0](x, 1));
    };
    const Block<Sample>& block = at.GetBlock();
    ForColumns(at.GetColumns(), sum, OutRow<-1, Sample>(block.red + at.y * block.stride));
#endif
#ifdef SECOND_ALSO_WRITES
    Writes<SECOND_ALSO_WRITES>(at);
#endif
  }
};

template void RunStages<TwoStagesAtWork<std::uint8_t>, TwoStages>(const Block<std::uint8_t>&);
template void RunStages<TwoStagesAtWork<std::uint16_t>, TwoStages>(const Block<std::uint16_t>&);

}  // namespace Korvex2::Bayer::Plain
