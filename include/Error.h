#pragma once

/// The result of every operation: a code, and for failures where, when and why.

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

#include "Korvex2Export.h"

namespace Korvex2 {

class InternalError;

/// Result codes, consecutive from -1.
enum ErrorType : std::int32_t {
  VORERROR_UNDEFINED = -1,
  VORERROR_OK = 0,
  VORERROR_FAILED,
  VORERROR_NOT_IMPLEMENTED,
  VORERROR_FAILED_BUS_MASTER_CONNECTION,
  VORERROR_NOT_CONNECTED,
  VORERROR_INIT_FAILED,
  VORERROR_NOT_INTITIALIZED,  ///< the spelling is part of the interface
  VORERROR_INVALID_PARAMETER,
  VORERROR_INVALID_SETTINGS,
  VORERROR_INVALID_BUS_MANAGER,
  VORERROR_MEMORY_ALLOCATION_FAILED,
  VORERROR_LOW_LEVEL_FAILURE,
  VORERROR_NOT_FOUND,
  VORERROR_FAILED_GUID,
  VORERROR_INVALID_PACKET_SIZE,
  VORERROR_INVALID_MODE,
  VORERROR_NOT_IN_FORMAT7,
  VORERROR_NOT_SUPPORTED,
  VORERROR_TIMEOUT,
  VORERROR_BUS_MASTER_FAILED,
  VORERROR_INVALID_GENERATION,
  VORERROR_LUT_FAILED,
  VORERROR_IIDC_FAILED,
  VORERROR_STROBE_FAILED,
  VORERROR_TRIGGER_FAILED,
  VORERROR_PROPERTY_FAILED,
  VORERROR_PROPERTY_NOT_PRESENT,
  VORERROR_REGISTER_FAILED,
  VORERROR_READ_REGISTER_FAILED,
  VORERROR_WRITE_REGISTER_FAILED,
  VORERROR_ISOCH_FAILED,
  VORERROR_ISOCH_ALREADY_STARTED,
  VORERROR_ISOCH_NOT_STARTED,
  VORERROR_ISOCH_START_FAILED,
  VORERROR_ISOCH_RETRIEVE_BUFFER_FAILED,
  VORERROR_ISOCH_STOP_FAILED,
  VORERROR_ISOCH_SYNC_FAILED,
  VORERROR_ISOCH_BANDWIDTH_EXCEEDED,
  VORERROR_IMAGE_CONVERSION_FAILED,
  VORERROR_IMAGE_LIBRARY_FAILURE,
  VORERROR_BUFFER_TOO_SMALL,
  VORERROR_IMAGE_CONSISTENCY_ERROR,
  VORERROR_INCOMPATIBLE_DRIVER,
  VORERROR_FORCE_32BITS = 0x7fffffff  ///< fixes the width, no code
};

/// The enumerator of a code as text, e.g. "VORERROR_INVALID_PARAMETER";
/// "VORERROR_UNKNOWN" for a value outside the enumeration. The string is static.
KORVEX2_API const char* GetErrorTypeName(ErrorType type) noexcept;

/// A result. Success costs no allocation; a failure shares one immutable record among its copies.
///
/// The strings and the cause that an Error hands out live as long as that Error or a copy of it.
/// Distinct Errors may be used from distinct threads, copies of one failure among them. No
/// operation throws: should memory run out while a failure is described, its code survives and its
/// texts are empty.
class KORVEX2_API Error {
 public:
  /// Success.
  Error() noexcept = default;

  ErrorType GetType() const noexcept { return m_type; }
  /// What went wrong, in a sentence; empty for success.
  const char* GetMessage() const noexcept;
  /// The source file that raised the failure, its line, and the date and time of its compilation
  /// ("Mmm dd yyyy", "hh:mm:ss"); empty and 0 for success.
  const char* GetFile() const noexcept;
  int GetLine() const noexcept;
  const char* GetDate() const noexcept;
  const char* GetTime() const noexcept;
  /// The failure that led to this one, or null.
  const Error* GetCause() const noexcept;

  bool operator==(const ErrorType& type) const noexcept { return m_type == type; }
  bool operator!=(const ErrorType& type) const noexcept { return m_type != type; }

  /// One line: "VORERROR_FAILED: message". Success reads "VORERROR_OK".
  std::string ToString() const noexcept;
  /// One line for the failure and one for each cause below it, with file, line and build stamp.
  std::string GetTrace() const noexcept;

 private:
  friend class InternalError;
  struct Record;

  ErrorType m_type = VORERROR_OK;
  std::shared_ptr<const Record> m_pRecord;  // null for success
};

/// Writes ToString().
KORVEX2_API std::ostream& operator<<(std::ostream& stream, const Error& error);

}  // namespace Korvex2
