#pragma once

/// @file
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
/// @cond
#define KERNEL(routine, ...) routine,
#define WRAPPER(routine, ...) routine,
#define CHAIN(routine, ...) routine,
#define DEMOSAIC(routine) routine,
#include "routes/Routines.def"
  /// @endcond
};

/// One row of Routines.def. All strings are static.
struct RoutineInfo {
  /// What a routine does.
  enum class Kind : std::uint8_t {
    Kernel,   ///< one pass over the pixels
    Wrapper,  ///< a call of another routine
    Chain,    ///< two routines and a temporary image between them
    Demosaic  ///< a call of the demosaic engine
  };
  /// What a routine does about null images and images without a buffer.
  enum class Guard : std::uint8_t {
    Guarded,   ///< refuses them: VORERROR_INVALID_PARAMETER
    Unguarded  ///< leaves that to what it calls
  };
  /// What a routine answers.
  enum class Result : std::uint8_t {
    LastStep,  ///< what its last step answered
    Success    ///< success, whatever its steps answered
  };
  /// What else a kernel does.
  enum class Extra : std::uint8_t {
    Plain,              ///< nothing
    ClearsDestination,  ///< zeroes the whole destination first
    ChecksEachPixel     ///< repeats the null test before each pixel
  };

  Routine routine = Routine::None;   ///< the row's own value
  std::string_view name;             ///< "ConvertRGBToY8"
  Kind kind = Kind::Kernel;          ///< decides which of the fields below hold
  Guard guard = Guard::Guarded;      ///< who refuses null images
  Result result = Result::LastStep;  ///< whether the last step's result is passed on

  Extra extra = Extra::Plain;                 ///< of kernels
  std::uint32_t pixelsPerStep = 0;            ///< of kernels: 1, 2 or 4; a begun step is completed
  std::uint32_t sourceBytesPerStep = 0;       ///< of kernels: bytes read
  std::uint32_t destinationBytesPerStep = 0;  ///< of kernels: bytes written

  Routine firstStep = Routine::None;                 ///< of chains
  Routine lastStep = Routine::None;                  ///< of chains and wrappers
  PixelFormat temporary = UNSPECIFIED_PIXEL_FORMAT;  ///< of chains: the image between the steps
};

/// Every routine, in the order of the enumeration after SameFormat.
KORVEX2_API std::span<const RoutineInfo> Routines() noexcept;

/// The row of a routine other than None and SameFormat.
KORVEX2_API const RoutineInfo& GetRoutine(Routine routine) noexcept;

/// What Convert runs for a pair: a routine, SameFormat, or None where it refuses the pair.
KORVEX2_API Routine FindRoute(PixelFormat source, PixelFormat target) noexcept;

/// One call on the way from a format to another.
struct RouteCall {
  const RoutineInfo* routine;  ///< never null
  int depth;                   ///< 0 for the pair's own routine, 1 for its steps, and so on
  PixelFormat source;          ///< what it reads
  PixelFormat target;          ///< what it writes

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
