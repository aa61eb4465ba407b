#include "InstructionSets.h"

#include <algorithm>
#include <vector>

#include "InternalError.h"
#include "simd/Target.h"

namespace Korvex2 {
namespace {

const std::vector<std::string_view>& Names() {
  static const std::vector<std::string_view> names = [] {
    std::vector<std::string_view> list;
    for (const Simd::Target target : Simd::availableTargets()) {
      list.emplace_back(Simd::targetName(target));
    }
    return list;
  }();
  return names;
}

}  // namespace

std::span<const std::string_view> InstructionSets() noexcept { return Names(); }

std::string_view GetInstructionSet() noexcept { return Simd::targetName(Simd::activeTarget()); }

Error SetInstructionSet(std::string_view name) noexcept {
  const auto found = std::ranges::find(Names(), name);
  if (found == Names().end()) {
    return InternalError(__LINE__, "InstructionSets.cpp", __DATE__, __TIME__, VORERROR_NOT_FOUND,
                         "This machine or this build has no instruction set \"%.*s\".",
                         static_cast<int>(name.size()), name.data());
  }
  Simd::setActiveTarget(
      Simd::availableTargets()[static_cast<std::size_t>(found - Names().begin())]);
  return Error();
}

}  // namespace Korvex2
