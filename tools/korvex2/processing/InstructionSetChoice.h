#pragma once

/// The instruction set that the library computes with.

#include <string>
#include <string_view>

namespace Korvex2::Tool {

/// Makes the library use the instruction set with this name, in any case; leaves its choice where
/// the name is empty. UsageFailure for a name that is none of this machine.
void ChooseInstructionSet(std::string_view name);

/// The instruction sets of this machine, separated by commas.
std::string InstructionSetNames();

}  // namespace Korvex2::Tool
