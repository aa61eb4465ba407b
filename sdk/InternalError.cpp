#include "InternalError.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>

#include "ErrorRecord.h"

namespace Korvex2 {
namespace {

std::string Format(const char* format, std::va_list arguments) {
  if (format == nullptr) {
    return {};
  }
  std::va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (length < 0) {
    return format;
  }
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
  text.pop_back();
  return text;
}

std::string OrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

// The record of a failure, or null when there is no memory for one.
template <typename Record>
std::shared_ptr<const Record> MakeRecord(int line, const char* file, const char* date,
                                         const char* time, const Error& cause, const char* format,
                                         std::va_list arguments) noexcept {
  try {
    return std::make_shared<const Record>(Record{line, OrEmpty(file), OrEmpty(date), OrEmpty(time),
                                                 Format(format, arguments), cause});
  } catch (...) {
    return nullptr;
  }
}

}  // namespace

InternalError::InternalError(ErrorType type) noexcept {
  m_error.m_type = type;
}

InternalError::InternalError(int line, const char* file, const char* date, const char* time,
                             ErrorType type, const char* format, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  m_error.m_type = type;
  m_error.m_pRecord = MakeRecord<Error::Record>(line, file, date, time, Error(), format, arguments);
  va_end(arguments);
}

InternalError::InternalError(int line, const char* file, const char* date, const char* time,
                             ErrorType type, const InternalError& cause, const char* format,
                             ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  m_error.m_type = type;
  m_error.m_pRecord =
      MakeRecord<Error::Record>(line, file, date, time, cause.m_error, format, arguments);
  va_end(arguments);
}

InternalError::InternalError(const Error& error) noexcept : m_error(error) {}

}  // namespace Korvex2
