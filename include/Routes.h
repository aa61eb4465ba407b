#pragma once

/// @file
/// What runs for a pair of formats, as data: the rows of Routines.def by their names.

#include <cstdint>
#include <string_view>
#include <vector>

#include "ArrayView.h"
#include "Korvex2Defs.h"
#include "Korvex2Export.h"

namespace Korvex2 {

/// One conversion routine: a row of Routines.def. A routine is known by its name, which stays from
/// version to version, and by the address of its row, which lives as long as the process; its
/// position in the table says nothing.
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

  std::string_view name;             ///< "ConvertRGBToY8"; static
  Kind kind = Kind::Kernel;          ///< decides which of the fields below hold
  Guard guard = Guard::Guarded;      ///< who refuses null images
  Result result = Result::LastStep;  ///< whether the last step's result is passed on

  Extra extra = Extra::Plain;                 ///< of kernels
  std::uint32_t pixelsPerStep = 0;            ///< of kernels: 1, 2 or 4; a begun step is completed
  std::uint32_t sourceBytesPerStep = 0;       ///< of kernels: bytes read
  std::uint32_t destinationBytesPerStep = 0;  ///< of kernels: bytes written

  const RoutineInfo* firstStep = nullptr;            ///< of chains, null for others
  const RoutineInfo* lastStep = nullptr;             ///< of chains and wrappers, null for others
  PixelFormat temporary = UNSPECIFIED_PIXEL_FORMAT;  ///< of chains: the image between the steps
};

/// Every routine, kernels first.
KORVEX2_API ArrayView<RoutineInfo> Routines() noexcept;

/// The routine of this name, spelt exactly so; null when there is none.
KORVEX2_API const RoutineInfo* FindRoutine(std::string_view name) noexcept;

/// What Convert runs for a pair. Null where it runs nothing: a pair of two formats is then refused,
/// and one format to itself is copied.
KORVEX2_API const RoutineInfo* FindRoute(PixelFormat source, PixelFormat target) noexcept;

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
