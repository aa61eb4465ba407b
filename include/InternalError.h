#pragma once

/// @file
/// The builder of Error: says where and why, then converts.

#include "Error.h"

namespace Korvex2 {

/// Builds an Error, to be returned.
///
///     return InternalError(__LINE__, "Camera.cpp", __DATE__, __TIME__,
///                          VORERROR_NOT_FOUND, "No camera has serial number %u.", serial);
///
/// Strings are copied. Nothing throws.
class KORVEX2_API InternalError {
 public:
  /// A bare code, in practice VORERROR_OK.
  InternalError(ErrorType type) noexcept;

  /// A located failure with a printf-style message.
  InternalError(int line, const char* file, const char* date, const char* time, ErrorType type,
                const char* format, ...) noexcept __attribute__((format(printf, 7, 8)));

  /// A located failure that nests the one that led to it.
  InternalError(int line, const char* file, const char* date, const char* time, ErrorType type,
                const InternalError& cause, const char* format, ...) noexcept
      __attribute__((format(printf, 8, 9)));

  /// Takes a returned Error up again, to nest it as a cause.
  InternalError(const Error& error) noexcept;  // implicit, so that an Error can be passed as cause

  /// What callers are handed.
  operator Error() const noexcept { return m_error; }

 private:
  Error m_error;
};

}  // namespace Korvex2
