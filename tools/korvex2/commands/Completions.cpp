// korvex2 completions: what shells need to complete its command lines.

#include <fmt/format.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "commands/Commands.h"

namespace Korvex2::Tool {
namespace {

std::string Join(const std::vector<std::string_view>& words) {
  std::string joined;
  for (const std::string_view word : words) {
    joined += joined.empty() ? "" : " ";
    joined += word;
  }
  return joined;
}

std::string CommandNames(const Program& program) {
  std::vector<std::string_view> names;
  for (const Command& command : program.commands) {
    names.push_back(command.name);
  }
  return Join(names);
}

std::string AllNames(const std::vector<Option>& options) {
  std::vector<std::string_view> names;
  for (const Option& option : options) {
    for (const std::string_view name : NamesOf(option)) {
      names.push_back(name);
    }
  }
  return Join(names);
}

std::vector<Option> Joined(std::vector<Option> options, const std::vector<Option>& more) {
  options.insert(options.end(), more.begin(), more.end());
  return options;
}

// What may stand before a subcommand.
std::vector<Option> FirstOptions(const Program& program) {
  return Joined({kHelpOption, kVersionOption}, program.options);
}

// What may stand after it: its options, and those of the program, which may stand anywhere.
std::vector<Option> LaterOptions(const Program& program, const Command& command) {
  return Joined(Joined({kHelpOption}, command.options), program.options);
}

// In single quotes, for the three shells alike but for fish, which knows \' in them.
std::string Quoted(std::string_view text, const char* quote) {
  std::string quoted = "'";
  for (const char c : text) {
    quoted += c == '\'' ? std::string(quote) : std::string(1, c);
  }
  return quoted + "'";
}

std::string_view FirstLine(std::string_view text) {
  return text.substr(0, text.find('\n'));
}

// --- bash ----------------------------------------------------------------------------------------

// "convert,--to) words='mono8 ...'": what follows an option.
std::string BashValues(const Command& command) {
  std::string cases;
  for (const Option& option : command.options) {
    if (!TakesValue(option)) {
      continue;
    }
    const std::string words = Join(WordsOf(option));
    for (const std::string_view name : NamesOf(option)) {
      cases += words.empty() ? fmt::format("    {},{}) return ;;\n", command.name, name)
                             : fmt::format("    {},{}) words='{}' ;;\n", command.name, name, words);
    }
  }
  return cases;
}

std::string BashWords(const Program& program, const Command& command) {
  std::vector<std::string_view> positional;
  for (const Option& option : command.positionals) {
    for (const std::string_view word : WordsOf(option)) {
      positional.push_back(word);
    }
  }
  return fmt::format("    {},-*) words='{}' ;;\n    {},*) words='{}' ;;\n", command.name,
                     AllNames(LaterOptions(program, command)), command.name, Join(positional));
}

// Where no words are known, bash goes on with the names of files.
std::string BashScript(const Program& program) {
  std::string values;
  std::string words;
  for (const Command& command : program.commands) {
    values += BashValues(command);
    words += BashWords(program, command);
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
                     CommandNames(program), AllNames(FirstOptions(program)), values, words);
}

// --- zsh -----------------------------------------------------------------------------------------

// Brackets and colons mean something to _arguments.
std::string ZshText(std::string_view text) {
  std::string escaped;
  for (const char c : FirstLine(text)) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') {
      escaped += '\\';
    }
    escaped += c;
  }
  return escaped;
}

std::string ZshAction(const Option& option) {
  const std::string words = Join(WordsOf(option));
  return words.empty() ? "_files" : fmt::format("({})", words);
}

std::string ZshSpec(std::string_view text) {
  return " \\\n        " + Quoted(text, R"('\'')");
}

