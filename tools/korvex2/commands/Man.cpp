// korvex2 man: its man page.

#include <fmt/format.h>

#include <cctype>
#include <string>
#include <string_view>

#include "Korvex2Version.h"
#include "commands/Commands.h"
#include "commands/Definitions.h"

namespace Korvex2::Tool {
namespace {

// Text as it is: dashes that can be copied, and no line taken for a request.
std::string Roff(const std::string& text) {
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

std::string Upper(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return text;
}

std::string NameOf(const CLI::Option& option) {
  const std::vector<std::string> names = OptionNames(option);
  if (names.empty()) {
    return fmt::format("\\fI{}\\fR", Roff(option.get_name()));
  }
  std::string text;
  for (const std::string& name : names) {
    text += fmt::format("{}\\fB{}\\fR", text.empty() ? "" : ", ", Roff(name));
  }
  return TakesValue(option) ? fmt::format("{} \\fI{}\\fR", text, Upper(names.back().substr(2)))
                            : text;
}

std::string Paragraph(const CLI::Option& option) {
  std::string text = Roff(option.get_description());
  if (!option.get_default_str().empty()) {
    text += fmt::format(" (default: {})", Roff(option.get_default_str()));
  }
  if (option.get_required()) {
    text += " (required)";
  }
  return fmt::format(".TP\n{}\n{}\n", NameOf(option), text);
}

std::string Synopsis(const CLI::App& command) {
  std::string text = fmt::format(".B korvex2 {}\n", Roff(command.get_name()));
  for (const CLI::Option* option : Positionals(command)) {
    text += fmt::format(".I {}\n", Roff(option->get_name()));
  }
  return text + ".RI [ options ]\n";
}

std::string Section(const CLI::App& command) {
  std::string text = fmt::format(".SS korvex2 {}\n{}.\n", Roff(command.get_name()),
                                 Roff(command.get_description()));
  for (const CLI::Option* option : Positionals(command)) {
    text += Paragraph(*option);
  }
  for (const CLI::Option* option : NamedOptions(command)) {
    if (option != command.get_help_ptr()) {
      text += Paragraph(*option);
    }
  }
  const std::string notes = Preformatted(command.get_footer());
  return text + (notes.empty() ? "" : ".PP\n" + notes);
}

}  // namespace

std::string ManPage(const CLI::App& app, const std::string& version) {
  std::string page = fmt::format(
      ".TH KORVEX2 1 \"{}\" \"korvex2 {}\" \"User Commands\"\n.SH NAME\nkorvex2 \\- {}\n.SH "
      "SYNOPSIS\n",
      BuildDate(), version, Roff(app.get_description()));
  std::string separator;
  for (const CLI::App* command : Subcommands(app)) {
    page += separator + Synopsis(*command);
    separator = ".br\n";
  }
  page += ".SH OPTIONS\n";
  for (const CLI::Option* option : NamedOptions(app)) {
    page += Paragraph(*option);
  }
  page += ".SH COMMANDS\n";
  for (const CLI::App* command : Subcommands(app)) {
    page += Section(*command);
  }
  return page + ".SH NOTES\n" + Preformatted(app.get_footer());
}

void AddManCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("man", "Print the man page");
  command->footer("Examples:\n  korvex2 man | man -l -");
  command->callback([&app] { fmt::print("{}", ManPage(app, GetVersion())); });
}

}  // namespace Korvex2::Tool
