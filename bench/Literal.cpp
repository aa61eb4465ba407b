#include "Literal.h"

#include <new>
#include <stdexcept>

#include "InstructionSets.h"

namespace Korvex2::Bench {

void LiteralConverter::Run(const Image* pSrc, Image* pDst) const {
  const std::string_view chosen = GetInstructionSet();
  (void)SetInstructionSet("plain");
  const RoutineInfo* routine = FindRoute(pSrc->GetPixelFormat(), pDst->GetPixelFormat());
  if (routine == nullptr) throw std::logic_error("the matrix refuses this pair");
  RunRoutine(*routine, pSrc, pDst);
  (void)SetInstructionSet(chosen);
}

// Chains are taken apart here: the converter itself would walk them in pieces. What is left for the
// converter is single kernels, which without vector instructions are loops over the whole run.
void LiteralConverter::RunRoutine(const RoutineInfo& info, const Image* pSrc, Image* pDst) const {
  if (info.kind == RoutineInfo::Kind::Wrapper) {
    return RunRoutine(*info.lastStep, pSrc, pDst);
  }
  if (info.kind == RoutineInfo::Kind::Chain) {
    Image temporary;
    if (TempImage(pSrc, &temporary, info.temporary) != VORERROR_OK) throw std::bad_alloc();
    RunRoutine(*info.firstStep, pSrc, &temporary);
    return RunRoutine(*info.lastStep, &temporary, pDst);
  }
  const Error error = RunPass(info.name, pSrc, pDst);
  if (error != VORERROR_OK) throw std::runtime_error(error.GetMessage());
}

Error LiteralConverter::RunPass(std::string_view name, const Image* pSrc, Image* pDst) const {
#define KORVEX2_KERNEL(routine, ...) \
  if (name == #routine) return routine(pSrc, pDst);
#define KORVEX2_DEMOSAIC(routine) KORVEX2_KERNEL(routine)
#include "Routines.def"
  throw std::logic_error("no kernel has this name");
}

}  // namespace Korvex2::Bench
