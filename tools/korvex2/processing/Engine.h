#pragma once

/// The demosaic engine itself, with every method that it has; the converter reaches all but one.

#include <span>
#include <string_view>

#include "Image.h"
#include "vorbayer.h"

namespace Korvex2::Tool {

struct EngineMethod {
  std::string_view name;  ///< as in `convert --method`, where the converter has the method
  BayerMethod method;
};

std::span<const EngineMethod> EngineMethods();

/// An image for the picture of a mosaic: rgb8 for raw8, rgb16 for raw16.
Image NewPictureOf(const Image& mosaic);

/// Demosaics into an image that NewPictureOf made.
void Demosaic(const Image& mosaic, const EngineMethod& method, Image& picture);

}  // namespace Korvex2::Tool
