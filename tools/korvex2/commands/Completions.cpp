// korvex2 completions: what shells need to complete its command lines.

#include <fmt/format.h>

#include <memory>
#include <string>

#include "commands/Commands.h"
#include "commands/Definitions.h"
#include "terminal/Failure.h"

namespace Korvex2::Tool {
namespace {

std::string Join(const std::vector<std::string>& words) {
  return fmt::format("{}", fmt::join(words, " "));
}

std::string NamesOf(const std::vector<const CLI::App*>& commands) {
  std::vector<std::string> names;
  for (const CLI::App* command : commands) {
    names.push_back(command->get_name());
  }
  return Join(names);
}

// The options of a subcommand and those of the whole program, which may stand anywhere.
std::vector<const CLI::Option*> AllOptions(const CLI::App& app, const CLI::App& command) {
  std::vector<const CLI::Option*> options = NamedOptions(command);
  for (const CLI::Option* option : NamedOptions(app)) {
    if (option != app.get_help_ptr() && option != app.get_version_ptr()) {
      options.push_back(option);
    }
  }
  return options;
}

std::vector<std::string> AllNames(const std::vector<const CLI::Option*>& options) {
  std::vector<std::string> names;
  for (const CLI::Option* option : options) {
    for (const std::string& name : OptionNames(*option)) {
      names.push_back(name);
    }
  }
  return names;
}

// In single quotes, for the three shells alike but for fish, which knows \' in them.
std::string Quoted(const std::string& text, const char* quote) {
  std::string quoted = "'";
  for (const char c : text) {
    quoted += c == '\'' ? std::string(quote) : std::string(1, c);
  }
  return quoted + "'";
}

std::string FirstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

// --- bash ----------------------------------------------------------------------------------------

// "convert,--to) words='mono8 ...'": what follows an option.
std::string BashValues(const CLI::App& command) {
  std::string cases;
  for (const CLI::Option* option : NamedOptions(command)) {
    if (!TakesValue(*option)) {
      continue;
    }
    for (const std::string& name : OptionNames(*option)) {
      const std::vector<std::string> values = ValuesOf(*option);
      cases += values.empty() ? fmt::format("    {},{}) return ;;\n", command.get_name(), name)
                              : fmt::format("    {},{}) words='{}' ;;\n", command.get_name(), name,
                                            Join(values));
    }
  }
  return cases;
}

std::string BashWords(const CLI::App& app, const CLI::App& command) {
  std::vector<std::string> positional;
  for (const CLI::Option* option : Positionals(command)) {
    for (const std::string& value : ValuesOf(*option)) {
      positional.push_back(value);
    }
  }
  return fmt::format("    {},-*) words='{}' ;;\n    {},*) words='{}' ;;\n", command.get_name(),
                     Join(AllNames(AllOptions(app, command))), command.get_name(),
                     Join(positional));
}

// Where no words are known, bash goes on with the names of files.
std::string BashScript(const CLI::App& app) {
  std::string values;
  std::string words;
  for (const CLI::App* command : Subcommands(app)) {
    values += BashValues(*command);
    words += BashWords(app, *command);
  }
  return fmt::format(R"(# Completion of korvex2 for bash, printed by 'korvex2 completions bash'.
_korvex2() {{
  local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD-1]}} command= words= i
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; ++i)); do
    if [[ ${{COMP_WORDS[i]}} != -* ]]; then
      command=${{COMP_WORDS[i]}}
      break
    fi
  done
  if [[ -z $command ]]; then
    words='{} {}'
    COMPREPLY=($(compgen -W "$words" -- "$word"))
    return
  fi
  case $command,$before in
{}    *) case $command,$word in
{}    esac ;;
  esac
  COMPREPLY=($(compgen -W "$words" -- "$word"))
}}
complete -o default -F _korvex2 korvex2
)",
                     NamesOf(Subcommands(app)), Join(AllNames(NamedOptions(app))), values, words);
}

// --- zsh -----------------------------------------------------------------------------------------

// Brackets and colons mean something to _arguments.
std::string ZshText(const std::string& text) {
  std::string escaped;
  for (const char c : FirstLine(text)) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') {
      escaped += '\\';
    }
    escaped += c;
  }
  return escaped;
}

std::string ZshAction(const CLI::Option& option) {
  const std::vector<std::string> values = ValuesOf(option);
  return values.empty() ? "_files" : fmt::format("({})", Join(values));
}

