#include "routes/PieceWalk.h"

#include <algorithm>
#include <cstring>

#include "PixelFormats.h"
#include "routes/Routines.h"

namespace Korvex2 {
namespace {

// A multiple of every group and vector. A temporary of the widest format takes 6 KiB, so that
// source, destination and the temporaries of the deepest nest fit the first-level cache together.
constexpr std::size_t kPiecePixels = 1024;
constexpr std::size_t kWidestTemporary = 6;
constexpr std::size_t kReach = 4 * kWidestTemporary;

// The longest step of any kernel, and a multiple of all others.
constexpr std::size_t kLongestStep = 4;

const RoutineInfo& FirstKernel(const RoutineInfo& info) {
  // clang-format off
  switch (info.kind) {
    case RoutineInfo::Kind::Chain:   return FirstKernel(*info.firstStep);
    case RoutineInfo::Kind::Wrapper: return FirstKernel(*info.lastStep);
    default:                         return info;
  }
  // clang-format on
}

const RoutineInfo& LastKernel(const RoutineInfo& info) {
  const bool steps =
      info.kind == RoutineInfo::Kind::Chain || info.kind == RoutineInfo::Kind::Wrapper;
  return steps ? LastKernel(*info.lastStep) : info;
}

std::size_t StepsOf(const RoutineInfo& kernel, std::size_t pixels) {
  return (pixels + kernel.pixelsPerStep - 1) / kernel.pixelsPerStep;
}

RunSize AdvanceOf(const RoutineInfo& info) {
  return RunSizeOf(info, kLongestStep);
}

void WalkChain(const RoutineInfo& info, const std::uint8_t* src, std::uint8_t* dst,
               std::size_t pixels, Kernels::Flags flags) {
  const RunSize first = AdvanceOf(*info.firstStep);
  const RunSize last = AdvanceOf(*info.lastStep);
  alignas(64) std::uint8_t temporary[kPiecePixels * kWidestTemporary + kReach];
  for (std::size_t done = 0; done < pixels; done += kPiecePixels) {
    const std::size_t count = std::min(kPiecePixels, pixels - done);
    // A last step that completes its group reads zeros there, or what the first step completed.
    const std::size_t packed = (count * first.destination + 3) / 4;
    std::memset(temporary + packed, 0, kReach);
    Walk(*info.firstStep, src + done / kLongestStep * first.source, temporary, count, flags);
    Walk(*info.lastStep, temporary, dst + done / kLongestStep * last.destination, count, flags);
  }
}

}  // namespace

bool IsWalkable(const RoutineInfo& info) noexcept {
  switch (info.kind) {
    case RoutineInfo::Kind::Kernel:
      return true;
    case RoutineInfo::Kind::Wrapper:
      return IsWalkable(*info.lastStep);
    case RoutineInfo::Kind::Chain:
      return IsWalkable(*info.firstStep) && IsWalkable(*info.lastStep);
    case RoutineInfo::Kind::Demosaic:
      return false;
  }
  return false;
}

RunSize RunSizeOf(const RoutineInfo& info, std::size_t pixels) noexcept {
  const RoutineInfo& first = FirstKernel(info);
  const RoutineInfo& last = LastKernel(info);
  return {StepsOf(first, pixels) * first.sourceBytesPerStep,
          StepsOf(last, pixels) * last.destinationBytesPerStep};
}

std::size_t PixelsPerCut(const RoutineInfo& info) noexcept {
  return info.kind == RoutineInfo::Kind::Kernel ? info.pixelsPerStep : kLongestStep;
}

bool ClearsDestination(const RoutineInfo& info) noexcept {
  return LastKernel(info).extra == RoutineInfo::Extra::ClearsDestination;
}

void Walk(const RoutineInfo& info, const std::uint8_t* src, std::uint8_t* dst, std::size_t pixels,
          Kernels::Flags flags) noexcept {
  if (const Kernels::FastKernel fast = Kernels::FindFast(RoutineOf(info))) {
    const std::size_t done = fast(src, dst, pixels);
    if (done == pixels) {
      return;
    }
    const RunSize advance = AdvanceOf(info);
    src += done / kLongestStep * advance.source;
    dst += done / kLongestStep * advance.destination;
    pixels -= done;
  }
  switch (info.kind) {
    case RoutineInfo::Kind::Kernel:
      return Kernels::Find(RoutineOf(info))(src, dst, pixels, flags);
    case RoutineInfo::Kind::Wrapper:
      return Walk(*info.lastStep, src, dst, pixels, flags);
    case RoutineInfo::Kind::Chain:
      return WalkChain(info, src, dst, pixels, flags);
    case RoutineInfo::Kind::Demosaic:
      return;
  }
}

}  // namespace Korvex2
