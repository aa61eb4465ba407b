#include "simd/Target.h"

#include <atomic>
#include <cstdlib>
#include <string_view>

#if KORVEX2_WITH_HIGHWAY
#include "hwy/highway.h"
#endif

namespace Korvex2::Simd {
namespace {

#if KORVEX2_WITH_HIGHWAY

// Of Highway's bits, the lower one is the better instruction set. Its two portable targets do what
// the plain loops do.
std::vector<Target> detectTargets() {
  constexpr std::int64_t kVectorTargets = HWY_TARGETS & ~(HWY_SCALAR | HWY_EMU128);
  std::vector<Target> targets = {Target::kPlain};
  for (std::int64_t left = hwy::SupportedTargets() & kVectorTargets; left != 0; left &= left - 1) {
    targets.push_back(Target{left & -left});
  }
  return targets;
}

#else

std::vector<Target> detectTargets() {
  return {Target::kPlain};
}

#endif

Target initialTarget() {
  const std::vector<Target>& targets = availableTargets();
  if (const char* wanted = std::getenv("KORVEX2_CPU")) {
    for (const Target target : targets) {
      if (std::string_view(targetName(target)) == wanted) return target;
    }
  }
  return targets.size() > 1 ? targets[1] : Target::kPlain;
}

std::atomic<Target>& active() {
  static std::atomic<Target> target{initialTarget()};
  return target;
}

}  // namespace

const std::vector<Target>& availableTargets() {
  // Asking the processor is slow under a hypervisor, and the answer does not change.
  static const std::vector<Target> targets = detectTargets();
  return targets;
}

const char* targetName(Target target) {
#if KORVEX2_WITH_HIGHWAY
  if (target != Target::kPlain) return hwy::TargetName(static_cast<std::int64_t>(target));
#endif
  return target == Target::kPlain ? "plain" : "unknown";
}

Target activeTarget() {
  return active().load(std::memory_order_relaxed);
}

void setActiveTarget(Target target) {
  active().store(target, std::memory_order_relaxed);
}

}  // namespace Korvex2::Simd
