#pragma once

/// What goes to stderr.

#include <string_view>

namespace Korvex2::Tool {

/// Why the tool gave up. Always one line, whatever a file name or a library put into the message.
void Report(std::string_view message);

/// Something to know of a result that is right nevertheless, in one line.
void Warn(std::string_view message);

}  // namespace Korvex2::Tool
