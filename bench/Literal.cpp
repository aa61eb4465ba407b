#include "Literal.h"

#include <new>
#include <stdexcept>

#include "InstructionSets.h"

namespace Korvex2::Bench {

void LiteralConverter::Run(const Image* pSrc, Image* pDst) const {
  const std::string_view chosen = GetInstructionSet();
  (void)SetInstructionSet("plain");
  RunRoutine(FindRoute(pSrc->GetPixelFormat(), pDst->GetPixelFormat()), pSrc, pDst);
  (void)SetInstructionSet(chosen);
}

// Chains are taken apart here: the converter itself would walk them in pieces. What is left for the
// converter is single kernels, which without vector instructions are loops over the whole run.
void LiteralConverter::RunRoutine(Routine routine, const Image* pSrc, Image* pDst) const {
  const RoutineInfo& info = GetRoutine(routine);
  if (info.kind == RoutineInfo::Kind::Wrapper) {
    return RunRoutine(info.lastStep, pSrc, pDst);
  }
  if (info.kind == RoutineInfo::Kind::Chain) {
    Image temporary;
    if (TempImage(pSrc, &temporary, info.temporary) != VORERROR_OK) throw std::bad_alloc();
    RunRoutine(info.firstStep, pSrc, &temporary);
    return RunRoutine(info.lastStep, &temporary, pDst);
  }
  Error error;
  switch (routine) {
#define KERNEL(routine, ...)                       \
  case Routine::routine:                           \
    error = LiteralConverter::routine(pSrc, pDst); \
    break;
#define DEMOSAIC(routine) KERNEL(routine)
#include "routes/Routines.def"
    default:
      throw std::logic_error("the matrix refuses this pair");
  }
  if (error != VORERROR_OK) throw std::runtime_error(error.GetMessage());
}

}  // namespace Korvex2::Bench
