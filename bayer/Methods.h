#pragma once

#include "Method.h"

namespace Korvex2::Bayer {

/// The table entry of a BayerMethod, null for a number that is none.
const Method* FindMethod(int method);

}  // namespace Korvex2::Bayer
