#pragma once

/// The longest walks of the tests. They are taken whole, but in part where sanitizers or an
/// emulator make every step long.

namespace Korvex2::Test {

/// Of such a walk one step in so many is taken; 1, or a prime, so that the steps taken meet every
/// value of every loop.
inline constexpr unsigned kOneIn = KORVEX2_TEST_ONE_IN;

/// Says of each step in turn whether it is taken.
class Walk {
 public:
  bool Takes() { return m_step++ % kOneIn == 0; }

 private:
  unsigned m_step = 0;
};

}  // namespace Korvex2::Test
