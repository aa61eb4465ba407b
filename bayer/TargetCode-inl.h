/// The namespace for code that is compiled once for plain C++ and once more for each of Highway's
/// instruction sets. It keeps the functions of one instruction set from standing in for another's.

#if defined(HWY_TARGET_INCLUDE)
#include "hwy/highway.h"
#undef KORVEX2_BAYER_BEGIN_TARGET_CODE
#undef KORVEX2_BAYER_END_TARGET_CODE
#define KORVEX2_BAYER_BEGIN_TARGET_CODE \
  HWY_BEFORE_NAMESPACE();               \
  namespace Korvex2::Bayer::HWY_NAMESPACE {
#define KORVEX2_BAYER_END_TARGET_CODE \
  }                                   \
  HWY_AFTER_NAMESPACE();
#elif !defined(KORVEX2_BAYER_BEGIN_TARGET_CODE)
#define KORVEX2_BAYER_BEGIN_TARGET_CODE namespace Korvex2::Bayer::Plain {
#define KORVEX2_BAYER_END_TARGET_CODE }
#endif
