#include "simd/Target.h"

#include <atomic>
#include <bit>
#include <cstdlib>
#include <string_view>

#if KORVEX2_WITH_HIGHWAY
#include "hwy/highway.h"
#if HWY_ARCH_ARM_A64 && HWY_OS_LINUX
#include <sys/auxv.h>
#endif
#endif

namespace Korvex2::Simd {
namespace {

#if KORVEX2_WITH_HIGHWAY
std::int64_t supportedTargets() {
#if HWY_ARCH_ARM_A64 && HWY_OS_LINUX
  // Highway asks for cryptographic instructions before it admits NEON, and complains on stderr;
  // some processors lack them, and nothing here uses them. NEON itself is always there.
  if ((getauxval(AT_HWCAP) & HWCAP_AES) == 0) return HWY_NEON;
#endif
  return hwy::SupportedTargets();
}
#endif

// Nothing here takes memory: the first conversion of a process may come when there is none.
struct TargetList {
  Target targets[kMostTargets] = {Target::kPlain};
  std::size_t count = 1;
};

// Of Highway's bits, the lower one is the better instruction set. Its two portable targets do what
// the plain loops do, and vector code here takes bytes and words of a vector for little-endian.
TargetList detectTargets() {
  TargetList list;
#if KORVEX2_WITH_HIGHWAY
  constexpr std::int64_t kVectorTargets = HWY_TARGETS & ~(HWY_SCALAR | HWY_EMU128);
  if constexpr (std::endian::native == std::endian::little) {
    std::int64_t left = supportedTargets() & kVectorTargets;
    for (; left != 0 && list.count < kMostTargets; left &= left - 1) {
      list.targets[list.count++] = Target{left & -left};
    }
  }
#endif
  return list;
}

Target initialTarget() {
  const std::span<const Target> targets = availableTargets();
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

std::span<const Target> availableTargets() noexcept {
  // Asking the processor is slow under a hypervisor, and the answer does not change.
  static const TargetList list = detectTargets();
  return {list.targets, list.count};
}

const char* targetName(Target target) noexcept {
#if KORVEX2_WITH_HIGHWAY
  if (target != Target::kPlain) return hwy::TargetName(static_cast<std::int64_t>(target));
#endif
  return target == Target::kPlain ? "plain" : "unknown";
}

Target activeTarget() noexcept {
  return active().load(std::memory_order_relaxed);
}

void setActiveTarget(Target target) noexcept {
  active().store(target, std::memory_order_relaxed);
}

}  // namespace Korvex2::Simd
