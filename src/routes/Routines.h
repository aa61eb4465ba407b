#pragma once

/// Between the rows of Routines(), which clients see, and the enumeration of the same routines.

#include "Routes.h"
#include "Routine.h"

namespace Korvex2 {

/// The row of a routine other than None and SameFormat.
const RoutineInfo& GetRoutine(Routine routine) noexcept;

/// The routine of one of the rows of Routines().
Routine RoutineOf(const RoutineInfo& info) noexcept;

}  // namespace Korvex2
