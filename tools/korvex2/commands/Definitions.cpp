#include "commands/Definitions.h"

#include "BayerNames.h"
#include "PixelFormats.h"

namespace Korvex2::Tool {
namespace {

// An option of a name means the same in every subcommand.
bool IsFormat(const std::string& name) {
  return name == "--from" || name == "--to" || name == "--format";
}

template <typename Row>
std::vector<std::string> NamesOf(ArrayView<Row> rows) {
  std::vector<std::string> names;
  for (const Row& row : rows) {
    names.emplace_back(row.name);
  }
  return names;
}

std::vector<std::string> FormatNames() {
  std::vector<std::string> names;
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (format.convertible) {
      names.emplace_back(format.name);
    }
  }
  return names;
}

// CLI11 describes a check for membership by "{a,b,c}".
std::vector<std::string> Listed(const std::string& type) {
  const std::size_t begin = type.find('{');
  const std::size_t end = type.find('}', begin);
  if (begin == std::string::npos || end == std::string::npos) {
    return {};
  }
  return CLI::detail::split(type.substr(begin + 1, end - begin - 1), ',');
}

}  // namespace

std::vector<const CLI::App*> Subcommands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

std::vector<std::string> OptionNames(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) {
    names.push_back("-" + name);
  }
  for (const std::string& name : option.get_lnames()) {
    names.push_back("--" + name);
  }
  return names;
}

bool TakesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

std::vector<std::string> ValuesOf(const CLI::Option& option) {
  const std::vector<std::string> names = OptionNames(option);
  const std::string name = names.empty() ? "" : names.back();
  if (IsFormat(name)) {
    return FormatNames();
  }
  if (name == "--tile") {
    return NamesOf(BayerTiles());
  }
  if (name == "--method") {
    return NamesOf(ColorProcessings());
  }
  return Listed(option.get_type_name());
}

std::vector<const CLI::Option*> NamedOptions(const CLI::App& app) {
  return app.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

std::vector<const CLI::Option*> Positionals(const CLI::App& app) {
  return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

}  // namespace Korvex2::Tool
