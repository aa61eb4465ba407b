#include "simd/InstructionSet.h"

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
std::int64_t SupportedTargets() {
#if HWY_ARCH_ARM_A64 && HWY_OS_LINUX
  // Highway asks for cryptographic instructions before it admits NEON, and complains on stderr;
  // some processors lack them, and nothing here uses them. NEON itself is always there.
  if ((getauxval(AT_HWCAP) & HWCAP_AES) == 0) return HWY_NEON;
#endif
  return hwy::SupportedTargets();
}
#endif

// Nothing here takes memory: the first conversion of a process may come when there is none.
struct InstructionSetList {
  InstructionSet sets[kMostInstructionSets] = {InstructionSet::Plain};
  std::size_t count = 1;
};

// Of Highway's bits, the lower one is the better instruction set. Its two portable targets do what
// the plain loops do, and vector code here takes bytes and words of a vector for little-endian.
InstructionSetList DetectInstructionSets() {
  InstructionSetList list;
#if KORVEX2_WITH_HIGHWAY
  constexpr std::int64_t kVectorTargets = HWY_TARGETS & ~(HWY_SCALAR | HWY_EMU128);
  if constexpr (std::endian::native == std::endian::little) {
    std::int64_t left = SupportedTargets() & kVectorTargets;
    for (; left != 0 && list.count < kMostInstructionSets; left &= left - 1) {
      list.sets[list.count++] = InstructionSet{left & -left};
    }
  }
#endif
  return list;
}

InstructionSet InitialInstructionSet() {
  const std::span<const InstructionSet> sets = AvailableInstructionSets();
  if (const char* wanted = std::getenv("KORVEX2_CPU")) {
    for (const InstructionSet set : sets) {
      if (std::string_view(InstructionSetName(set)) == wanted) return set;
    }
  }
  return sets.size() > 1 ? sets[1] : InstructionSet::Plain;
}

std::atomic<InstructionSet>& Active() {
  static std::atomic<InstructionSet> set{InitialInstructionSet()};
  return set;
}

}  // namespace

std::span<const InstructionSet> AvailableInstructionSets() noexcept {
  // Asking the processor is slow under a hypervisor, and the answer does not change.
  static const InstructionSetList list = DetectInstructionSets();
  return {list.sets, list.count};
}

const char* InstructionSetName(InstructionSet set) noexcept {
#if KORVEX2_WITH_HIGHWAY
  if (set != InstructionSet::Plain) return hwy::TargetName(static_cast<std::int64_t>(set));
#endif
  return set == InstructionSet::Plain ? "plain" : "unknown";
}

InstructionSet ActiveInstructionSet() noexcept {
  return Active().load(std::memory_order_relaxed);
}

void SetActiveInstructionSet(InstructionSet set) noexcept {
  Active().store(set, std::memory_order_relaxed);
}

}  // namespace Korvex2::Simd
