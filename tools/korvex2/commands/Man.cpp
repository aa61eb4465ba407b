// korvex2 man: its man page.

#include <fmt/format.h>

#include <cctype>
#include <string>
#include <string_view>
#include <vector>

#include "Korvex2Version.h"
#include "commands/Commands.h"

namespace Korvex2::Tool {
namespace {

// Text as it is: dashes that can be copied, and no line taken for a request.
std::string Roff(std::string_view text) {
  std::string roff;
  bool lineBegins = true;
  for (const char c : text) {
    if (lineBegins && (c == '.' || c == '\'')) {
      roff += "\\&";
    }
    if (c == '\\') {
      roff += "\\e";
    } else if (c == '-') {
      roff += "\\-";
    } else if (c == '\'') {
      roff += "\\(aq";
    } else {
      roff += c;
    }
    lineBegins = c == '\n';
  }
  return roff;
}

// "Nov 21 2026", the day of the build, as 2026-11-21.
std::string BuildDate() {
  constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
  const std::string_view date = __DATE__;
  const std::string day =
      (date[4] == ' ' ? "0" : "") + std::string(date.substr(4, 2)).substr(date[4] == ' ' ? 1 : 0);
  return fmt::format("{}-{:02}-{}", date.substr(7), kMonths.find(date.substr(0, 3)) / 3 + 1, day);
}

// A block whose lines and columns stay as they are.
std::string Preformatted(const std::string& text) {
  const std::size_t begin = text.find_first_not_of('\n');
  const std::size_t end = text.find_last_not_of('\n');
  if (begin == std::string::npos) {
    return "";
  }
  std::string block = ".nf\n";
  bool lineBegins = true;
  for (const char c : Roff(text.substr(begin, end + 1 - begin))) {
    if (lineBegins && c == '\n') {
      block += ".sp";  // an empty line is no request
    }
    block += c;
    lineBegins = c == '\n';
  }
  return block + "\n.fi\n";
}

std::string Upper(std::string_view lower) {
  std::string text(lower);
  for (char& c : text) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return text;
}

std::string NamesAndValue(const Option& option) {
  std::string text;
  const std::vector<std::string_view> names = NamesOf(option);
  for (const std::string_view name : names) {
    text += fmt::format("{}\\fB{}\\fR", text.empty() ? "" : ", ", Roff(name));
  }
  return TakesValue(option) ? fmt::format("{} \\fI{}\\fR", text, Upper(names.back().substr(2)))
                            : text;
}

std::string Paragraph(std::string_view term, const Option& option) {
  std::string text = Roff(option.help);
  const std::string usual = DefaultOf(option);
  if (!usual.empty()) {
    text += fmt::format(" (default: {})", Roff(usual));
  }
  if (IsRequired(option)) {
    text += " (required)";
  }
  return fmt::format(".TP\n{}\n{}\n", term, text);
}

std::string Paragraph(const Option& option) {
  return Paragraph(NamesAndValue(option), option);
}

std::string Synopsis(const Command& command) {
  std::string text = fmt::format(".B korvex2 {}\n", Roff(command.name));
  for (const Option& option : command.positionals) {
    text += fmt::format(".I {}\n", Roff(option.names));
  }
  return text + ".RI [ options ]\n";
}

std::string Section(const Program& program, const Command& command) {
  std::string text = fmt::format(".SS korvex2 {}\n{}.\n", Roff(command.name), Roff(command.help));
  for (const Option& option : command.positionals) {
    text += Paragraph(fmt::format("\\fI{}\\fR", Roff(option.names)), option);
  }
  for (const Option& option : command.options) {
    text += Paragraph(option);
  }
  return text + ".PP\n" + Preformatted(command.notes.empty() ? program.notes : command.notes);
}

// In the man macros of roff.
std::string ManPage(const Program& program) {
  std::string page = fmt::format(
      ".TH KORVEX2 1 \"{}\" \"korvex2 {}\" \"User Commands\"\n.SH NAME\nkorvex2 \\- {}\n.SH "
      "SYNOPSIS\n",
      BuildDate(), GetVersion(), Roff(program.help));
  std::string separator;
  for (const Command& command : program.commands) {
    page += separator + Synopsis(command);
    separator = ".br\n";
  }
  page += ".SH OPTIONS\n" + Paragraph(kHelpOption) + Paragraph(kVersionOption);
  for (const Option& option : program.options) {
    page += Paragraph(option);
  }
  page += ".SH COMMANDS\n";
  for (const Command& command : program.commands) {
    page += Section(program, command);
  }
  return page + ".SH NOTES\n" + Preformatted(program.notes);
}

}  // namespace

Command ManCommand(const Program& program) {
  // clang-format off
  return {
      .name = "man",
      .help = "Print the man page",
      .notes = "Examples:\n  korvex2 man | man -l -",
      .run = [&program] { fmt::print("{}", ManPage(program)); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
