#pragma once

/// What goes to stderr. Any thread may call these.

#include <string>
#include <string_view>

namespace Korvex2::Tool {

/// The text as a terminal may show it: one line, without what would steer the terminal.
std::string OneLine(std::string_view message);

/// Why the tool gave up. Always one line, whatever a file name or a library put into the message.
void Report(std::string_view message);

/// Something to know of a result that is right nevertheless, in one line. Said once in a run,
/// however many frames it is true of.
void Warn(std::string_view message);

/// A line that stays the last one of a terminal and is written over by the next; empty: no more.
void ShowStatus(std::string_view status);

}  // namespace Korvex2::Tool
