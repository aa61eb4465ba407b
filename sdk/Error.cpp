#include "Error.h"

#include <array>
#include <ostream>

#include "ErrorRecord.h"

namespace Korvex2 {
namespace {

// In value order from VORERROR_UNDEFINED.
constexpr std::array kNames = {
    "VORERROR_UNDEFINED",
    "VORERROR_OK",
    "VORERROR_FAILED",
    "VORERROR_NOT_IMPLEMENTED",
    "VORERROR_FAILED_BUS_MASTER_CONNECTION",
    "VORERROR_NOT_CONNECTED",
    "VORERROR_INIT_FAILED",
    "VORERROR_NOT_INTITIALIZED",
    "VORERROR_INVALID_PARAMETER",
    "VORERROR_INVALID_SETTINGS",
    "VORERROR_INVALID_BUS_MANAGER",
    "VORERROR_MEMORY_ALLOCATION_FAILED",
    "VORERROR_LOW_LEVEL_FAILURE",
    "VORERROR_NOT_FOUND",
    "VORERROR_FAILED_GUID",
    "VORERROR_INVALID_PACKET_SIZE",
    "VORERROR_INVALID_MODE",
    "VORERROR_NOT_IN_FORMAT7",
    "VORERROR_NOT_SUPPORTED",
    "VORERROR_TIMEOUT",
    "VORERROR_BUS_MASTER_FAILED",
    "VORERROR_INVALID_GENERATION",
    "VORERROR_LUT_FAILED",
    "VORERROR_IIDC_FAILED",
    "VORERROR_STROBE_FAILED",
    "VORERROR_TRIGGER_FAILED",
    "VORERROR_PROPERTY_FAILED",
    "VORERROR_PROPERTY_NOT_PRESENT",
    "VORERROR_REGISTER_FAILED",
    "VORERROR_READ_REGISTER_FAILED",
    "VORERROR_WRITE_REGISTER_FAILED",
    "VORERROR_ISOCH_FAILED",
    "VORERROR_ISOCH_ALREADY_STARTED",
    "VORERROR_ISOCH_NOT_STARTED",
    "VORERROR_ISOCH_START_FAILED",
    "VORERROR_ISOCH_RETRIEVE_BUFFER_FAILED",
    "VORERROR_ISOCH_STOP_FAILED",
    "VORERROR_ISOCH_SYNC_FAILED",
    "VORERROR_ISOCH_BANDWIDTH_EXCEEDED",
    "VORERROR_IMAGE_CONVERSION_FAILED",
    "VORERROR_IMAGE_LIBRARY_FAILURE",
    "VORERROR_BUFFER_TOO_SMALL",
    "VORERROR_IMAGE_CONSISTENCY_ERROR",
    "VORERROR_INCOMPATIBLE_DRIVER",
};
static_assert(kNames.size() == VORERROR_INCOMPATIBLE_DRIVER - VORERROR_UNDEFINED + 1);

void AppendSentence(const Error& error, std::string& text) {
  text += GetErrorTypeName(error.GetType());
  if (*error.GetMessage() != '\0') {
    text += ": ";
    text += error.GetMessage();
  }
}

void AppendOrigin(const Error& error, std::string& text) {
  if (*error.GetFile() == '\0') {
    return;
  }
  text += " (";
  text += error.GetFile();
  text += ':';
  text += std::to_string(error.GetLine());
  text += ", built ";
  text += error.GetDate();
  text += ' ';
  text += error.GetTime();
  text += ')';
}

}  // namespace

const char* GetErrorTypeName(ErrorType type) noexcept {
  if (type < VORERROR_UNDEFINED || type > VORERROR_INCOMPATIBLE_DRIVER) {
    return "VORERROR_UNKNOWN";
  }
  return kNames[static_cast<std::size_t>(type - VORERROR_UNDEFINED)];
}

const char* Error::GetMessage() const noexcept {
  return m_pRecord ? m_pRecord->message.c_str() : "";
}

const char* Error::GetFile() const noexcept {
  return m_pRecord ? m_pRecord->file.c_str() : "";
}

int Error::GetLine() const noexcept {
  return m_pRecord ? m_pRecord->line : 0;
}

const char* Error::GetDate() const noexcept {
  return m_pRecord ? m_pRecord->date.c_str() : "";
}

const char* Error::GetTime() const noexcept {
  return m_pRecord ? m_pRecord->time.c_str() : "";
}

const Error* Error::GetCause() const noexcept {
  const bool hasCause = m_pRecord && m_pRecord->cause != VORERROR_OK;
  return hasCause ? &m_pRecord->cause : nullptr;
}

std::string Error::ToString() const noexcept try {
  std::string text;
  AppendSentence(*this, text);
  return text;
} catch (...) {
  return {};
}

std::string Error::GetTrace() const noexcept try {
  std::string text;
  for (const Error* error = this; error != nullptr; error = error->GetCause()) {
    if (error != this) {
      text += "\n  caused by ";
    }
    AppendSentence(*error, text);
    AppendOrigin(*error, text);
  }
  return text;
} catch (...) {
  return {};
}

std::ostream& operator<<(std::ostream& stream, const Error& error) {
  return stream << error.ToString();
}

}  // namespace Korvex2
