#pragma once

/// What users call things: pixel formats, Bayer tiles, demosaic methods.

#include <string>
#include <string_view>

#include "Korvex2Defs.h"
#include "PixelFormats.h"

namespace Korvex2::Tool {

/// The format with this name or alias. A name that is none is a UsageFailure that offers the
/// nearest ones; `option` says where it stood.
const PixelFormatInfo& ParseFormat(std::string_view option, std::string_view name);

/// "rggb" ... "none", as in the name of the top-left 2x2; UsageFailure for anything else.
BayerTileFormat ParseTile(std::string_view name);

std::string_view NameOf(BayerTileFormat tile);

/// "nearest" ... "default"; UsageFailure for anything else.
ColorProcessingAlgorithm ParseMethod(std::string_view name);

/// The names that ParseTile and ParseMethod know, separated by commas, for help and messages.
std::string TileNames();
std::string MethodNames();

/// Makes the library use the instruction set with this name, in any case; leaves its choice where
/// the name is empty. UsageFailure for a name that is none of this machine.
void ChooseInstructionSet(std::string_view name);

/// The instruction sets of this machine, separated by commas.
std::string InstructionSetNames();

/// The short name of a format, "unknown" for a value that names none.
std::string_view NameOf(PixelFormat format);

bool IsRaw(PixelFormat format);

}  // namespace Korvex2::Tool
