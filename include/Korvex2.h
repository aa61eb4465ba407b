#pragma once

/// @file
/// All that a client of Korvex2 needs.

/// @namespace Korvex2
/// Everything but the demosaic engine, which serves C programs as well and has no namespace.

#include "ArrayView.h"
#include "BayerNames.h"
#include "CheckConversion.h"
#include "Error.h"
#include "Image.h"
#include "ImageConverterARMStub.h"
#include "InstructionSets.h"
#include "InternalError.h"
#include "Korvex2Defs.h"
#include "Korvex2Version.h"
#include "PixelFormats.h"
#include "Routes.h"
#include "Utilities.h"
