#pragma once

/// The engine behind bayerToColor(), with its choices made explicit.

#include "InstructionSet.h"
#include "vorbayer.h"

namespace Korvex2::Bayer {

/// The arguments of bayerToColor(). A C program can pass any number for an enumerator, which C++
/// must not touch as an enumerator; so here they are numbers.
struct Request {
  int inputFormat;
  const unsigned char* input;
  int rows;
  int cols;
  int outputFormat;
  unsigned char* output;
  int method;
  int pattern;
};

/// How to go about it. The picture does not depend on any of this.
struct Settings {
  InstructionSet instructionSet = ActiveInstructionSet();
  /// The largest block to work on, 0 for the method's own; both even.
  int blockRows = 0;
  int blockCols = 0;
};

/// beOK if the request can be carried out, else its error.
BayerError Check(const Request& request);

BayerError Demosaic(const Request& request, const Settings& settings);

}  // namespace Korvex2::Bayer
