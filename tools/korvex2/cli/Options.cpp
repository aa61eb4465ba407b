#include "cli/Options.h"

#include <fmt/format.h>

namespace Korvex2::Tool {

std::vector<std::string_view> NamesOf(const Option& option) {
  std::vector<std::string_view> names;
  std::string_view rest = option.names;
  for (std::size_t comma = rest.find(','); comma != rest.npos; comma = rest.find(',')) {
    names.push_back(rest.substr(0, comma));
    rest.remove_prefix(comma + 1);
  }
  names.push_back(rest);
  return names;
}

bool TakesValue(const Option& option) {
  return !std::holds_alternative<std::monostate>(option.field) &&
         !std::holds_alternative<bool*>(option.field);
}

bool IsRequired(const Option& option) {
  const bool isPositional = !option.names.starts_with('-');
  return isPositional || option.presence == Presence::Required;
}

std::string DefaultOf(const Option& option) {
  if (const auto* text = std::get_if<std::string*>(&option.field)) {
    return **text;
  }
  if (const auto* number = std::get_if<std::uint32_t*>(&option.field)) {
    return fmt::format("{}", **number);
  }
  if (const auto* number = std::get_if<double*>(&option.field)) {
    return fmt::format("{}", **number);
  }
  return "";
}

std::vector<std::string_view> WordsOf(const Option& option) {
  const auto* words = std::get_if<Words>(&option.value);
  return words == nullptr ? std::vector<std::string_view>{} : words->words;
}

}  // namespace Korvex2::Tool
