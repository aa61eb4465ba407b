#pragma once

/// What may stand on a command line, as data: the parser, completions and the man page all read it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Korvex2::Tool {

/// Where the value of an option goes. What the field holds before a command line is read is the
/// default, and is shown as such; the optional ones have none. The fields outlive the option.
using Field =
    std::variant<std::monostate,  // --help and --version, which the parser answers itself
                 bool*,           // a flag
                 std::string*,    // empty: not given
                 std::optional<std::string>*,
                 std::vector<std::string>*,  // one or more
                 std::uint32_t*, std::optional<std::uint32_t>*, std::optional<std::uint64_t>*,
                 std::vector<std::uint32_t>*, double*, std::optional<double>*>;

// --- What a value may be -------------------------------------------------------------------------

struct Text {
  bool mayBeEmpty = true;
  std::string_view placeholder = {};  ///< what --help shows for it; empty: TEXT
};

/// Words that complete. Where others are allowed, the command looks at the value itself.
struct Words {
  std::vector<std::string_view> words;
  bool othersAllowed = true;
};

/// A whole number within limits, both included.
struct WholeNumber {
  std::uint64_t least;
  std::uint64_t most;
};

/// A number within limits, both included; not a NaN.
struct RealNumber {
  double least;
  double most;
};

/// So many whole numbers between commas.
struct NumberList {
  int count;
};

using Value = std::variant<Text, Words, WholeNumber, RealNumber, NumberList>;

inline constexpr Text kText{};
inline constexpr Text kFlag{};  ///< in the place of the value of a flag

// --- An option -----------------------------------------------------------------------------------

enum class Presence { Optional, Required };

/// A row of a command's table: a named option, or a positional one, which is always required.
struct Option {
  std::string_view names;  ///< "--to", "-q,--quiet": short ones first; of a positional "input"
  Field field;             ///< not null
  Value value;
  std::string help;  ///< a phrase without a full stop
  Presence presence = Presence::Optional;
};

/// "-q" and "--quiet", short ones first; of a positional its name.
std::vector<std::string_view> NamesOf(const Option& option);

/// Whether a value follows the option.
bool TakesValue(const Option& option);

/// Whether a command line without it is wrong.
bool IsRequired(const Option& option);

/// The default as text; empty where there is none.
std::string DefaultOf(const Option& option);

/// The words that complete the value; none where it takes a file or a number.
std::vector<std::string_view> WordsOf(const Option& option);

}  // namespace Korvex2::Tool
