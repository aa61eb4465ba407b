#pragma once

/// The routines as an enumeration, for the tables and switches in here. Clients know them by name:
/// a value changes whenever a row is inserted before it.

#include <cstdint>

namespace Korvex2 {

/// A row of Routines.def each.
enum class Routine : std::uint16_t {
  None,        // the pair is refused
  SameFormat,  // the image is copied
#define KORVEX2_KERNEL(routine, ...) routine,
#define KORVEX2_WRAPPER(routine, ...) routine,
#define KORVEX2_CHAIN(routine, ...) routine,
#define KORVEX2_DEMOSAIC(routine) routine,
#include "Routines.def"
  Count  // past the last one
};

}  // namespace Korvex2
