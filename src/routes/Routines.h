#pragma once

/// The conversion routines and the matrix of pairs, as data.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "Korvex2Defs.h"
#include "Korvex2Export.h"

namespace Korvex2 {

/// The name of every conversion routine; a row of Routines.def each.
enum class Routine : std::uint16_t {
  None,        ///< the pair is refused
  SameFormat,  ///< the image is copied
#define KERNEL(routine, ...) routine,
#define WRAPPER(routine, ...) routine,
#define CHAIN(routine, ...) routine,
#define DEMOSAIC(routine) routine,
#include "routes/Routines.def"
};

/// One row of Routines.def.
struct RoutineInfo {
  enum class Kind : std::uint8_t { Kernel, Wrapper, Chain, Demosaic };
  enum class Guard : std::uint8_t { Guarded, Unguarded };
  enum class Result : std::uint8_t { LastStep, Success };
  enum class Extra : std::uint8_t { Plain, ClearsDestination, ChecksEachPixel };

  Routine routine = Routine::None;
  std::string_view name;
  Kind kind = Kind::Kernel;
  Guard guard = Guard::Guarded;      ///< who refuses null images
  Result result = Result::LastStep;  ///< whether the last step's result is passed on

  // Kernels only.
  Extra extra = Extra::Plain;
  std::uint32_t pixelsPerStep = 0;
  std::uint32_t sourceBytesPerStep = 0;
  std::uint32_t destinationBytesPerStep = 0;

  // Wrappers have the last step only, chains both steps and a temporary image between them.
  Routine firstStep = Routine::None;
  Routine lastStep = Routine::None;
  PixelFormat temporary = UNSPECIFIED_PIXEL_FORMAT;
};

/// Every routine, in the order of the enumeration after SameFormat.
KORVEX2_API std::span<const RoutineInfo> Routines() noexcept;

/// The row of a routine other than None and SameFormat.
KORVEX2_API const RoutineInfo& GetRoutine(Routine routine) noexcept;

/// What Convert runs for a pair: a routine, SameFormat, or None where it refuses the pair.
KORVEX2_API Routine FindRoute(PixelFormat source, PixelFormat target) noexcept;

/// One call on the way from a format to another.
struct RouteCall {
  const RoutineInfo* routine;
  int depth;  ///< 0 for the pair's own routine, 1 for its steps, and so on
  PixelFormat source;
  PixelFormat target;

  /// Whether pixels are walked here, not only in the calls below.
  bool IsPass() const noexcept {
    return routine->kind == RoutineInfo::Kind::Kernel ||
           routine->kind == RoutineInfo::Kind::Demosaic;
  }
};

/// Every call that Convert makes for a pair, in the order in which they begin; none where it copies
/// or refuses. Throws std::bad_alloc.
KORVEX2_API std::vector<RouteCall> ExpandRoute(PixelFormat source, PixelFormat target);

}  // namespace Korvex2
