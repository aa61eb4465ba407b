#include "Target.h"

#if KORVEX2_WITH_HIGHWAY
#include "hwy/highway.h"
#endif

namespace Korvex2::Bayer {

#if KORVEX2_WITH_HIGHWAY

namespace {

// Highway's two portable targets do what the plain loops do.
constexpr std::int64_t kVectorTargets = HWY_TARGETS & ~(HWY_SCALAR | HWY_EMU128);

std::int64_t lowestBit(std::int64_t bits) {
  return bits & -bits;
}

std::int64_t usableTargets() {
  // Asking the processor is slow under a hypervisor, and the answer does not change.
  static const std::int64_t usable = hwy::SupportedTargets() & kVectorTargets;
  return usable;
}

}  // namespace

// Of Highway's bits, the lower one is the better instruction set.
Target bestTarget() {
  return Target{lowestBit(usableTargets())};
}

std::vector<Target> availableTargets() {
  std::vector<Target> targets = {Target::kPlain};
  for (std::int64_t left = usableTargets(); left != 0; left &= left - 1) {
    targets.push_back(Target{lowestBit(left)});
  }
  return targets;
}

const char* targetName(Target target) {
  return target == Target::kPlain ? "plain" : hwy::TargetName(static_cast<std::int64_t>(target));
}

#else

Target bestTarget() {
  return Target::kPlain;
}
std::vector<Target> availableTargets() {
  return {Target::kPlain};
}
const char* targetName(Target) {
  return "plain";
}

#endif

}  // namespace Korvex2::Bayer
