#pragma once

/// The command line told to others: shells that complete it, readers of the man page. Everything is
/// taken from the definitions that --help is made of.

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace Korvex2::Tool {

/// The subcommands that were added, in their order.
std::vector<const CLI::App*> Subcommands(const CLI::App& app);

/// The names of an option with their dashes, short ones first; none for a positional.
std::vector<std::string> OptionNames(const CLI::Option& option);

/// Whether a value follows the option.
bool TakesValue(const CLI::Option& option);

/// The words that the option can be: the names of formats, tiles or methods, or those that its
/// check lists; none where it takes a file or a number.
std::vector<std::string> ValuesOf(const CLI::Option& option);

/// The options that an app shows in its help, --help among them; positionals apart.
std::vector<const CLI::Option*> NamedOptions(const CLI::App& app);
std::vector<const CLI::Option*> Positionals(const CLI::App& app);

/// The script that completes command lines of the app in "bash", "zsh" or "fish".
std::string CompletionScript(const CLI::App& app, const std::string& shell);

/// The man page of the app in the man macros of roff.
std::string ManPage(const CLI::App& app, const std::string& version);

}  // namespace Korvex2::Tool
