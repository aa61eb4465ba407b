#pragma once

/// Tables of digests, of every conversion and of every demosaic method: small enough to be kept as
/// text, so that one machine's bytes can be held against another's.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Korvex2::Test::Golden {

/// One line of a table: what was converted, then a digest for each of its pictures.
using Table = std::vector<std::string>;

/// Every source format to every target, refused ones included; a digest covers the error, the shape
/// and every byte of the picture. By the literal loops of tests/reference, or by the converter.
Table ConversionsByTheReference();
Table ConversionsByTheConverter();

/// Every method, mosaic format and colour format, the tiles in turn. 16-bit samples count low byte
/// first, so the table is the same on every machine. By the definitions of tests/reference, which
/// end before the methods in floats, or by the engine.
Table DemosaicingByTheReference();
Table DemosaicingByTheEngine();

/// The files of this machine's byte order, beside this header.
std::string ConversionsFile();
std::string DemosaicingFile();

Table Read(const std::string& file);
void Write(const std::string& file, const Table& table);

}  // namespace Korvex2::Test::Golden
