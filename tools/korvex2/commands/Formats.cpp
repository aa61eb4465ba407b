// korvex2 formats: the table of pixel formats.

#include <memory>

#include "PixelFormats.h"
#include "commands/Commands.h"
#include "terminal/Names.h"
#include "terminal/Table.h"

namespace Korvex2::Tool {
namespace {

std::string GroupOf(const PixelFormatInfo& format) {
  return fmt::format("{} px in {} B", format.pixelsPerGroup, format.bytesPerGroup);
}

void PrintTable() {
  Table table = {{"name", "bits", "group", "converts", "bytes of a group", "aliases"}};
  for (const PixelFormatInfo& format : PixelFormats()) {
    table.push_back({std::string(format.name), std::to_string(format.bitsPerPixel), GroupOf(format),
                     format.convertible ? "yes" : "no", std::string(format.layout),
                     std::string(format.aliases)});
  }
  Print(table);
  fmt::print(
      "\nNames are taken in any case. bits: per pixel. group: pixels that share whole bytes.\n"
      "Formats that do not convert can be copied only.\n");
}

std::string JsonList(std::string_view words) {
  std::string list;
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(' '), words.size());
    if (end > 0) {
      list += list.empty() ? "" : ", ";
      list += Json(words.substr(0, end));
    }
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  return "[" + list + "]";
}

void PrintJson() {
  fmt::print("[");
  const char* separator = "\n";
  for (const PixelFormatInfo& format : PixelFormats()) {
    fmt::print(
        "{}  {{\"name\": {}, \"enumerator\": {}, \"value\": {}, \"aliases\": {}, "
        "\"bitsPerPixel\": {}, \"pixelsPerGroup\": {}, \"bytesPerGroup\": {}, "
        "\"convertible\": {}, \"layout\": {}}}",
        separator, Json(format.name), Json(format.enumerator),
        static_cast<std::uint32_t>(format.format), JsonList(format.aliases), format.bitsPerPixel,
        format.pixelsPerGroup, format.bytesPerGroup, format.convertible, Json(format.layout));
    separator = ",\n";
  }
  fmt::print("\n]\n");
}

}  // namespace

Command FormatsCommand() {
  const auto json = std::make_shared<bool>(false);
  // clang-format off
  return {
      .name = "formats",
      .help = "List the pixel formats and their layouts",
      .options = {
          {"--json", json.get(), kFlag, "Print JSON"},
      },
      .run = [json] { *json ? PrintJson() : PrintTable(); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
