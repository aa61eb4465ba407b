#pragma once

/// How the tool gives up: with one sentence that says what was wrong and what would be right.

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

namespace Korvex2::Tool {

/// The request was understood and could not be fulfilled: exit code 1.
class Failure : public std::runtime_error {
 public:
  template <typename... Args>
  explicit Failure(fmt::format_string<Args...> format, Args&&... args)
      : std::runtime_error(fmt::format(format, std::forward<Args>(args)...)) {}
};

/// Of many frames the others would fail as well: the run ends.
class FatalFailure : public Failure {
 public:
  using Failure::Failure;
};

/// The command line makes no sense as it stands: exit code 2.
class UsageFailure : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace Korvex2::Tool
