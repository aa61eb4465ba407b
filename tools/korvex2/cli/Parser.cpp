// The only file that knows the library that parses command lines, which takes long to compile.

#include "cli/Parser.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

template <typename... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};

// --- The data, handed to the library -------------------------------------------------------------

CLI::Option* AddField(CLI::App& app, const Option& option) {
  const std::string names(option.names);
  return std::visit(
      Overloaded{[](std::monostate) -> CLI::Option* { return nullptr; },
                 [&](bool* flag) { return app.add_flag(names, *flag, option.help); },
                 [&](auto* value) { return app.add_option(names, *value, option.help); }},
      option.field);
}

std::string NotEmpty(const std::string& value) {
  return value.empty() ? "a name is missing" : "";
}

// Refuses what no comparison with a limit refuses.
std::string NotNan(const std::string& value) {
  return std::isnan(std::strtod(value.c_str(), nullptr)) ? value + " is no number" : "";
}

// Whether an empty text stands for an option that was not given.
bool EmptyMeansNone(const Option& option) {
  return std::holds_alternative<std::string*>(option.field) && !IsRequired(option) &&
         DefaultOf(option).empty();
}

void AddChecks(CLI::Option& added, const Value& value) {
  std::visit(
      Overloaded{
          [&](const Text& text) {
            if (!text.mayBeEmpty) added.check(NotEmpty);
            if (!text.placeholder.empty()) {
              added.type_name(std::string(text.placeholder));
            }
          },
          [&](const Words& words) {
            if (!words.othersAllowed) {
              added.check(
                  CLI::IsMember(std::vector<std::string>(words.words.begin(), words.words.end())));
            }
          },
          [&](const WholeNumber& number) { added.check(CLI::Range(number.least, number.most)); },
          [&](const RealNumber& number) {
            added.check(NotNan)->check(CLI::Range(number.least, number.most));
          },
          [&](const NumberList& list) { added.delimiter(',')->expected(list.count); }},
      value);
}

void Add(CLI::App& app, const Option& option) {
  CLI::Option* const added = AddField(app, option);
  AddChecks(*added, option.value);
  if (EmptyMeansNone(option)) {
    added->check(NotEmpty);
  }
  added->required(IsRequired(option));
  const std::string shown = DefaultOf(option);
  if (!shown.empty()) {
    added->default_str(shown);
  }
}

void AddCommand(CLI::App& app, const Command& command) {
  CLI::App& added = *app.add_subcommand(std::string(command.name), std::string(command.help));
  for (const Option& option : command.positionals) {
    Add(added, option);
  }
  for (const Option& option : command.options) {
    Add(added, option);
  }
  if (!command.notes.empty()) {  // else it has those of the program
    added.footer(command.notes);
  }
}

void AddProgram(CLI::App& app, const Program& program) {
  app.fallthrough();
  app.require_subcommand(1);
  app.footer(program.notes);
  app.set_help_flag(std::string(kHelpOption.names), kHelpOption.help);
  app.set_version_flag(std::string(kVersionOption.names), program.version, kVersionOption.help);
  for (const Option& option : program.options) {
    Add(app, option);
  }
  for (const Command& command : program.commands) {
    AddCommand(app, command);
  }
}

// --- Its answers ---------------------------------------------------------------------------------

std::string HelpHint(const CLI::App& app) {
  const std::string name = app.get_name();
  for (const CLI::App* sub : app.get_subcommands()) {
    return fmt::format("{} {} --help", name, sub->get_name());
  }
  return name + " --help";
}

std::string Describe(const CLI::App& app, const CLI::ParseError& error) {
  if (app.get_subcommands().empty() && !app.remaining().empty()) {
    return fmt::format("'{}' is no subcommand", app.remaining().front());
  }
  return error.what();
}

const Command* CommandOf(const Program& program, const CLI::App& app) {
  const std::string name = app.get_subcommands().front()->get_name();
  return &*std::find_if(program.commands.begin(), program.commands.end(),
                        [&](const Command& command) { return command.name == name; });
}

}  // namespace

const Command* Parse(const Program& program, int argc, const char* const* argv) {
  CLI::App app{std::string(program.help), std::string(program.name)};
  AddProgram(app, program);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& wanted) {  // --help, --version
    app.exit(wanted);
    return nullptr;
  } catch (const CLI::ParseError& error) {
    throw UsageFailure("{}; see {}", Describe(app, error), HelpHint(app));
  }
  return CommandOf(program, app);
}

}  // namespace Korvex2::Tool
