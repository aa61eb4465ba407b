#include "support/PaintedStack.h"

#include <pthread.h>
#include <sys/mman.h>

#include <cstdlib>
#include <cstring>

namespace Korvex2::Test {
namespace {

constexpr std::size_t kStack = std::size_t{1} << 20;

struct Thread {
  const std::function<void()>* call;
  unsigned char* stack;
  unsigned char paint;
  std::size_t taken;
};

// The stack grows downwards; some of it lies below the frame of this function already.
[[gnu::noinline]] void* Run(void* argument) {
  Thread& thread = *static_cast<Thread*>(argument);
  auto* const here = static_cast<unsigned char*>(__builtin_frame_address(0));
  (*thread.call)();
  const unsigned char* p = thread.stack;
  while (p < here && *p == thread.paint) ++p;
  thread.taken = static_cast<std::size_t>(here - p);
  return nullptr;
}

}  // namespace

[[gnu::noinline]] void PaintStack(unsigned char paint) {
  unsigned char stack[std::size_t{64} << 10];
  std::memset(stack, paint, sizeof(stack));
  asm volatile("" : : "r"(stack) : "memory");
}

std::size_t StackTaken(unsigned char paint, const std::function<void()>& call) {
  void* const stack =
      mmap(nullptr, kStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (stack == MAP_FAILED) std::abort();
  std::memset(stack, paint, kStack);
  Thread thread{&call, static_cast<unsigned char*>(stack), paint, 0};
  pthread_attr_t attributes;
  pthread_t id;
  pthread_attr_init(&attributes);
  if (pthread_attr_setstack(&attributes, stack, kStack) != 0 ||
      pthread_create(&id, &attributes, Run, &thread) != 0) {
    std::abort();
  }
  pthread_join(id, nullptr);
  pthread_attr_destroy(&attributes);
  munmap(stack, kStack);
  return thread.taken;
}

}  // namespace Korvex2::Test