std::string ZshSpecs(const Program& program, const Command& command) {
  std::string specs;
  for (const Option& option : LaterOptions(program, command)) {
    const std::string value = TakesValue(option) ? fmt::format(":value:{}", ZshAction(option)) : "";
    for (const std::string_view name : NamesOf(option)) {
      specs += ZshSpec(fmt::format("{}[{}]{}", name, ZshText(option.help), value));
    }
  }
  for (const Option& option : command.positionals) {
    specs += ZshSpec(fmt::format(":{}:{}", ZshText(option.help), ZshAction(option)));
  }
  return specs;
}

std::string ZshScript(const Program& program) {
  std::string commands;
  std::string cases;
  for (const Command& command : program.commands) {
    const std::string line = fmt::format("{}:{}", command.name, FirstLine(command.help));
    commands += fmt::format("    {}\n", Quoted(line, R"('\'')"));
    cases +=
        fmt::format("    {})\n      _arguments{} ;;\n", command.name, ZshSpecs(program, command));
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
                     commands, AllNames(FirstOptions(program)), cases);
}

// --- fish ----------------------------------------------------------------------------------------

std::string FishOption(const Option& option, std::string_view condition) {
  std::string line = fmt::format("complete -c korvex2{}", condition);
  for (const std::string_view name : NamesOf(option)) {
    line += name.starts_with("--") ? fmt::format(" -l {}", name.substr(2))
                                   : fmt::format(" -s {}", name.substr(1));
  }
  const std::string words = Join(WordsOf(option));
  if (!words.empty()) {
    line += fmt::format(" -x -a '{}'", words);
  } else if (TakesValue(option)) {
    line += " -r";
  }
  return fmt::format("{} -d {}\n", line, Quoted(FirstLine(option.help), "\\'"));
}

std::string FishCommand(const Command& command) {
  const std::string condition = fmt::format(" -n '__fish_seen_subcommand_from {}'", command.name);
  std::string lines = fmt::format("complete -c korvex2 -n __fish_use_subcommand -f -a {} -d {}\n",
                                  command.name, Quoted(FirstLine(command.help), "\\'"));
  for (const Option& option : command.options) {
    lines += FishOption(option, condition);
  }
  for (const Option& option : command.positionals) {
    const std::string words = Join(WordsOf(option));
    if (!words.empty()) {
      lines += fmt::format("complete -c korvex2{} -f -a '{}'\n", condition, words);
    }
  }
  return lines;
}

std::string FishScript(const Program& program) {
  std::string script =
      "# Completion of korvex2 for fish, printed by 'korvex2 completions fish'.\n"
      "complete -c korvex2 -e\n"
      "complete -c korvex2 -n __fish_use_subcommand -f\n";
  script += FishOption(kHelpOption, "");
  script += FishOption(kVersionOption, " -n __fish_use_subcommand");
  for (const Option& option : program.options) {
    script += FishOption(option, "");
  }
  for (const Command& command : program.commands) {
    script += FishCommand(command);
  }
  return script;
}

std::string CompletionScript(const Program& program, const std::string& shell) {
  return shell == "bash"  ? BashScript(program)
         : shell == "zsh" ? ZshScript(program)
                          : FishScript(program);
}

constexpr const char* kNotes =
    R"TEXT(Commands, options and the names of formats, tiles and methods complete. The scripts are installed
with the tool; where they are not:
  bash: eval "$(korvex2 completions bash)"
  zsh:  korvex2 completions zsh > ~/.zfunc/_korvex2     (a folder of $fpath)
  fish: korvex2 completions fish > ~/.config/fish/completions/korvex2.fish)TEXT";

}  // namespace

Command CompletionsCommand(const Program& program) {
  const auto shell = std::make_shared<std::string>();
  const Words shells{{"bash", "zsh", "fish"}, /*othersAllowed=*/false};
  // clang-format off
  return {
      .name = "completions",
      .help = "Print a script that completes command lines in a shell",
      .positionals = {
          {"shell", shell.get(), shells, "bash, zsh or fish"},
      },
      .notes = kNotes,
      .run = [shell, &program] { fmt::print("{}", CompletionScript(program, *shell)); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
