#pragma once

/// How much stack a call takes, and a stack whose old contents can be told apart.

#include <cstddef>
#include <functional>

namespace Korvex2::Test {

/// Runs a call on a thread of its own, on a stack painted with a byte; the bytes of it that the
/// call, with all that it calls, wrote to. Frames of the thread library itself are left out.
std::size_t StackTaken(unsigned char paint, const std::function<void()>& call);

/// Leaves this byte in the stack that the calls to come will take.
void PaintStack(unsigned char paint);

}  // namespace Korvex2::Test
