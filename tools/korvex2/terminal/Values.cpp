#include "terminal/Values.h"

#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>

namespace Korvex2::Tool {
namespace {

// Digits alone.
std::optional<std::uint32_t> NumberOf(std::string_view text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                  : std::nullopt;
}

// 10 to the power of a number of decimals.
std::optional<std::uint32_t> DecimalsOf(std::size_t decimals) {
  constexpr std::uint32_t kPowers[] = {1, 10, 100, 1000};
  return decimals < std::size(kPowers) ? std::optional(kPowers[decimals]) : std::nullopt;
}

}  // namespace

FrameRate ParseFrameRate(const std::string& text) {
  const std::size_t sign = text.find_first_of("/.");
  const std::string head = text.substr(0, sign);
  std::optional<std::uint32_t> frames = NumberOf(head);
  std::optional<std::uint32_t> seconds = 1;
  if (sign != std::string::npos) {
    const std::string tail = text.substr(sign + 1);
    seconds = NumberOf(tail);
    if (text[sign] == '.' && frames && seconds) {
      frames = NumberOf(head + tail);
      seconds = DecimalsOf(tail.size());
    }
  }
  if (frames.value_or(0) == 0 || seconds.value_or(0) == 0) {
    throw UsageFailure("--fps '{}' is no frame rate such as 25, 29.97 or 30000/1001", text);
  }
  return {*frames, *seconds};
}

Level ParseLevel(const std::string& option, const std::string& text) {
  if (text == "file") {
    return {};
  }
  constexpr std::uint32_t kMost = 65535;
  const std::optional<std::uint32_t> number = NumberOf(text);
  if (!number || *number > kMost) {
    throw UsageFailure("{} '{}' is neither file nor a number up to {}", option, text, kMost);
  }
  return {number};
}

}  // namespace Korvex2::Tool
