#pragma once

/// The engine behind bayerToColor(), with its choices made explicit.

#include "Target.h"
#include "vorbayer.h"

namespace Korvex2::Bayer {

/// The arguments of bayerToColor().
struct Request {
  BayerPixelFormat inputFormat;
  const unsigned char* input;
  int rows;
  int cols;
  BayerPixelFormat outputFormat;
  unsigned char* output;
  BayerMethod method;
  BayerPattern pattern;
};

/// How to go about it. The picture does not depend on any of this.
struct Settings {
  Target target = bestTarget();
  /// The largest block to work on, 0 for the method's own; both even.
  int blockRows = 0;
  int blockCols = 0;
};

/// beOK if the request can be carried out, else its error.
BayerError check(const Request& request);

BayerError demosaic(const Request& request, const Settings& settings);

}  // namespace Korvex2::Bayer
