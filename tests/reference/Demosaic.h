#pragma once

/// The demosaic methods in integers, every pixel by the method's definition, slow and plain.

#include <cstdint>

namespace Reference {

/// Whether a method, by the engine's number, is written out here: nearest neighbour, edge sensing
/// and HQ linear are.
bool DefinesMethod(int method);

/// An `Engine` of those methods, on any formats and patterns; its answers are numbers of
/// BayerError.
int DemosaicByDefinition(int inputFormat, const std::uint8_t* input, int rows, int cols,
                         int outputFormat, std::uint8_t* output, int method, int pattern);

}  // namespace Reference
