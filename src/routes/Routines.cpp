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

constexpr Cell kCells[] = {
#define CELL(target, source, routine) \
  {PIXEL_FORMAT_##target, PIXEL_FORMAT_##source, Routine::routine},
#include "routes/Dispatch.def"
};

constexpr std::array kFormats = {
#define KORVEX2_FORMAT(enumerator, ...) PIXEL_FORMAT_##enumerator,
#include "Formats.def"
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
