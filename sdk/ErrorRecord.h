#pragma once

#include <string>

#include "Error.h"

namespace Korvex2 {

/// Where, when and why a failure was raised.
struct Error::Record {
  int line;
  std::string file;
  std::string date;
  std::string time;
  std::string message;
  Error cause;  // success where there is none
};

}  // namespace Korvex2
