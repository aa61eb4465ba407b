#pragma once

/// Values of options that are more than a number or a name.

#include <string>

#include "io/Levels.h"
#include "io/WriteOptions.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {

/// "25", "29.97" or "30000/1001"; a UsageFailure for what is none of them, and for 0.
FrameRate ParseFrameRate(const std::string& text);

/// From "file" or a number up to 65535; a UsageFailure that names the option for anything else.
Level ParseLevel(const std::string& option, const std::string& text);

}  // namespace Korvex2::Tool
