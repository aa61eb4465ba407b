#pragma once

/// The oracle: the converter's behaviour as literally as it can be written, slow and plain. It
/// shares no code with the library; demosaicing, which belongs to the engine, comes in as a
/// function, such as that of Demosaic.h.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "reference/Formats.h"

namespace Reference {

/// An image: a shape and bytes, its own or lent ones.
struct Frame {
  Frame() = default;
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;
  Frame(Frame&&) = default;
  Frame& operator=(Frame&&) = default;

  std::uint32_t rows = 0;
  std::uint32_t cols = 0;
  std::uint32_t stride = 0;
  Format format = UNSPECIFIED;
  std::uint32_t tile = 0;
  std::uint32_t method = 0;
  std::uint8_t* data = nullptr;
  std::uint32_t dataSize = 0;
  std::vector<std::uint8_t> owned;
  /// What the memory is filled with that a caller lends, which shaping does not write; -1: no one
  /// lends any.
  int lentByte = -1;

  /// Shapes the frame on bytes of its own. All are zero, but for the pixels of a frame that had
  /// this very shape, whatever its tile.
  void Shape(std::uint32_t newRows, std::uint32_t newCols, std::uint32_t newStride,
             Format newFormat, std::uint32_t newTile);
};

/// Code and message; a cause's code where one is nested.
struct Outcome {
  int code = 0;
  std::string message;
  bool hasCause = false;
  int causeCode = 0;

  bool operator==(const Outcome&) const = default;
};

std::string Describe(const Outcome& outcome);

// Codes, as numbers.
inline constexpr int kOk = 0;
inline constexpr int kFailed = 1;
inline constexpr int kNotImplemented = 2;
inline constexpr int kInvalidParameter = 7;

// Messages.
inline constexpr const char* kNotImplementedText = "Not implemented.";
inline constexpr const char* kSourceNull =
    "The source image pointer was NULL or contained a NULL buffer.";
inline constexpr const char* kDestinationNull = "The destination image pointer was NULL.";
inline constexpr const char* kRefusedShape =
    "Conversion failed because the destination image would not accept the required dimensions.";
inline constexpr const char* kBadFormat = "The specified pixel format is not a valid output type.";
inline constexpr const char* kBadTile = "The bayer tile pattern was not recognized.";
inline constexpr const char* kBadMethod =
    "The selected color processing method was not recognized.";
inline constexpr const char* kEngineFailed = "The color processing encountered an error.";
inline constexpr const char* kNull =
    "The source and or destination image pointer was NULL or contained a NULL buffer.";

/// input format, input, rows, cols, output format, output, method, pattern; 0 for success.
using Engine = int (*)(int, const std::uint8_t*, int, int, int, std::uint8_t*, int, int);

// The engine's numbers for the SDK's.
int EngineFormat(Format format);
int EngineMethod(std::uint32_t method);
int EnginePattern(std::uint32_t tile);

struct Converter {
  bool littleEndian = true;
  /// What colour processing 0 stands for.
  std::uint32_t defaultMethod = 2;
  Engine engine = nullptr;
  /// Temporaries that need more than this find no memory.
  std::uint64_t memoryLimit = 0xFFFFFFFF;
  /// Asked for each temporary whether there is memory for it; empty: always.
  std::function<bool()> hasMemory;

  /// The whole conversion. What no step writes of a destination that had this shape before, stays.
  Outcome Convert(const Frame* source, Format target, Frame* destination) const;

  /// The routine of a target format, for a destination that is already shaped.
  Outcome ConvertTo(Format target, const Frame* source, Frame* destination) const;

  /// Any routine by its name: kernel, wrapper, chain, or the bridge.
  Outcome Run(const char* routine, const Frame* source, Frame* destination) const;

  Outcome TempImage(const Frame* source, Frame* temporary, Format format) const;
  Outcome Demosaic(const Frame* source, Frame* destination) const;
};

/// rows x columns, wrapping; 0 for null.
std::uint32_t PixelCount(const Frame* frame);

/// The kernel that reads the source of a routine, and the one that writes its destination; tile
/// NONE for the bridge.
const char* FirstKernel(const char* routine);
const char* LastKernel(const char* routine);

}  // namespace Reference
