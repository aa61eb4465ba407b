// A client that links the target of the build tree: it is given the public headers and none of
// those that only the library itself includes.

#include <Korvex2.h>
#include <SingletonDefinitions.h>

#if __has_include("kernels/Kernels.h") ||                                       \
                  __has_include("routes/Routines.h") ||                         \
                                __has_include("simd/InstructionSet.h") ||       \
                                              __has_include("ErrorRecord.h") || \
                                                            __has_include("Methods.h")
#error "a header that only the library itself includes is found by a client"
#endif

static_assert(__cplusplus < 202002L, "the target asks for more than C++17");
