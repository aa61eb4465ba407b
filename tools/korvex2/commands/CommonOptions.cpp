#include "commands/CommonOptions.h"

#include "BayerNames.h"
#include "PixelFormats.h"

namespace Korvex2::Tool {
namespace {

template <typename Row>
Words NamesOfAll(ArrayView<Row> rows) {
  Words names;
  for (const Row& row : rows) {
    names.words.push_back(row.name);
  }
  return names;
}

}  // namespace

Words FormatWords() {
  Words names;
  for (const PixelFormatInfo& format : PixelFormats()) {
    if (format.convertible) {
      names.words.push_back(format.name);
    }
  }
  return names;
}

Words TileWords() {
  return NamesOfAll(BayerTiles());
}

Words MethodWords() {
  return NamesOfAll(ColorProcessings());
}

}  // namespace Korvex2::Tool
