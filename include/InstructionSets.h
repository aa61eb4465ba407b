#pragma once

/// @file
/// Which vector instructions the library uses.

#include <string_view>

#include "ArrayView.h"
#include "Error.h"
#include "Korvex2Export.h"

namespace Korvex2 {

/// The instruction sets that were compiled in and that this machine has: "plain", which every
/// machine has, then the best one and so on down. Results do not depend on the choice. The strings
/// are static.
KORVEX2_API ArrayView<std::string_view> InstructionSets() noexcept;

/// The one in use: the best one, unless the environment variable KORVEX2_CPU names another of the
/// list at the first use of the library, or SetInstructionSet has chosen since.
KORVEX2_API std::string_view GetInstructionSet() noexcept;

/// Chooses for the whole process, conversions that begin later; for tests and measurements.
/// VORERROR_NOT_FOUND for a name that InstructionSets() does not list.
KORVEX2_API Error SetInstructionSet(std::string_view name) noexcept;

}  // namespace Korvex2
