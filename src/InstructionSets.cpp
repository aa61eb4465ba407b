#include "InstructionSets.h"

#include <algorithm>

#include "InternalError.h"
#include "simd/InstructionSet.h"

namespace Korvex2 {
namespace {

struct NameList {
  std::string_view names[Simd::kMostInstructionSets];
  std::size_t count = 0;

  NameList() noexcept {
    for (const Simd::InstructionSet set : Simd::AvailableInstructionSets()) {
      names[count++] = Simd::InstructionSetName(set);
    }
  }
};

}  // namespace

ArrayView<std::string_view> InstructionSets() noexcept {
  static const NameList list;
  return {list.names, list.count};
}

std::string_view GetInstructionSet() noexcept {
  return Simd::InstructionSetName(Simd::ActiveInstructionSet());
}

Error SetInstructionSet(std::string_view name) noexcept {
  const ArrayView<std::string_view> names = InstructionSets();
  const auto found = std::ranges::find(names, name);
  if (found == names.end()) {
    return InternalError(__LINE__, "InstructionSets.cpp", __DATE__, __TIME__, VORERROR_NOT_FOUND,
                         "This machine or this build has no instruction set \"%.*s\".",
                         static_cast<int>(name.size()), name.data());
  }
  const auto index = static_cast<std::size_t>(found - names.begin());
  Simd::SetActiveInstructionSet(Simd::AvailableInstructionSets()[index]);
  return Error();
}

}  // namespace Korvex2
