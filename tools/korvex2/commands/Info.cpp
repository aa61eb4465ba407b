// korvex2 info: the machine, the library and what was built into the tool.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "InstructionSets.h"
#include "Korvex2Version.h"
#include "Utilities.h"
#include "commands/Commands.h"
#include "io/Containers.h"
#include "io/Libraries.h"
#include "processing/InstructionSetChoice.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"
#include "terminal/Table.h"

namespace Korvex2::Tool {
namespace {

struct Fact {
  std::string key;    // in JSON
  std::string label;  // in text
  std::string text;
  bool isNumber = false;
};

std::string CompilerName() {
#if defined(__clang__)
  return fmt::format("clang {}.{}.{}", __clang_major__, __clang_minor__, __clang_patchlevel__);
#else
  return fmt::format("g++ {}.{}.{}", __GNUC__, __GNUC_MINOR__, __GNUC_PATCHLEVEL__);
#endif
}

std::string FileFormats() {
  std::string names;
  for (const Container& container : Containers()) {
    names += names.empty() ? "" : ", ";
    names += container.name;
  }
  return names;
}

// g++ says it by a macro, clang by a feature.
#if defined(__SANITIZE_ADDRESS__)
#define KORVEX2_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KORVEX2_SANITIZED 1
#endif
#endif

std::string Features() {
  std::string features = fmt::format("{}, {}", FileFormats(), Libraries());
#if !defined(NDEBUG)
  features += ", assertions";
#endif
#if defined(KORVEX2_SANITIZED)
  features += ", address sanitizer";
#endif
  return features;
}

std::string NameOfOs(OSType type) {
  switch (type) {
    case WINDOWS_X86:
      return "32-bit Windows";
    case WINDOWS_X64:
      return "64-bit Windows";
    case LINUX_X86:
      return "32-bit Linux";
    case LINUX_X64:
      return "64-bit Linux";
    case MAC:
      return "Mac";
    case UNKNOWN_OS:
      break;
  }
  return "unknown";
}

std::size_t CountConvertible() {
  std::size_t count = 0;
  for (const PixelFormatInfo& format : PixelFormats()) {
    count += format.convertible ? 1 : 0;
  }
  return count;
}

std::vector<Fact> Facts() {
  SystemInfo system{};
  const Error error = Utilities::GetSystemInfo(&system);
  if (error != VORERROR_OK) {
    throw Failure("the machine does not tell about itself: {}", error.GetMessage());
  }
  const bool little = system.byteOrder == BYTE_ORDER_LITTLE_ENDIAN;
  return {
      {"version", "Korvex2", GetVersion()},
      {"features", "features", Features()},
      {"instructionSet", "instruction set", std::string(GetInstructionSet())},
      {"instructionSets", "instruction sets", InstructionSetNames()},
      {"compiler", "compiler", CompilerName()},
      {"formats", "formats that convert", std::to_string(CountConvertible()), true},
      {"osType", "system", NameOfOs(system.osType)},
      {"osDescription", "system version", system.osDescription},
      {"byteOrder", "byte order", little ? "little-endian" : "big-endian"},
      {"cpuDescription", "processor", system.cpuDescription},
      {"numCpuCores", "logical processors", std::to_string(system.numCpuCores), true},
      {"sysMemSize", "memory, bytes", std::to_string(system.sysMemSize), true},
      {"gpuDescription", "display adapters", system.gpuDescription},
      {"screenWidth", "screen width", std::to_string(system.screenWidth), true},
      {"screenHeight", "screen height", std::to_string(system.screenHeight), true},
      {"driverList", "drivers", system.driverList},
      {"libraryList", "libraries", system.libraryList},
  };
}

void PrintText() {
  Table table;
  for (const Fact& fact : Facts()) {
    table.push_back({fact.label, fact.text});
  }
  Print(table);
}

void PrintJson() {
  fmt::print("{{");
  const char* separator = "\n";
  for (const Fact& fact : Facts()) {
    fmt::print("{}  {}: {}", separator, Json(fact.key),
               fact.isNumber ? fact.text : Json(fact.text));
    separator = ",\n";
  }
  fmt::print("\n}}\n");
}

}  // namespace

Command InfoCommand() {
  const auto json = std::make_shared<bool>(false);
  // clang-format off
  return {
      .name = "info",
      .help = "Show version, features and machine",
      .options = {
          {"--json", json.get(), kFlag, "Print JSON"},
      },
      .run = [json] { *json ? PrintJson() : PrintText(); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
