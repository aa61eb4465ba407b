#include "routes/PieceWalk.h"

#include <algorithm>
#include <cstring>

#include "PixelFormats.h"

namespace Korvex2 {
namespace {

// A multiple of every group and vector. A temporary of the widest format takes 6 KiB, so that
// source, destination and the temporaries of the deepest nest fit the first-level cache together.
constexpr std::size_t kPiecePixels = 1024;
constexpr std::size_t kWidestTemporary = 6;
constexpr std::size_t kReach = 4 * kWidestTemporary;

// Bytes of four pixels, the longest group.
RunSize AdvanceOf(Routine routine) {
  const RoutineInfo& info = GetRoutine(routine);
  if (info.kind == RoutineInfo::Kind::Kernel) {
    const std::size_t steps = 4 / info.pixelsPerStep;
    return {steps * info.sourceBytesPerStep, steps * info.destinationBytesPerStep};
  }
  const RunSize last = AdvanceOf(info.lastStep);
  return info.kind == RoutineInfo::Kind::Chain
             ? RunSize{AdvanceOf(info.firstStep).source, last.destination}
             : last;
}

void WalkChain(const RoutineInfo& info, const std::uint8_t* src, std::uint8_t* dst,
               std::size_t pixels, Kernels::Flags flags) {
  const RunSize first = AdvanceOf(info.firstStep);
  const RunSize last = AdvanceOf(info.lastStep);
  alignas(64) std::uint8_t temporary[kPiecePixels * kWidestTemporary + kReach];
  for (std::size_t done = 0; done < pixels; done += kPiecePixels) {
    const std::size_t count = std::min(kPiecePixels, pixels - done);
    // A last step that completes its group reads zeros there, or what the first step completed.
    const std::size_t packed = (count * first.destination + 3) / 4;
    std::memset(temporary + packed, 0, kReach);
    Walk(info.firstStep, src + done / 4 * first.source, temporary, count, flags);
    Walk(info.lastStep, temporary, dst + done / 4 * last.destination, count, flags);
  }
}

}  // namespace

bool IsWalkable(Routine routine) noexcept {
  const RoutineInfo& info = GetRoutine(routine);
  switch (info.kind) {
    case RoutineInfo::Kind::Kernel:
      return true;
    case RoutineInfo::Kind::Wrapper:
      return IsWalkable(info.lastStep);
    case RoutineInfo::Kind::Chain:
      return IsWalkable(info.firstStep) && IsWalkable(info.lastStep);
    case RoutineInfo::Kind::Demosaic:
      return false;
  }
  return false;
}

RunSize RunSizeOf(Routine routine, std::size_t pixels) noexcept {
  const RunSize advance = AdvanceOf(routine);
  const std::size_t groups = (pixels + 3) / 4;
  return {groups * advance.source, groups * advance.destination};
}

bool ClearsDestination(Routine routine) noexcept {
  const RoutineInfo& info = GetRoutine(routine);
  return info.kind == RoutineInfo::Kind::Kernel
             ? info.extra == RoutineInfo::Extra::ClearsDestination
             : ClearsDestination(info.lastStep);
}

void Walk(Routine routine, const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
          Kernels::Flags flags) noexcept {
  if (const Kernels::FastKernel fast = Kernels::FindFast(routine)) {
    const std::size_t done = fast(src, dst, pixels);
    if (done == pixels) {
      return;
    }
    const RunSize advance = AdvanceOf(routine);
    src += done / 4 * advance.source;
    dst += done / 4 * advance.destination;
    pixels -= done;
  }
  const RoutineInfo& info = GetRoutine(routine);
  switch (info.kind) {
    case RoutineInfo::Kind::Kernel:
      return Kernels::Find(routine)(src, dst, pixels, flags);
    case RoutineInfo::Kind::Wrapper:
      return Walk(info.lastStep, src, dst, pixels, flags);
    case RoutineInfo::Kind::Chain:
      return WalkChain(info, src, dst, pixels, flags);
    case RoutineInfo::Kind::Demosaic:
      return;
  }
}

}  // namespace Korvex2