std::string ZshSpecs(const CLI::App& app, const CLI::App& command) {
  std::string specs;
  for (const CLI::Option* option : AllOptions(app, command)) {
    for (const std::string& name : OptionNames(*option)) {
      const std::string value =
          TakesValue(*option) ? fmt::format(":value:{}", ZshAction(*option)) : "";
      specs += " \\\n        " +
               Quoted(fmt::format("{}[{}]{}", name, ZshText(option->get_description()), value),
                      R"('\'')");
    }
  }
  for (const CLI::Option* option : Positionals(command)) {
    specs += " \\\n        " +
             Quoted(fmt::format(":{}:{}", ZshText(option->get_description()), ZshAction(*option)),
                    R"('\'')");
  }
  return specs;
}

std::string ZshScript(const CLI::App& app) {
  std::string commands;
  std::string cases;
  for (const CLI::App* command : Subcommands(app)) {
    commands +=
        "    " +
        Quoted(fmt::format("{}:{}", command->get_name(), FirstLine(command->get_description())),
               R"('\'')") +
        "\n";
    cases += fmt::format("    {})\n      _arguments{} ;;\n", command->get_name(),
                         ZshSpecs(app, *command));
  }
  return fmt::format(R"(#compdef korvex2
# Completion of korvex2 for zsh, printed by 'korvex2 completions zsh'.
_korvex2() {{
  local -a commands=(
{}  )
  local i=2
  while (( i < CURRENT )) && [[ $words[i] == -* ]]; do (( ++i )); done
  if (( i >= CURRENT )); then
    if [[ $words[CURRENT] == -* ]]; then
      compadd -- {}
    else
      _describe command commands
    fi
    return
  fi
  local command=$words[i]
  words=("${{(@)words[i,-1]}}")
  (( CURRENT -= i - 1 ))
  case $command in
{}  esac
}}
if [[ $funcstack[1] == _korvex2 ]]; then
  _korvex2 "$@"
else
  compdef _korvex2 korvex2
fi
)",
                     commands, Join(AllNames(NamedOptions(app))), cases);
}

// --- fish ----------------------------------------------------------------------------------------

std::string FishOption(const CLI::Option& option, const std::string& condition) {
  std::string line = "complete -c korvex2" + condition;
  for (const std::string& name : option.get_snames()) {
    line += " -s " + name;
  }
  for (const std::string& name : option.get_lnames()) {
    line += " -l " + name;
  }
  const std::vector<std::string> values = ValuesOf(option);
  if (!values.empty()) {
    line += fmt::format(" -x -a '{}'", Join(values));
  } else if (TakesValue(option)) {
    line += " -r";
  }
  return line + " -d " + Quoted(FirstLine(option.get_description()), "\\'") + "\n";
}

std::string FishScript(const CLI::App& app) {
  std::string script =
      "# Completion of korvex2 for fish, printed by 'korvex2 completions fish'.\n"
      "complete -c korvex2 -e\n"
      "complete -c korvex2 -n __fish_use_subcommand -f\n";
  for (const CLI::Option* option : NamedOptions(app)) {
    script +=
        FishOption(*option, option == app.get_version_ptr() ? " -n __fish_use_subcommand" : "");
  }
  for (const CLI::App* command : Subcommands(app)) {
    const std::string condition =
        fmt::format(" -n '__fish_seen_subcommand_from {}'", command->get_name());
    script +=
        fmt::format("complete -c korvex2 -n __fish_use_subcommand -f -a {} -d {}\n",
                    command->get_name(), Quoted(FirstLine(command->get_description()), "\\'"));
    for (const CLI::Option* option : NamedOptions(*command)) {
      if (option != command->get_help_ptr()) {
        script += FishOption(*option, condition);
      }
    }
    for (const CLI::Option* option : Positionals(*command)) {
      const std::vector<std::string> values = ValuesOf(*option);
      if (!values.empty()) {
        script += fmt::format("complete -c korvex2{} -f -a '{}'\n", condition, Join(values));
      }
    }
  }
  return script;
}

constexpr const char* kNotes =
    R"TEXT(Commands, options and the names of formats, tiles and methods complete. The scripts are installed
with the tool; where they are not:
  bash: eval "$(korvex2 completions bash)"
  zsh:  korvex2 completions zsh > ~/.zfunc/_korvex2     (a folder of $fpath)
  fish: korvex2 completions fish > ~/.config/fish/completions/korvex2.fish)TEXT";

}  // namespace

std::string CompletionScript(const CLI::App& app, const std::string& shell) {
  return shell == "bash" ? BashScript(app) : shell == "zsh" ? ZshScript(app) : FishScript(app);
}

void AddCompletionsCommand(CLI::App& app) {
  const auto shell = std::make_shared<std::string>();
  CLI::App* command =
      app.add_subcommand("completions", "Print a script that completes command lines in a shell");
  command->add_option("shell", *shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  command->footer(kNotes);
  command->callback([shell, &app] { fmt::print("{}", CompletionScript(app, *shell)); });
}

}  // namespace Korvex2::Tool
