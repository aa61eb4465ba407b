#pragma once

#include "Method.h"
#include "vorbayer.h"

namespace Korvex2::Bayer {

/// The table entry of a method, null for a number that is none.
const Method* findMethod(BayerMethod method);

}  // namespace Korvex2::Bayer
