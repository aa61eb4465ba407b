#pragma once

/// A conversion as its definition reads: every kernel a plain loop over the whole frame, every
/// temporary image a full frame. What the fast ways are compared with, in bytes and in time.

#include <string_view>

#include "ImageConverterARMStub.h"
#include "Routes.h"

namespace Korvex2::Bench {

class LiteralConverter : public ImageConverter {
 public:
  /// As Convert, for a pair that the matrix lists; *pDst must be shaped already. Chooses the
  /// instruction set "plain" meanwhile.
  void Run(const Image* pSrc, Image* pDst) const;

 private:
  void RunRoutine(const RoutineInfo& info, const Image* pSrc, Image* pDst) const;
  Error RunPass(std::string_view name, const Image* pSrc, Image* pDst) const;
};

}  // namespace Korvex2::Bench
