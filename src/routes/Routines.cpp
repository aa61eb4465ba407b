#include "routes/Routines.h"

#include <algorithm>
#include <array>

namespace Korvex2 {
namespace {

constexpr RoutineInfo Kernel(std::string_view name, std::uint32_t pixels, std::uint32_t sourceBytes,
                             std::uint32_t destinationBytes, RoutineInfo::Extra extra) {
  return {.name = name,
          .kind = RoutineInfo::Kind::Kernel,
          .extra = extra,
          .pixelsPerStep = pixels,
          .sourceBytesPerStep = sourceBytes,
          .destinationBytesPerStep = destinationBytes};
}

constexpr RoutineInfo Wrapper(std::string_view name, const RoutineInfo* step,
                              RoutineInfo::Guard guard, RoutineInfo::Result result) {
  return {.name = name,
          .kind = RoutineInfo::Kind::Wrapper,
          .guard = guard,
          .result = result,
          .lastStep = step};
}

constexpr RoutineInfo Chain(std::string_view name, PixelFormat temporary, const RoutineInfo* first,
                            const RoutineInfo* last, RoutineInfo::Guard guard,
                            RoutineInfo::Result result) {
  return {.name = name,
          .kind = RoutineInfo::Kind::Chain,
          .guard = guard,
          .result = result,
          .firstStep = first,
          .lastStep = last,
          .temporary = temporary};
}

constexpr RoutineInfo Demosaic(std::string_view name) {
  return {
      .name = name, .kind = RoutineInfo::Kind::Demosaic, .guard = RoutineInfo::Guard::Unguarded};
}

constexpr std::size_t IndexOf(Routine routine) {
  return static_cast<std::size_t>(routine) - static_cast<std::size_t>(Routine::SameFormat) - 1;
}

// A step is a row of the same table.
#define ROW(routine) (kRoutines + IndexOf(Routine::routine))
constexpr RoutineInfo kRoutines[IndexOf(Routine::Count)] = {
#define KORVEX2_KERNEL(routine, pixels, source, destination, extra) \
  Kernel(#routine, pixels, source, destination, RoutineInfo::Extra::extra),
#define KORVEX2_WRAPPER(routine, step, guard, result) \
  Wrapper(#routine, ROW(step), RoutineInfo::Guard::guard, RoutineInfo::Result::result),
#define KORVEX2_CHAIN(routine, temporary, first, last, guard, result)                         \
  Chain(#routine, PIXEL_FORMAT_##temporary, ROW(first), ROW(last), RoutineInfo::Guard::guard, \
        RoutineInfo::Result::result),
#define KORVEX2_DEMOSAIC(routine) Demosaic(#routine),
#include "Routines.def"
};
#undef ROW

// One cell of the dispatch matrix.
struct Cell {
  PixelFormat target;
  PixelFormat source;
  Routine routine;
};

#define CELL(target, source, routine) \
  {PIXEL_FORMAT_##target, PIXEL_FORMAT_##source, Routine::routine},

constexpr Cell kCells[] = {
#define GREY_TARGETS(source, mono8, mono12, mono16) \
  CELL(MONO8, source, mono8) CELL(MONO12, source, mono12) CELL(MONO16, source, mono16)
#define RGB_TARGETS(source, rgb, rgbu, rgb16) \
  CELL(RGB8, source, rgb) CELL(RGBU, source, rgbu) CELL(RGB16, source, rgb16)
#define BGR_TARGETS(source, bgr, bgru, bgr16, bgru16) \
  CELL(BGR, source, bgr)                              \
  CELL(BGRU, source, bgru) CELL(BGR16, source, bgr16) CELL(BGRU16, source, bgru16)
#define YUV_TARGETS(source, yuv411, yuv422, yuv444) \
  CELL(411YUV8, source, yuv411) CELL(422YUV8, source, yuv422) CELL(444YUV8, source, yuv444)
#define RAW_TARGETS(source, raw8, raw12, raw16) \
  CELL(RAW8, source, raw8) CELL(RAW12, source, raw12) CELL(RAW16, source, raw16)
#include "routes/Dispatch.def"
};
#undef CELL

constexpr std::array kFormats = {
    PIXEL_FORMAT_MONO8,   PIXEL_FORMAT_MONO12, PIXEL_FORMAT_MONO16,  PIXEL_FORMAT_RGB8,
    PIXEL_FORMAT_RGBU,    PIXEL_FORMAT_RGB16,  PIXEL_FORMAT_BGR,     PIXEL_FORMAT_BGRU,
    PIXEL_FORMAT_BGR16,   PIXEL_FORMAT_BGRU16, PIXEL_FORMAT_411YUV8, PIXEL_FORMAT_422YUV8,
    PIXEL_FORMAT_444YUV8, PIXEL_FORMAT_RAW8,   PIXEL_FORMAT_RAW12,   PIXEL_FORMAT_RAW16,
};

constexpr std::size_t PositionOf(PixelFormat format) {
  return static_cast<std::size_t>(std::ranges::find(kFormats, format) - kFormats.begin());
}

using Matrix = std::array<std::array<Routine, kFormats.size()>, kFormats.size()>;

// Laid out by the compiler, so that a look-up costs no search of all cells and no start-up work.
constexpr Matrix kMatrix = [] {
  Matrix matrix{};
  for (const Cell& cell : kCells) {
    matrix.at(PositionOf(cell.target)).at(PositionOf(cell.source)) = cell.routine;
  }
  return matrix;
}();

void Expand(const RoutineInfo& info, PixelFormat source, PixelFormat target, int depth,
            std::vector<RouteCall>& calls) {
  calls.push_back({&info, depth, source, target});
  switch (info.kind) {
    case RoutineInfo::Kind::Wrapper:
      return Expand(*info.lastStep, source, target, depth + 1, calls);
    case RoutineInfo::Kind::Chain:
      Expand(*info.firstStep, source, info.temporary, depth + 1, calls);
      return Expand(*info.lastStep, info.temporary, target, depth + 1, calls);
    case RoutineInfo::Kind::Kernel:
    case RoutineInfo::Kind::Demosaic:
      return;
  }
}

}  // namespace

ArrayView<RoutineInfo> Routines() noexcept {
  return kRoutines;
}

const RoutineInfo* FindRoutine(std::string_view name) noexcept {
  const auto* found = std::ranges::find(kRoutines, name, &RoutineInfo::name);
  return found == std::end(kRoutines) ? nullptr : found;
}

const RoutineInfo& GetRoutine(Routine routine) noexcept {
  return kRoutines[IndexOf(routine)];
}

Routine RoutineOf(const RoutineInfo& info) noexcept {
  return static_cast<Routine>(&info - kRoutines + static_cast<int>(Routine::SameFormat) + 1);
}

const RoutineInfo* FindRoute(PixelFormat source, PixelFormat target) noexcept {
  const std::size_t row = PositionOf(target);
  const std::size_t column = PositionOf(source);
  const bool known = row < kFormats.size() && column < kFormats.size();
  const Routine routine = known ? kMatrix[row][column] : Routine::None;
  const bool runs = routine != Routine::None && routine != Routine::SameFormat;
  return runs ? &GetRoutine(routine) : nullptr;
}

std::vector<RouteCall> ExpandRoute(PixelFormat source, PixelFormat target) {
  const RoutineInfo* routine = FindRoute(source, target);
  std::vector<RouteCall> calls;
  if (routine != nullptr) {
    Expand(*routine, source, target, 0, calls);
  }
  return calls;
}

}  // namespace Korvex2
