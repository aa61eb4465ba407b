#pragma once

/// All that a client of Korvex2 needs.

#include "BayerNames.h"
#include "CheckConversion.h"
#include "Error.h"
#include "Image.h"
#include "ImageConverterARMStub.h"
#include "InstructionSets.h"
#include "Korvex2Defs.h"
#include "Korvex2Version.h"
#include "PixelFormats.h"
#include "Utilities.h"
#include "routes/Routines.h"
