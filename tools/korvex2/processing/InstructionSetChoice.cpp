#include "processing/InstructionSetChoice.h"

#include <algorithm>
#include <cctype>

#include "InstructionSets.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

bool IsSameButForCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
  return std::ranges::equal(a, b, {}, lower, lower);
}

}  // namespace

void ChooseInstructionSet(std::string_view name) {
  if (name.empty()) {
    return;
  }
  for (const std::string_view available : InstructionSets()) {
    if (IsSameButForCase(available, name)) {
      (void)SetInstructionSet(available);
      return;
    }
  }
  throw UsageFailure("--cpu '{}' is no instruction set of this machine; it is one of {}", name,
                     InstructionSetNames());
}

std::string InstructionSetNames() {
  std::string names;
  for (const std::string_view name : InstructionSets()) {
    names += names.empty() ? "" : ", ";
    names += name;
  }
  return names;
}

}  // namespace Korvex2::Tool
