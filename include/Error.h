#pragma once

/// @file
/// The result of every operation: a code, and for failures where, when and why.

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

#include "Korvex2Export.h"

namespace Korvex2 {

class InternalError;

/// Result codes, consecutive from -1. Frames and conversions answer OK, FAILED, NOT_IMPLEMENTED,
/// INVALID_PARAMETER, INVALID_SETTINGS, MEMORY_ALLOCATION_FAILED, NOT_FOUND,
/// IMAGE_CONVERSION_FAILED and BUFFER_TOO_SMALL; the others are for cameras and what connects them.
enum ErrorType : std::int32_t {
  VORERROR_UNDEFINED = -1,                ///< no result yet
  VORERROR_OK = 0,                        ///< success
  VORERROR_FAILED,                        ///< something failed; GetCause() may say why
  VORERROR_NOT_IMPLEMENTED,               ///< this operation does not exist yet
  VORERROR_FAILED_BUS_MASTER_CONNECTION,  ///< no connection to the bus master
  VORERROR_NOT_CONNECTED,                 ///< not connected to a camera
  VORERROR_INIT_FAILED,                   ///< initialization failed
  VORERROR_NOT_INTITIALIZED,              ///< not initialized; the spelling is meant
  VORERROR_INVALID_PARAMETER,             ///< an argument is null, unknown or out of range
  VORERROR_INVALID_SETTINGS,              ///< settings that do not go together
  VORERROR_INVALID_BUS_MANAGER,           ///< no bus manager, or not the right one
  VORERROR_MEMORY_ALLOCATION_FAILED,      ///< out of memory
  VORERROR_LOW_LEVEL_FAILURE,             ///< the system or a driver failed
  VORERROR_NOT_FOUND,                     ///< nothing has this name or number
  VORERROR_FAILED_GUID,                   ///< no camera answers to this identifier
  VORERROR_INVALID_PACKET_SIZE,           ///< a packet size that the bus does not carry
  VORERROR_INVALID_MODE,                  ///< a mode that the camera does not have
  VORERROR_NOT_IN_FORMAT7,                ///< for custom image modes only
  VORERROR_NOT_SUPPORTED,                 ///< the camera or the machine cannot do this
  VORERROR_TIMEOUT,                       ///< it took too long
  VORERROR_BUS_MASTER_FAILED,             ///< the bus master failed
  VORERROR_INVALID_GENERATION,            ///< the bus was reset meanwhile
  VORERROR_LUT_FAILED,                    ///< the look-up table failed
  VORERROR_IIDC_FAILED,                   ///< the camera refused a command
  VORERROR_STROBE_FAILED,                 ///< the strobe failed
  VORERROR_TRIGGER_FAILED,                ///< the trigger failed
  VORERROR_PROPERTY_FAILED,               ///< a camera property failed
  VORERROR_PROPERTY_NOT_PRESENT,          ///< the camera has no such property
  VORERROR_REGISTER_FAILED,               ///< access to a register failed
  VORERROR_READ_REGISTER_FAILED,          ///< a register could not be read
  VORERROR_WRITE_REGISTER_FAILED,         ///< a register could not be written
  VORERROR_ISOCH_FAILED,                  ///< the stream of frames failed
  VORERROR_ISOCH_ALREADY_STARTED,         ///< the stream runs already
  VORERROR_ISOCH_NOT_STARTED,             ///< the stream does not run
  VORERROR_ISOCH_START_FAILED,            ///< the stream could not be started
  VORERROR_ISOCH_RETRIEVE_BUFFER_FAILED,  ///< no frame could be taken from the stream
  VORERROR_ISOCH_STOP_FAILED,             ///< the stream could not be stopped
  VORERROR_ISOCH_SYNC_FAILED,             ///< the streams could not be synchronized
  VORERROR_ISOCH_BANDWIDTH_EXCEEDED,      ///< the bus has no room for the stream
  VORERROR_IMAGE_CONVERSION_FAILED,       ///< there is no picture, or would be none
  VORERROR_IMAGE_LIBRARY_FAILURE,         ///< an image library failed
  VORERROR_BUFFER_TOO_SMALL,              ///< the memory that a caller lent does not hold the frame
  VORERROR_IMAGE_CONSISTENCY_ERROR,       ///< a frame arrived damaged
  VORERROR_INCOMPATIBLE_DRIVER,           ///< the driver does not go with the library
  VORERROR_FORCE_32BITS = 0x7fffffff      ///< fixes the width, no code
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

  /// VORERROR_OK for success.
  ErrorType GetType() const noexcept { return m_type; }
  /// What went wrong, in a sentence; empty for success.
  const char* GetMessage() const noexcept;
  /// The source file that raised the failure; empty for success.
  const char* GetFile() const noexcept;
  /// The line of that file; 0 for success.
  int GetLine() const noexcept;
  /// The date of that file's compilation, "Mmm dd yyyy"; empty for success.
  const char* GetDate() const noexcept;
  /// The time of that file's compilation, "hh:mm:ss"; empty for success.
  const char* GetTime() const noexcept;
  /// The failure that led to this one, or null.
  const Error* GetCause() const noexcept;

  /// Whether this is the result of that type; messages and causes do not matter.
  bool operator==(const ErrorType& type) const noexcept { return m_type == type; }
  /// Whether this is a result of another type.
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
