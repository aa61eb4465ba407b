#include "support/Probe.h"

#include <cstdlib>

namespace Korvex2::Test {

std::span<const Probe::NamedMember> Probe::Routines() {
  static constexpr NamedMember kRoutines[] = {
#define KORVEX2_KERNEL(routine, ...) {#routine, &Probe::routine},
#define KORVEX2_WRAPPER(routine, ...) {#routine, &Probe::routine},
#define KORVEX2_CHAIN(routine, ...) {#routine, &Probe::routine},
#define KORVEX2_DEMOSAIC(routine) {#routine, &Probe::routine},
#include "Routines.def"
  };
  return kRoutines;
}

std::span<const Probe::TargetMember> Probe::Targets() {
  static constexpr TargetMember kTargets[] = {
      {PIXEL_FORMAT_MONO8, &Probe::ConvertToMono8},
      {PIXEL_FORMAT_MONO12, &Probe::ConvertToMono12},
      {PIXEL_FORMAT_MONO16, &Probe::ConvertToMono16},
      {PIXEL_FORMAT_RGB8, &Probe::ConvertToRGB},
      {PIXEL_FORMAT_RGBU, &Probe::ConvertToRGBU},
      {PIXEL_FORMAT_RGB16, &Probe::ConvertToRGB16},
      {PIXEL_FORMAT_BGR, &Probe::ConvertToBGR},
      {PIXEL_FORMAT_BGRU, &Probe::ConvertToBGRU},
      {PIXEL_FORMAT_BGR16, &Probe::ConvertToBGR16},
      {PIXEL_FORMAT_BGRU16, &Probe::ConvertToBGRU16},
      {PIXEL_FORMAT_411YUV8, &Probe::ConvertToYUV411},
      {PIXEL_FORMAT_422YUV8, &Probe::ConvertToYUV422},
      {PIXEL_FORMAT_444YUV8, &Probe::ConvertToYUV444},
      {PIXEL_FORMAT_RAW8, &Probe::ConvertToRAW8},
      {PIXEL_FORMAT_RAW12, &Probe::ConvertToRAW12},
      {PIXEL_FORMAT_RAW16, &Probe::ConvertToRAW16},
  };
  return kTargets;
}

Error Probe::Call(std::string_view name, const Image* pSrc, Image* pDst) const {
  for (const NamedMember& routine : Routines()) {
    if (routine.name == name) return Call(routine.member, pSrc, pDst);
  }
  std::abort();
}

}  // namespace Korvex2::Test
