#pragma once

/// How reading and writing give up: with one sentence that says what was wrong and what would be
/// right.

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

#include "Korvex2Export.h"

namespace Korvex2::Io {

/// The request was understood and could not be fulfilled. What is caught in another library or
/// program than threw it has to be visible there.
class KORVEX2_API Failure : public std::runtime_error {
 public:
  template <typename... Args>
  explicit Failure(fmt::format_string<Args...> format, Args&&... args)
      : std::runtime_error(fmt::format(format, std::forward<Args>(args)...)) {}
};

/// Whatever is asked for next would fail as well.
class KORVEX2_API FatalFailure : public Failure {
 public:
  using Failure::Failure;
};

/// The request makes no sense as it stands, whatever the files hold.
class KORVEX2_API UsageFailure : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace Korvex2::Io
