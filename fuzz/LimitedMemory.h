#pragma once

#include <cstddef>

namespace Korvex2::Fuzz {

/// While one lives, operator new of this thread gives no larger block. A file or a command line can
/// ask for gigabytes, which the tool takes or says that it cannot have; a campaign has no use for
/// them.
class LimitedMemory {
 public:
  explicit LimitedMemory(std::size_t largestBlock);
  LimitedMemory(const LimitedMemory&) = delete;
  LimitedMemory& operator=(const LimitedMemory&) = delete;
  ~LimitedMemory();
};

}  // namespace Korvex2::Fuzz
