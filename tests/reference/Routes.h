#pragma once

/// The oracle's own tables: what each composed routine consists of, and which routine serves a
/// pair.

#include <span>

#include "reference/Formats.h"

namespace Reference {

/// The name that stands for the bridge to the demosaic engine among the steps.
inline constexpr const char* kDemosaic = "ConvertBayerImageToBGR";

/// What Dispatch answers for a pair that is copied.
inline constexpr const char* SameFormat = "";

struct RouteRow {
  enum class Returns { Success, LastStep };

  const char* name;
  Format temporary;   ///< UNSPECIFIED: the last step alone, no temporary
  const char* first;  ///< null without a temporary
  const char* last;
  bool ownNullTest;
  Returns returns;
};

std::span<const RouteRow> Routes();

/// Null for a name that is no composed routine.
const RouteRow* FindRoute(const char* name);

/// The routine of a pair, SameFormat, or null where the pair is refused.
const char* Dispatch(Format source, Format target);

bool IsTarget(Format format);

}  // namespace Reference
